// Table operations of CCorvaneDB for the serving side: the queries behind
// the recommendation and recent listings, the focus lookup, and the hide
// steps that a host asks for.
//
// Host text (ids, URLs) and the shown-domain keys are always bound; only our
// own words ("not", numbers we format, table names from schema.h) are put
// into the statement texts.

#include <algorithm>
#include <cstdio>

#include "store/corvane_db.h"
#include "store/schema.h"

namespace corvane {
namespace {

constexpr char16_t kRecommendDomainsSql[] =
    u"select TRecommendDomain.rowid as ID, TRecommendDomain.MainDomain, TRecommendDomain.LastVisitTime, "
    u"TRecommendDomain.Score, TRecommendDomain.Hide, TWhiteList.Name, TRecommendDomain.Domain, TWhiteList.SubName "
    u"from TRecommendDomain, TWhiteList where  TRecommendDomain.Hide <= 0 and TRecommendDomain.MainDomain ### in "
    u"(select URL from TFocusURL) and TRecommendDomain.MainDomain = TWhiteList.MainDomain and "
    u"TRecommendDomain.Domain = TWhiteList.Domain group by ID order by TRecommendDomain.MainDomain Desc, "
    u"TRecommendDomain.Score Desc, TRecommendDomain.LastVisitTime desc;";

// The whole sub-domain listing in its order; the listing leaves out shown
// main domains and cuts it into pages itself (serving/shown_set_pager.h).
// Rows of equal score and time keep the order in which the table holds them.
constexpr char16_t kSubDomainsSql[] =
    u"select TSubDomain.rowid, TSubDomain.Domain, TSubDomain.MainDomain, TSubDomain.LastVisitTime, "
    u"TSubDomain.Score, TSubDomain.Hide, TSubDomain.T2Flag, TNames.Name from TSubDomain, TNames where "
    u"TSubDomain.Hide <= 0 and TSubDomain.Domain ### in (select URL from TFocusURL) and "
    u"TSubDomain.Domain = TNames.Domain order by Score desc, LastVisitTime desc, TSubDomain.rowid, TNames.rowid;";

// The sub-sites of every main domain, by main domain, each best first.
constexpr char16_t kAllDomainSubSitesSql[] =
    u"select TZS.Domain, TZS.MainDomain, TZS.LastVisitTime, TZS.Score, TZS.Hide, TZS.T2Flag, TWhiteList.SubName "
    u"from TZS, TWhiteList where TZS.Domain = TWhiteList.Domain order by TZS.MainDomain, Score desc, "
    u"LastVisitTime desc, TZS.rowid;";

// The whole single-URL listing, in the order of its weight or of its visit
// count; the listing pages it as it does the sub-domains.
constexpr char16_t kRecommendURLsSql[] =
    u"select rowid, * from TRecommendURL where Hide <= 0 and URL ### in (select URL from TFocusURL) order by "
    u"weight desc, LastVisitTime desc, rowid;";

constexpr char16_t kRecommendURLsByVisitCountSql[] =
    u"select rowid, * from TRecommendURL where Hide <= 0 and URL ### in (select URL from TFocusURL) order by "
    u"VisitCount desc, LastVisitTime desc, rowid;";

constexpr char16_t kFocusIDSql[] = u"select rowid from TFocusURL where URL = ?;";

constexpr char16_t kRecentDomainsSql[] = u"select * from TRecentDomain order by Score desc, LastVisitTime desc";

constexpr char16_t kRecentHistorySql[] =
    u"select * from TRecentHistory order by Weight desc, LastVisitTime desc, rowid;";

// The table, rank column and key column of one hide step.
struct HideTarget {
  const char16_t* table;
  const char16_t* rank;
  const char16_t* key;
};

constexpr HideTarget kDomainById = {schema::kRecommendDomain, u"Score", u"rowid"};
constexpr HideTarget kSubDomainById = {schema::kSubDomain, u"Score", u"rowid"};
constexpr HideTarget kURLById = {schema::kRecommendURL, u"Weight", u"rowid"};
constexpr HideTarget kURLByURL = {schema::kRecommendURL, u"Weight", u"URL"};

// Replaces the first occurrence of marker by text.
std::u16string ReplaceMarker(std::u16string_view sql, std::u16string_view marker, std::u16string_view text) {
  std::u16string out(sql);
  size_t at = out.find(marker);
  if (at != std::u16string::npos) out.replace(at, marker.size(), text);
  return out;
}

// The focus filter: "not in" unless the request asks for focus sites.
std::u16string WithFocusFilter(std::u16string_view sql, bool bFocus) {
  return ReplaceMarker(sql, u"###", bFocus ? u"" : u"not");
}

// True when row a ranks before row b: higher score, then later visit.
bool Beats(const DomainRow& a, const DomainRow& b) {
  if (a.Score != b.Score) return a.Score > b.Score;
  return a.LastVisitTime > b.LastVisitTime;
}

DomainRow ReadDomainRow(CSqliteStatement* stmt) {
  DomainRow row;
  row.ID = static_cast<uint32_t>(stmt->ColumnInt64(0));
  row.MainDomain = stmt->ColumnText16(1);
  row.LastVisitTime = static_cast<uint64_t>(stmt->ColumnInt64(2));
  row.Score = static_cast<uint32_t>(stmt->ColumnInt64(3));
  row.Hide = stmt->ColumnInt(4);
  row.Name = stmt->ColumnText16(5);
  row.Domain = stmt->ColumnText16(6);
  row.SubName = stmt->ColumnText16(7);
  return row;
}

// The factor as the statement text has always carried it: six decimals.
std::u16string FormatFactor(float factor) {
  char buffer[32];
  std::snprintf(buffer, sizeof(buffer), "%f", static_cast<double>(factor));
  return std::u16string(buffer, buffer + std::char_traits<char>::length(buffer));
}

}  // namespace

HRESULT CCorvaneDB::GetRecommendDomains(bool bFocus, std::vector<DomainRow>* lpRows) {
  if (lpRows == nullptr) return E_INVALIDARG;
  StatementPtr stmt = Prepare(WithFocusFilter(kRecommendDomainsSql, bFocus));
  if (!stmt) return E_FAIL;
  // One row per main domain: the higher score, then the later visit; at a
  // full tie the first row met stays.
  std::map<std::u16string, DomainRow> best;
  while (stmt->Step()) {
    DomainRow row = ReadDomainRow(stmt.get());
    auto [it, inserted] = best.try_emplace(row.MainDomain, row);
    if (!inserted && Beats(row, it->second)) it->second = std::move(row);
  }
  // Inserting each row, in map order, before the first one it strictly
  // beats is a stable sort by rank.
  lpRows->clear();
  lpRows->reserve(best.size());
  for (auto& entry : best) lpRows->push_back(std::move(entry.second));
  std::stable_sort(lpRows->begin(), lpRows->end(), Beats);
  return S_OK;
}

HRESULT CCorvaneDB::GetSubDomains(bool bFocus, StatementPtr* lppStmt) {
  if (lppStmt == nullptr) return E_INVALIDARG;
  StatementPtr stmt = Prepare(WithFocusFilter(kSubDomainsSql, bFocus));
  if (!stmt) return E_FAIL;
  *lppStmt = std::move(stmt);
  return S_OK;
}

HRESULT CCorvaneDB::GetAllDomainSubSites(StatementPtr* lppStmt) {
  if (lppStmt == nullptr) return E_INVALIDARG;
  StatementPtr stmt = Prepare(kAllDomainSubSitesSql);
  if (!stmt) return E_FAIL;
  *lppStmt = std::move(stmt);
  return S_OK;
}

HRESULT CCorvaneDB::GetRecommendURLs(bool bFocus, StatementPtr* lppStmt) {
  if (lppStmt == nullptr) return E_INVALIDARG;
  StatementPtr stmt = Prepare(WithFocusFilter(kRecommendURLsSql, bFocus));
  if (!stmt) return E_FAIL;
  *lppStmt = std::move(stmt);
  return S_OK;
}

HRESULT CCorvaneDB::GetRecommendURLsByVisitCount(bool bFocus, StatementPtr* lppStmt) {
  if (lppStmt == nullptr) return E_INVALIDARG;
  StatementPtr stmt = Prepare(WithFocusFilter(kRecommendURLsByVisitCountSql, bFocus));
  if (!stmt) return E_FAIL;
  *lppStmt = std::move(stmt);
  return S_OK;
}

HRESULT CCorvaneDB::GetFocusID(std::u16string_view url, uint32_t* lpuID) {
  if (lpuID == nullptr) return E_FAIL;
  StatementPtr stmt = Prepare(kFocusIDSql);
  if (!stmt || !stmt->BindText16(0, url) || !stmt->Step()) return E_FAIL;
  *lpuID = static_cast<uint32_t>(stmt->ColumnInt64(0));
  return S_OK;
}

namespace {

// The row that a hide step names: by its number, or by its URL.
struct HideKey {
  std::u16string_view url;
  int64_t rowid = 0;
  bool byRowid = false;
};

bool BindKey(CSqliteStatement* stmt, int index, const HideKey& key) {
  return key.byRowid ? stmt->BindInt64(index, key.rowid) : stmt->BindText16(index, key.url);
}

// One hide step: read the old Hide value, then set the new one, lowering
// the rank only for a row that was neither hidden nor lowered before.
HRESULT HideRow(CCorvaneDB* db, const HideTarget& target, const HideKey& key, bool bPermanent) {
  const std::u16string table(target.table), rank(target.rank), column(target.key);
  StatementPtr read = db->Prepare(u"select Hide, " + rank + u" from " + table + u" where " + column + u" = ? ;");
  if (!read || !BindKey(read.get(), 0, key)) return S_OK;
  int32_t oldHide = read->Step() ? read->ColumnInt(0) : 0;
  read.reset();

  if (oldHide == 1 || oldHide == 2) return S_OK;  // hidden already: nothing moves
  const int32_t newHide = bPermanent ? 1 : 2;
  std::u16string sql = u"update " + table + u" set Hide = ?";
  if (oldHide != -1) {
    // Hiding for good keeps the rank (times 1.0); until the next rebuild
    // lowers it, rounded. A -1 row was lowered before and keeps its rank.
    sql += u", " + rank + u" = round(" + rank + u" * " + FormatFactor(bPermanent ? 1.0f : kHideFactor) + u")";
  }
  sql += u" where " + column + u" = ?;";
  StatementPtr update = db->Prepare(sql);
  if (!update || !update->BindInt(0, newHide) || !BindKey(update.get(), 1, key)) return E_FAIL;
  return update->Execute() ? S_OK : E_FAIL;
}

// An id that is no decimal number could never have compiled as the rowid of
// the read statement, so it changes nothing and counts as success.
HRESULT HideRowById(CCorvaneDB* db, const HideTarget& target, std::u16string_view id, bool bPermanent) {
  HideKey key;
  key.byRowid = IsDecimalId(id, &key.rowid);
  if (!key.byRowid) return S_OK;
  return HideRow(db, target, key, bPermanent);
}

}  // namespace

HRESULT CCorvaneDB::HideRecommendDomainRow(std::u16string_view id, bool bPermanent) {
  return HideRowById(this, kDomainById, id, bPermanent);
}

HRESULT CCorvaneDB::HideSubDomainRow(std::u16string_view id, bool bPermanent) {
  return HideRowById(this, kSubDomainById, id, bPermanent);
}

HRESULT CCorvaneDB::HideRecommendURLRow(std::u16string_view id, bool bPermanent) {
  return HideRowById(this, kURLById, id, bPermanent);
}

HRESULT CCorvaneDB::HideRecommendURLRowByURL(std::u16string_view url, bool bPermanent) {
  HideKey key;
  key.url = url;
  return HideRow(this, kURLByURL, key, bPermanent);
}

HRESULT CCorvaneDB::GetRecentDomains(uint32_t uCount, StatementPtr* lppStmt) {
  if (uCount == 0 || lppStmt == nullptr) return E_INVALIDARG;
  StatementPtr stmt = Prepare(kRecentDomainsSql);
  if (!stmt) return E_FAIL;
  *lppStmt = std::move(stmt);
  return S_OK;
}

HRESULT CCorvaneDB::GetRecentHistoryRows(StatementPtr* lppStmt) {
  if (lppStmt == nullptr) return E_INVALIDARG;
  StatementPtr stmt = Prepare(kRecentHistorySql);
  if (!stmt) return E_FAIL;
  *lppStmt = std::move(stmt);
  return S_OK;
}

}  // namespace corvane
