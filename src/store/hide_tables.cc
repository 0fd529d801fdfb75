// Table operations of CCorvaneDB that carry the host's hide marks over a
// rebuild of TRecommendDomain, TSubDomain and TRecommendURL: the marks are
// saved by key before the table is rebuilt and written back afterwards.
// A hide until the next rebuild (2) comes back as -1, with the fresh score
// lowered by the hide factor; a hide for good (1) stays 1.

#include <cstdio>

#include "store/corvane_db.h"

namespace corvane {
namespace {

// One table's columns for the save and the write-back.
struct HiddenTable {
  const char16_t* select;
  const char16_t* table;
  const char16_t* rank;
  const char16_t* key;
};

constexpr HiddenTable kDomains = {u"select Domain, Hide from TRecommendDomain where Hide != 0;", u"TRecommendDomain",
                                  u"Score", u"Domain"};
constexpr HiddenTable kSubDomains = {u"select Domain, Hide from TSubDomain where Hide != 0;", u"TSubDomain", u"Score",
                                     u"Domain"};
constexpr HiddenTable kURLs = {u"select URL, Hide from TRecommendURL where Hide != 0;", u"TRecommendURL", u"Weight",
                               u"URL"};

HRESULT SaveHidden(CCorvaneDB* db, const HiddenTable& target, HideMap* lpMap) {
  if (lpMap == nullptr) return E_POINTER;
  StatementPtr stmt = db->Prepare(target.select);
  if (!stmt) return E_FAIL;
  // The first mark of a key stays.
  while (stmt->Step()) lpMap->emplace(stmt->ColumnText16(0), stmt->ColumnInt(1));
  return lpMap->empty() ? 1 : 0;
}

// The factor goes into the text as "%f" writes it, so that 0.7 is the
// decimal 0.700000 and not the float nearest to it.
std::u16string FactorText(float factor) {
  char text[32];
  std::snprintf(text, sizeof(text), "%f", static_cast<double>(factor));
  return std::u16string(text, text + std::char_traits<char>::length(text));
}

HRESULT ReapplyHidden(CCorvaneDB* db, const HiddenTable& target, const HideMap& map, float hideFactor) {
  // The marks go back with or without a transaction of their own; only a
  // pair that began is ended, so a failed begin leaves the nesting count.
  bool began = db->BeginTransaction();
  for (const auto& [key, saved] : map) {
    int32_t value = saved == 2 ? -1 : saved;
    float factor = value < 1 ? hideFactor : 1.0f;
    std::u16string sql = u"update " + std::u16string(target.table) + u" set Hide = ?, " + target.rank + u" = " +
                         target.rank + u" * " + FactorText(factor) + u" where " + target.key + u" = ?;";
    StatementPtr stmt = db->Prepare(sql);
    if (stmt && stmt->BindInt(0, value) && stmt->BindText16(1, key)) static_cast<void>(stmt->Execute());
  }
  if (began) static_cast<void>(db->EndTransaction());
  return 0;
}

}  // namespace

HRESULT CCorvaneDB::GetHiddenRecommendDomains(HideMap* lpMap) { return SaveHidden(this, kDomains, lpMap); }

HRESULT CCorvaneDB::GetHiddenSubDomains(HideMap* lpMap) { return SaveHidden(this, kSubDomains, lpMap); }

HRESULT CCorvaneDB::GetHiddenRecommendURLs(HideMap* lpMap) { return SaveHidden(this, kURLs, lpMap); }

HRESULT CCorvaneDB::ReapplyHiddenRecommendDomains(const HideMap& map) {
  return ReapplyHidden(this, kDomains, map, kHideFactor);
}

HRESULT CCorvaneDB::ReapplyHiddenSubDomains(const HideMap& map) { return ReapplyHidden(this, kSubDomains, map, kHideFactor); }

HRESULT CCorvaneDB::ReapplyHiddenRecommendURLs(const HideMap& map, float factor) {
  return ReapplyHidden(this, kURLs, map, factor);
}

}  // namespace corvane
