#include "store/history_search.h"

#include <sqlite3.h>

#include <initializer_list>
#include <memory>

#include "store/corvane_db.h"
#include "store/history_rows.h"

namespace corvane {
namespace {

constexpr char kCreateText[] =
    "create table if not exists THistoryText(ID INTEGER PRIMARY KEY, URL TEXT, Name TEXT, UNIQUE(URL, Name));";
// External content: the index keeps its trigrams, THistoryText the texts.
constexpr char kCreateSearch[] =
    "create virtual table if not exists THistorySearch using fts5(URL, Name, content='THistoryText', "
    "content_rowid='ID', tokenize='trigram');";
// One row, made by the first update: without it nothing is indexed yet.
// Every column of THistory, on the address first: the rows of the
// addresses a search names are read from it in runs.
constexpr char kCreateRowIndex[] =
    "create index if not exists THistory_Search on THistory(URL, VisitDate, VisitTime, HideDate, Browser, VisitCount, "
    "Name);";
constexpr char kCreateState[] =
    "create table if not exists THistorySearchState(ID INTEGER PRIMARY KEY CHECK (ID = 1), LastHID INTEGER, "
    "LastTextID INTEGER);";

constexpr char kReadLastHID[] = "select coalesce((select LastHID from THistorySearchState), 0);";
constexpr char kReadLastTextID[] = "select coalesce((select LastTextID from THistorySearchState), 0);";
constexpr char kNewestHID[] = "select coalesce(max(HID), 0) from THistory;";
// A missing title is the empty title: neither holds any text.
constexpr char kAddPairs[] =
    "insert or ignore into THistoryText(URL, Name) select URL, coalesce(Name, '') from THistory where HID > ?1 and "
    "HID <= ?2 and URL is not null order by HID;";
constexpr char kIndexPairs[] =
    "insert into THistorySearch(rowid, URL, Name) select ID, URL, Name from THistoryText where ID > ?1;";
constexpr char kNewestTextID[] = "select coalesce(max(ID), 0) from THistoryText;";
constexpr char kWriteState[] = "insert or replace into THistorySearchState values(1, ?1, ?2);";
constexpr char kClear[] =
    "insert into THistorySearch(THistorySearch) values('delete-all'); delete from THistoryText; "
    "delete from THistorySearchState;";

constexpr size_t kMinTrigramChars = 3;

using RawStatement = std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)>;

// Runs sql with the numbers bound to ?1, ?2, ...; with lpRow, the first
// column of its first row lands there. The statements here are our own;
// they go through SQLite directly because an insert that selects its rows
// yields none, which CSqliteStatement::Execute takes for a failure.
bool Run(CCorvaneDB* db, const char* sql, std::initializer_list<int64_t> numbers, int64_t* lpRow = nullptr) {
  sqlite3_stmt* raw = nullptr;
  if (sqlite3_prepare_v2(db->Handle(), sql, -1, &raw, nullptr) != SQLITE_OK) {
    sqlite3_finalize(raw);
    return false;
  }
  RawStatement stmt(raw, sqlite3_finalize);
  int index = 1;
  for (int64_t number : numbers) {
    if (sqlite3_bind_int64(raw, index++, number) != SQLITE_OK) return false;
  }
  const int rc = sqlite3_step(raw);
  if (lpRow == nullptr) return rc == SQLITE_DONE;
  if (rc != SQLITE_ROW) return false;
  *lpRow = sqlite3_column_int64(raw, 0);
  return true;
}

}  // namespace

HRESULT CreateHistorySearchIndex(CCorvaneDB* db) {
  for (const char* sql : {kCreateText, kCreateSearch, kCreateRowIndex, kCreateState}) {
    if (!db->ExecUtf8(sql)) return E_FAIL;
  }
  return S_OK;
}

HRESULT UpdateHistorySearchIndex(CCorvaneDB* db) {
  int64_t lastHID = 0;
  int64_t lastTextID = 0;
  int64_t newestHID = 0;
  int64_t newestTextID = 0;
  if (!Run(db, kReadLastHID, {}, &lastHID) || !Run(db, kReadLastTextID, {}, &lastTextID) ||
      !Run(db, kNewestHID, {}, &newestHID)) {
    return E_FAIL;
  }
  if (newestHID <= lastHID) return S_FALSE;
  const bool updated = Run(db, kAddPairs, {lastHID, newestHID}) && Run(db, kIndexPairs, {lastTextID}) &&
                       Run(db, kNewestTextID, {}, &newestTextID) &&
                       Run(db, kWriteState, {newestHID, newestTextID});
  return updated ? S_OK : E_FAIL;
}

HRESULT ClearHistorySearchIndex(CCorvaneDB* db) { return db->ExecUtf8(kClear) ? S_OK : E_FAIL; }

bool HistorySearchPhrase(std::u16string_view text, std::u16string* lpPhrase) {
  if (CharacterCount(text) < static_cast<int64_t>(kMinTrigramChars)) return false;
  // A phrase in double quotes takes every character as it stands; a double
  // quote inside it is written twice.
  lpPhrase->assign(1, u'"');
  for (char16_t c : text) {
    if (c == u'"') lpPhrase->push_back(u'"');
    lpPhrase->push_back(c);
  }
  lpPhrase->push_back(u'"');
  return true;
}

std::u16string IndexedHistorySearch(std::u16string_view rowFilter, bool byPhrase) {
  const std::u16string filter(rowFilter);
  const std::u16string urlLike = u"URL like ?1 ESCAPE '/'";
  const std::u16string nameLike = u"Name like ?1 ESCAPE '/'";
  const std::u16string pairs =
      byPhrase ? u"select URL from THistoryText where ID in (select rowid from THistorySearch where THistorySearch match ?2) and "
               : u"select URL from THistoryText where ";
  // Addresses that hold the text: every row of them is found, with no test
  // of its own. Addresses named only by titles that hold it: their rows
  // whose title does. Rows stored since the index was brought up to date
  // and not of these addresses, and rows without an address, are tested
  // whole.
  const std::u16string byAddress = u"(" + pairs + urlLike + u")";
  const std::u16string byTitle = u"(" + pairs + u"not " + urlLike + u" and " + nameLike + u")";
  const std::u16string named = u"(" + pairs + u"(" + urlLike + u" or " + nameLike + u"))";
  const std::u16string whole = u"( " + nameLike + u" or " + urlLike + u" ) and " + filter;
  const std::u16string lastIndexed = u"coalesce((select LastHID from THistorySearchState), 0)";
  return u"select * from THistory indexed by THistory_Search where URL in " + byAddress + u" and " + filter +
         u" union all select * from THistory indexed by THistory_Search where URL in " + byTitle + u" and " + nameLike +
         u" and " + filter + u" union all select * from THistory where HID > " + lastIndexed +
         u" and coalesce(URL in " + named + u", 0) = 0 and " + whole +
         u" union all select * from THistory indexed by THistory_URL where URL is null and HID <= " + lastIndexed +
         u" and " + whole;
}

HRESULT DropHistorySearchRowIndex(CCorvaneDB* db) {
  return db->ExecUtf8("drop index if exists THistory_Search;") ? S_OK : E_FAIL;
}

}  // namespace corvane
