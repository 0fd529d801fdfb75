// Table operations of CCorvaneDB on THistory and TIEHistory: storing a
// delivery of the extraction library (from scratch, incrementally, or by the
// IE merge), the listings, the searches and the hides.
//
// Browser and host text is always bound. An item without a URL, or whose
// visit time has fields that form no date (month 13, 31 April), is skipped:
// it could be neither ordered nor grouped by day.

#include <algorithm>
#include <cstdio>
#include <limits>
#include <utility>

#include "common/debug_log.h"
#include "common/local_clock.h"
#include "common/text_util.h"
#include "common/time_stamp.h"
#include "common/utf.h"
#include "corvane/VisitHarvest.h"
#include "store/corvane_db.h"
#include "store/history_search.h"
#include "store/schema.h"

namespace corvane {
namespace {

constexpr char16_t kInsertHistory[] = u"insert into THistory values(?, ?, ?, ?, ?, ?, ?, ?);";
constexpr char16_t kInsertIEHistory[] = u"insert into TIEHistory values(?, ?, ?, ?, ?, ?, ?, ?);";
constexpr char16_t kAddHistoryCount[] = u"AddHistoryCount";
constexpr char16_t kIEInitialized[] = u"IEInitialized";
constexpr char16_t kIEHistoryAdded[] = u"IEHistoryAdded";
constexpr char16_t kIEHistoryAddedBK[] = u"IEHistoryAddedBK";
constexpr char16_t kLastIEHistoryCount[] = u"LastIEHistoryCount";

// What one delivered visit looks like once read off its item. The texts
// are the item's own, which live as long as the delivery.
struct Visit {
  std::u16string_view name;
  std::u16string_view url;
  int32_t count = 0;
  uint32_t browser = 0;
  std::u16string stamp;
  uint64_t timeNumber = 0;
  uint32_t day = 0;
};

// The indices of THistory, each over the one column it is named after.
constexpr const char16_t* kHistoryIndexColumns[] = {u"VisitTime", u"VisitDate", u"HideDate", u"URL"};

std::u16string_view TextOf(const char16_t* text) { return text == nullptr ? std::u16string_view() : text; }

// Reads an item; false for an item that can't be stored.
bool ReadVisit(IExtractItem* item, Visit* visit) {
  visit->url = TextOf(item->GetURL());
  if (visit->url.empty()) return false;
  SYSTEMTIME time{};
  item->GetVisitTime(&time);
  if (!SystemTimeToTimeNumber(time, &visit->timeNumber)) {
    DebugLog("skipped a visit with an invalid time %04u-%02u-%02u: %s", time.wYear, time.wMonth, time.wDay,
             ToUtf8(visit->url).c_str());
    return false;
  }
  visit->name = TextOf(item->GetName());
  visit->count = item->GetVisitCount();
  visit->browser = item->GetBrowser();
  // The stamp's weekday comes from the date, not from the extractor. The
  // digit stands before the time, so a wrong one (6 on a Tuesday, or 12)
  // would put the stamp out of time order as text; max(VisitTime) would then
  // miss the newest visit, and the next update would store visits again.
  static_cast<void>(TimeNumberToStamp(visit->timeNumber, &visit->stamp));
  visit->day = DayNumber(visit->timeNumber);
  return true;
}

// Binds parameters 1 to 7 of an insert into THistory; parameter 0 (HID)
// stays null so that SQLite numbers the row.
// The visit outlives the insert, so its texts are bound without a copy.
bool BindHistoryRow(CSqliteStatement* stmt, const Visit& visit, int32_t count, uint32_t browser) {
  return stmt->BindText16NoCopy(1, visit.name) && stmt->BindText16NoCopy(2, visit.url) && stmt->BindInt(3, count) &&
         stmt->BindText16NoCopy(4, visit.stamp) && stmt->BindInt64(5, visit.day) && stmt->BindInt(6, 0) &&
         stmt->BindInt(7, static_cast<int32_t>(browser));
}

bool BindIEHistoryRow(CSqliteStatement* stmt, const Visit& visit) {
  return stmt->BindText16(1, visit.name) && stmt->BindText16(2, visit.url) && stmt->BindInt(3, visit.count) &&
         stmt->BindText16(4, visit.stamp) && stmt->BindInt64(5, visit.day) && stmt->BindInt(6, 0) &&
         stmt->BindInt64(7, static_cast<int64_t>(visit.timeNumber));
}

std::u16string Number(int64_t value) { return FromUtf8(std::to_string(value)); }

// "limit 0, N" when a limit is given.
std::u16string WithLimit(std::u16string_view sql, uint32_t uLimit) {
  std::u16string out(sql);
  if (uLimit != 0) out += u" limit 0, " + Number(uLimit);
  return out + u";";
}

bool IsAllWord(std::u16string_view text) { return AsciiEqualsIgnoreCase(text, u"All"); }

// The pattern "%text%" of a search, the special characters of like escaped
// with "/". like stops reading its pattern at a NUL, so the text counts up
// to its first one; a NUL kept inside would anchor the pattern to the end.
std::u16string LikePattern(std::u16string_view text) {
  text = text.substr(0, text.find(u'\0'));
  std::u16string pattern(1, u'%');
  pattern.append(CCorvaneDB::EscapeSearchText(text));
  pattern.push_back(u'%');
  return pattern;
}

// Bytes of the text once SQLite has converted it to UTF-8, which is what
// like measures its pattern in. Any unit from 0xD800 to 0xDFFF takes the
// unit behind it along into one four-byte character, as SQLite's own
// conversion does; a lone one at the end counts as three bytes.
size_t Utf8Bytes(std::u16string_view text) {
  size_t bytes = 0;
  for (size_t i = 0; i < text.size(); ++i) {
    const char16_t unit = text[i];
    if (unit < 0x80) {
      bytes += 1;
    } else if (unit < 0x800) {
      bytes += 2;
    } else if (unit >= 0xD800 && unit < 0xE000 && i + 1 < text.size()) {
      bytes += 4;
      ++i;
    } else {
      bytes += 3;
    }
  }
  return bytes;
}

// like refuses a longer pattern with an error at the first row it tests,
// and a row loop can't tell that from the end of the rows: a search for
// such a text has to fail before it runs, not come back empty.
bool PatternFitsLike(CCorvaneDB* db, std::u16string_view pattern) {
  const int limit = sqlite3_limit(db->Handle(), SQLITE_LIMIT_LIKE_PATTERN_LENGTH, -1);
  return limit >= 0 && Utf8Bytes(pattern) <= static_cast<size_t>(limit);
}

HRESULT PrepareInto(CCorvaneDB* db, std::u16string_view sql, StatementPtr* lppStmt) {
  if (lppStmt == nullptr) return E_POINTER;
  StatementPtr stmt = db->Prepare(sql);
  if (!stmt) return E_FAIL;
  *lppStmt = std::move(stmt);
  return S_OK;
}

}  // namespace

// ---- Storing ----

// A whole history goes into an empty table: its indices are built once
// after the rows are in, by sorting, instead of row by row in random order,
// which costs several times more for a heavy user's history.
HRESULT CCorvaneDB::AddHistory(IExtractor* pExtractor) {
  if (pExtractor == nullptr) return E_INVALIDARG;
  int32_t stored = 0;
  if (BeginTransaction()) {
    for (const char16_t* column : kHistoryIndexColumns) {
      static_cast<void>(Exec(u"drop index if exists THistory_" + std::u16string(column) + u";"));
    }
    static_cast<void>(DropHistorySearchRowIndex(this));
    StatementPtr insert = Prepare(kInsertHistory);
    uint32_t count = insert ? pExtractor->GetCount() : 0;
    Visit visit;
    for (uint32_t i = 0; i < count; ++i) {
      IExtractItem* item = nullptr;
      static_cast<void>(pExtractor->GetNextItem(&item));
      if (item == nullptr || !ReadVisit(item, &visit)) continue;
      if (BindHistoryRow(insert.get(), visit, visit.count, visit.browser) && insert->Execute()) ++stored;
    }
    insert.reset();
    for (const char16_t* column : kHistoryIndexColumns) static_cast<void>(CreateIndex(schema::kHistory, column));
    static_cast<void>(CreateHistorySearchIndex(this));
    static_cast<void>(UpdateHistorySearchIndex(this));
    static_cast<void>(EndTransaction());
  }
  static_cast<void>(SetConfigInt(kAddHistoryCount, stored));
  return S_OK;
}

HRESULT CCorvaneDB::AddNewHistory(IExtractor* pExtractor) {
  if (pExtractor == nullptr) return E_INVALIDARG;
  static_cast<void>(DeleteConfig(kLastIEHistoryCount));
  uint64_t newest = 0;
  if (FAILED(GetNewestVisitTime(&newest))) {
    static_cast<void>(ClearHistory());
    return AddHistory(pExtractor);
  }
  int32_t stored = 0;
  if (BeginTransaction()) {
    StatementPtr insert = Prepare(kInsertHistory);
    uint32_t count = insert ? pExtractor->GetCount() : 0;
    Visit visit;
    for (uint32_t i = 0; i < count; ++i) {
      IExtractItem* item = nullptr;
      static_cast<void>(pExtractor->GetNextItem(&item));
      if (item == nullptr || !ReadVisit(item, &visit)) continue;
      // A visit at exactly the newest stored time is already stored.
      if (visit.timeNumber <= newest) continue;
      if (BindHistoryRow(insert.get(), visit, visit.count, visit.browser) && insert->Execute()) ++stored;
    }
    insert.reset();
    static_cast<void>(UpdateHistorySearchIndex(this));
    static_cast<void>(EndTransaction());
  }
  static_cast<void>(SetConfigInt(kAddHistoryCount, stored));
  return S_OK;
}

HRESULT CCorvaneDB::GetNewestVisitTime(uint64_t* lpTime) {
  if (lpTime == nullptr) return E_POINTER;
  StatementPtr stmt = Prepare(u"select max(VisitTime) from THistory;");
  if (!stmt || !stmt->Step() || stmt->ColumnIsNull(0)) return E_FAIL;
  std::u16string newest = stmt->ColumnText16(0);
  stmt.reset();
  uint64_t number = 0;
  if (!ParseVisitStamp(newest, &number)) return E_FAIL;
  *lpTime = number;
  return S_OK;
}

HRESULT CCorvaneDB::ClearHistory() {
  bool deleted = Exec(u"delete from THistory;");
  static_cast<void>(Exec(u"update sqlite_sequence set seq = 0 where name='THistory';"));
  // The numbers of the rows start again from 1: the index must not take
  // them for rows it has seen.
  if (deleted) static_cast<void>(ClearHistorySearchIndex(this));
  return deleted ? S_OK : E_FAIL;
}

// One item of an IE delivery against the stored snapshot. Counts in
// *lpAdded the rows stored in THistory and in *lpSnapshot those stored in
// TIEHistory.
namespace {

struct MergeState {
  CCorvaneDB* db;
  CSqliteStatement* snapshotInsert;
  bool firstMerge;
  int32_t added = 0;
  int32_t snapshot = 0;
};

void StoreSnapshotRow(MergeState* state, const Visit& visit) {
  if (BindIEHistoryRow(state->snapshotInsert, visit) && state->snapshotInsert->Execute()) ++state->snapshot;
}

// The visits since the snapshot: the delivered count less the stored one,
// taken in 64 bits since both come from outside and may be anything, and
// held to what the column's 32 bits can take.
int32_t AddedVisits(int32_t newCount, int32_t oldCount) {
  int64_t added = int64_t{newCount} - int64_t{oldCount};
  return added > std::numeric_limits<int32_t>::max() ? std::numeric_limits<int32_t>::max()
                                                     : static_cast<int32_t>(added);
}

void AddMergedVisit(MergeState* state, const Visit& visit, int32_t count) {
  StatementPtr insert = state->db->Prepare(kInsertHistory);
  if (insert && BindHistoryRow(insert.get(), visit, count, BROWSER_IE) && insert->Execute()) ++state->added;
}

void ReplaceSnapshotRow(MergeState* state, int64_t oldHID, const Visit& visit) {
  StatementPtr remove = state->db->Prepare(u"delete from TIEHistory  where HID=?");
  if (remove && remove->BindInt64(0, oldHID)) static_cast<void>(remove->Execute());
  StoreSnapshotRow(state, visit);
}

// The decision for one delivered URL: see MergeIEHistory.
void MergeOneItem(MergeState* state, const Visit& visit) {
  StatementPtr old = state->db->Prepare(u"select * from TIEHistory where URL=?");
  if (!old || !old->BindText16(0, visit.url)) return StoreSnapshotRow(state, visit);
  if (!old->Step()) {
    if (!state->firstMerge) AddMergedVisit(state, visit, visit.count);
    return StoreSnapshotRow(state, visit);
  }
  int64_t oldHID = old->ColumnInt64(0);
  int32_t oldCount = old->ColumnInt(3);
  uint64_t oldTime = static_cast<uint64_t>(old->ColumnInt64(7));
  old.reset();
  if (visit.timeNumber > oldTime) {
    // A newer last visit without a higher count tells nothing new: the old
    // row stays as it stood.
    if (visit.count <= oldCount) return;
    AddMergedVisit(state, visit, AddedVisits(visit.count, oldCount));
  }
  ReplaceSnapshotRow(state, oldHID, visit);
}

std::u16string TodayDateText() {
  SYSTEMTIME now{};
  GetLocalTime(&now);
  return FormatDateText(now);
}

}  // namespace

// IE tells only the last visit and a running count of each URL, so the new
// visits are the difference between this delivery and the stored snapshot.
HRESULT CCorvaneDB::MergeIEHistory(IExtractor* pExtractor) {
  if (pExtractor == nullptr) return E_INVALIDARG;
  if (!BeginTransaction()) return S_OK;
  std::u16string initialized;
  static_cast<void>(GetConfig(kIEInitialized, &initialized, u""));
  StatementPtr snapshotInsert = Prepare(kInsertIEHistory);
  MergeState state{this, snapshotInsert.get(), initialized.empty()};
  uint32_t count = snapshotInsert ? pExtractor->GetCount() : 0;
  for (uint32_t i = 0; i < count; ++i) {
    IExtractItem* item = nullptr;
    static_cast<void>(pExtractor->GetNextItem(&item));
    Visit visit;
    if (item == nullptr || !ReadVisit(item, &visit)) continue;
    MergeOneItem(&state, visit);
  }
  snapshotInsert.reset();
  if (state.added > 0) static_cast<void>(UpdateHistorySearchIndex(this));
  static_cast<void>(EndTransaction());
  if (state.snapshot > 0) static_cast<void>(SetConfig(kIEInitialized, TodayDateText()));
  if (state.added == 0) return S_OK;
  std::u16string previous;
  static_cast<void>(GetConfig(kIEHistoryAdded, &previous, u""));
  static_cast<void>(SetConfig(kIEHistoryAddedBK, previous));
  static_cast<void>(SetConfig(kIEHistoryAdded, TodayDateText()));
  static_cast<void>(SetConfigInt(kAddHistoryCount, state.added));
  return S_OK;
}

// ---- Listings ----
//
// THistory and TIEHistory share these listings; the table name comes from
// schema.h only.

namespace {

// "+HideDate" keeps SQLite off the index on HideDate, which would hand it
// every visible row to sort; the index on VisitDate gives the rows newest
// day first, so that a page costs its own rows.
HRESULT ListVisible(CCorvaneDB* db, const char16_t* table, uint32_t uLimit, StatementPtr* lppStmt) {
  return PrepareInto(
      db,
      WithLimit(FillTemplate(u"select * from %s where +HideDate = 0 order by VisitDate desc, VisitTime desc", table),
                uLimit),
      lppStmt);
}

// The most rows of a search kept for the next keystroke (a few MB): the
// one-letter texts that find more are searched again.
constexpr size_t kRememberedRows = 20000;

// What tells whether the database changed since a search: the changes made
// through this connection and the data version, which moves when another
// connection commits.
std::pair<int64_t, int64_t> DatabaseVersion(CCorvaneDB* db) {
  int64_t dataVersion = -1;
  StatementPtr stmt = db->Prepare(u"PRAGMA data_version;");
  if (stmt && stmt->Step()) dataVersion = stmt->ColumnInt64(0);
  return {sqlite3_total_changes64(db->Handle()), dataVersion};
}

// The search of the operation: every visible row whose title or address
// holds the text, by like. On THistory the rows tested are those of the
// addresses that the search index names (history_search.h), which leaves
// the result the same; where the index is missing, every row is tested.
// The rows are read unordered and put newest first by CHistoryRows. The rare
// result that it can't order (a damaged date or time) is read again by the
// plain like over every row, ordered in SQL: ordering the indexed compound
// query in SQL would compare texts in another collation than this query.
// A person typing on searches for a text that holds the last one: while
// nothing changed, its rows are found among the last search's rows.
HRESULT Search(CCorvaneDB* db, const char16_t* table, std::u16string_view text, uint32_t uBrowser, CHistoryRows* lpRows) {
  if (lpRows == nullptr) return E_POINTER;
  const std::u16string pattern = LikePattern(text);
  if (!PatternFitsLike(db, pattern)) {
    DebugLog("search text of %zu characters is too long for like", text.size());
    return E_FAIL;
  }
  // Typing on: the rows that hold the text are among those of the last
  // search, whose text it holds, if nothing changed since.
  const std::u16string_view searched = text.substr(0, text.find(u'\0'));
  const bool cacheable = std::u16string_view(table) == schema::kHistory && CharacterCount(searched) > 0;
  const auto version = cacheable ? DatabaseVersion(db) : std::pair<int64_t, int64_t>{-1, -1};
  CCorvaneDB::LastSearch& last = *db->LastHistorySearch();
  if (cacheable && !last.text.empty() && last.browser == uBrowser && last.changes == version.first &&
      last.dataVersion == version.second && version.second >= 0 && HoldsSearchedText(searched, last.text)) {
    last.rows.KeepHolding(searched);
    last.text.assign(searched);
    *lpRows = last.rows;
    return S_OK;
  }
  last.text.clear();
  std::u16string rowFilter = u"HideDate = 0";
  if (uBrowser != 0) rowFilter += u" and  Browser = " + Number(uBrowser);
  const std::u16string plain =
      FillTemplate(u"select * from %s where ( Name like ?1 ESCAPE '/' or URL like ?1 ESCAPE '/' ) and ", table) + rowFilter;
  std::u16string phrase;
  StatementPtr stmt;
  if (std::u16string_view(table) == schema::kHistory) {
    const bool byPhrase = HistorySearchPhrase(searched, &phrase);
    stmt = db->Prepare(IndexedHistorySearch(rowFilter, byPhrase) + u";");
    if (stmt && byPhrase && !stmt->BindText16(1, phrase)) return E_FAIL;
  }
  if (!stmt) stmt = db->Prepare(plain + u";");
  if (!stmt || !stmt->BindText16(0, pattern)) return E_FAIL;
  lpRows->Clear();
  if (lpRows->ReadAll(stmt.get())) {
    lpRows->SortNewestFirst();
    if (cacheable && lpRows->Size() <= kRememberedRows) {
      last = CCorvaneDB::LastSearch{std::u16string(searched), uBrowser, version.first, version.second, *lpRows};
    }
    return S_OK;
  }
  lpRows->Clear();
  stmt = db->Prepare(plain + u" order by VisitDate desc, VisitTime desc, HID desc;");
  if (!stmt || !stmt->BindText16(0, pattern)) return E_FAIL;
  static_cast<void>(lpRows->ReadAll(stmt.get()));
  return S_OK;
}

HRESULT ListDates(CCorvaneDB* db, const char16_t* table, uint32_t uLimit, StatementPtr* lppStmt) {
  return PrepareInto(db,
                     FillTemplate(u"select distinct VisitDate, count(URL) as count from %s group by VisitDate order by "
                                  u"VisitDate desc limit ",
                                  table) +
                         Number(uLimit) + u";",
                     lppStmt);
}

HRESULT ListDate(CCorvaneDB* db, const char16_t* table, uint32_t uDayNumber, StatementPtr* lppStmt) {
  return PrepareInto(db,
                     FillTemplate(u"select URL, Name, VisitTime, VisitCount from %s where VisitDate = ", table) +
                         Number(uDayNumber) + u" order by VisitTime desc;",
                     lppStmt);
}

}  // namespace

HRESULT CCorvaneDB::GetHistory(uint32_t uLimit, StatementPtr* lppStmt) {
  return ListVisible(this, schema::kHistory, uLimit, lppStmt);
}

HRESULT CCorvaneDB::SearchHistory(std::u16string_view text, CHistoryRows* lpRows, uint32_t uBrowser) {
  return Search(this, schema::kHistory, text, uBrowser, lpRows);
}

HRESULT CCorvaneDB::GetHistoryDates(uint32_t uLimit, StatementPtr* lppStmt) {
  return ListDates(this, schema::kHistory, uLimit, lppStmt);
}

HRESULT CCorvaneDB::GetHistoryByDate(uint32_t uDayNumber, StatementPtr* lppStmt) {
  return ListDate(this, schema::kHistory, uDayNumber, lppStmt);
}

HRESULT CCorvaneDB::GetIEHistory(uint32_t uLimit, StatementPtr* lppStmt) {
  return ListVisible(this, schema::kIEHistory, uLimit, lppStmt);
}

HRESULT CCorvaneDB::SearchIEHistory(std::u16string_view text, CHistoryRows* lpRows) {
  return Search(this, schema::kIEHistory, text, 0, lpRows);
}

HRESULT CCorvaneDB::GetIEHistoryDates(uint32_t uLimit, StatementPtr* lppStmt) {
  return ListDates(this, schema::kIEHistory, uLimit, lppStmt);
}

HRESULT CCorvaneDB::GetIEHistoryByDate(uint32_t uDayNumber, StatementPtr* lppStmt) {
  return ListDate(this, schema::kIEHistory, uDayNumber, lppStmt);
}

// Puts a "/" in front of each character that like or the escape itself
// would read specially. The text is bound, so quotes need no doubling.
std::u16string CCorvaneDB::EscapeSearchText(std::u16string_view text) {
  static constexpr std::u16string_view kSpecial = u"/[]%&-_()";
  std::u16string out;
  out.reserve(text.size() + text.size() / 4);
  for (char16_t c : text) {
    if (kSpecial.find(c) != std::u16string_view::npos) out.push_back(u'/');
    out.push_back(c);
  }
  return out;
}

// ---- Hides ----

HRESULT CCorvaneDB::HideHistory(std::u16string_view urlOrAll, uint32_t uBrowser) {
  std::u16string sql = u"update THistory set HideDate = 1";
  bool all = IsAllWord(urlOrAll);
  if (!all) sql += u" where URL = ?";
  if (uBrowser != 0) sql += (all ? u" where Browser = " : u" and Browser = ") + Number(uBrowser);
  if (all) return ExecWithTexts(this, sql, {});
  return ExecWithTexts(this, sql, {urlOrAll});
}

HRESULT CCorvaneDB::HideHistoryByID(std::u16string_view id, uint32_t uBrowser) {
  // An id that is no number would not even form a statement.
  int64_t hid = 0;
  if (!IsDecimalId(id, &hid)) return E_FAIL;
  std::u16string sql = u"update THistory set HideDate = 1 where HID = ?";
  if (uBrowser != 0) sql += u" and Browser = " + Number(uBrowser);
  return ExecWithNumber(this, sql, hid);
}

HRESULT CCorvaneDB::HideIEHistory(std::u16string_view urlOrAll) {
  HRESULT hr = IsAllWord(urlOrAll) ? ExecWithTexts(this, u"update TIEHistory set HideDate = 1;", {})
                                   : ExecWithTexts(this, u"update TIEHistory set HideDate = 1 where URL = ?;", {urlOrAll});
  if (FAILED(hr)) return E_FAIL;
  return HideHistory(urlOrAll, BROWSER_IE);
}

HRESULT CCorvaneDB::HideIEHistoryByID(std::u16string_view id) {
  int64_t hid = 0;
  if (!IsDecimalId(id, &hid)) return E_FAIL;
  StatementPtr select = Prepare(u"select URL from TIEHistory where HID=?;");
  if (!select || !select->BindInt64(0, hid) || !select->Step()) return E_FAIL;
  std::u16string url = select->ColumnText16(0);
  select.reset();
  if (FAILED(ExecWithNumber(this, u"update TIEHistory set HideDate = 1 where HID = ?;", hid))) return E_FAIL;
  // Every IE row of that URL in THistory is hidden with it.
  return HideHistory(url, BROWSER_IE);
}

}  // namespace corvane
