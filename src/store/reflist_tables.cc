// Table operations of CCorvaneDB for the reference lists of the white-list
// file: the inserts of TWhiteList, TBlackList, TSubList and TNames. The
// texts come from the file as UTF-8 and are bound as they stand.

#include "store/corvane_db.h"

namespace corvane {

HRESULT CCorvaneDB::PrepareListInsert(const char16_t* table, StatementPtr* lppStmt) {
  if (table == nullptr || lppStmt == nullptr) return E_INVALIDARG;
  StatementPtr stmt = Prepare(FillTemplate(u"insert into %s values(?, ?, ?, ?);", table));
  if (!stmt) return E_FAIL;
  *lppStmt = std::move(stmt);
  return S_OK;
}

HRESULT CCorvaneDB::InsertListRow(CSqliteStatement* pStmt, const char* mainDomain, const char* domain,
                                  const char* name, const char* subName) {
  if (pStmt == nullptr) return E_INVALIDARG;
  // A row without its main domain or domain would repeat the values of the
  // row before it: it is left out.
  if (mainDomain == nullptr || domain == nullptr || name == nullptr || subName == nullptr) return E_INVALIDARG;
  bool bound = pStmt->BindText(0, name) && pStmt->BindText(1, mainDomain) && pStmt->BindText(2, domain) &&
               pStmt->BindText(3, subName);
  return bound && pStmt->Execute() ? S_OK : E_FAIL;
}

HRESULT CCorvaneDB::PrepareNamesInsert(StatementPtr* lppStmt) {
  if (lppStmt == nullptr) return E_INVALIDARG;
  StatementPtr stmt = Prepare(u"insert into TNames values(?, ?);");
  if (!stmt) return E_FAIL;
  *lppStmt = std::move(stmt);
  return S_OK;
}

HRESULT CCorvaneDB::InsertNameRow(CSqliteStatement* pStmt, const char* name, const char* domain) {
  if (pStmt == nullptr || name == nullptr || domain == nullptr) return E_INVALIDARG;
  return pStmt->BindText(0, domain) && pStmt->BindText(1, name) && pStmt->Execute() ? S_OK : E_FAIL;
}

}  // namespace corvane
