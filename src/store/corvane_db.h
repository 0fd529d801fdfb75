// corvane_db.h: the one object through which the system reaches its stored
// data.
//
// CCorvaneDB owns the SQLite handle of CorvaneAppDB.db, creates the schema,
// offers the generic table steps and the nesting transaction pair, and reads
// and writes DBConfig.ini, the key-value file of stamps and counters. The
// operations on each family of tables live in their own source files, named
// in the headings below. The provider holds the one instance by value; the
// managers reach it through a plain pointer and never outlive it.
//
// Host and browser text is always bound as a parameter (or, where a statement
// is built as text, quoted with doubled single quotes), so that it never
// changes what a statement means. Table names come only from schema.h.

#ifndef CORVANE_STORE_CORVANE_DB_H_
#define CORVANE_STORE_CORVANE_DB_H_

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "corvane/CorvaneDataProvider.h"
#include "store/history_rows.h"
#include "store/prepared_url.h"
#include "store/sqlite_db.h"

class IExtractor;

namespace corvane {

// Saved hide marks across a rebuild: Domain (or URL) to Hide value.
using HideMap = std::map<std::u16string, int32_t>;

// The main domains that GetRecomURLs has handed out since the map was last
// emptied; the value is always 1.
using ShownDomainMap = std::map<std::u16string, uint32_t>;

// Answers whether a sub-domain rule makes the host a site of its own.
using SubDomainTest = std::function<bool(std::u16string_view mainDomain, std::u16string_view fullDomain)>;

// The factor by which a hide until the next rebuild lowers a score. It is no
// setting; CScoreSettings::GetHideFactor returns the same value.
inline constexpr float kHideFactor = 0.7f;

// One row of the white-listed domain query of the recommendation listing.
struct DomainRow {
  uint32_t ID = 0;
  std::u16string Name;
  std::u16string SubName;
  std::u16string MainDomain;
  std::u16string Domain;
  uint64_t LastVisitTime = 0;
  uint32_t Score = 0;
  int32_t Hide = 0;
};

class CCorvaneDB : public CSqliteDB {
 public:
  CCorvaneDB() = default;
  ~CCorvaneDB() override = default;

  // ---- Lifecycle (corvane_db.cc) ----

  // Opens the file and creates what is missing of the schema in one
  // transaction. S_FALSE when already open and bReopen is false; E_FAIL when
  // the file can't be opened or isn't a database; the failure of a table
  // creation otherwise.
  HRESULT Open(std::u16string_view path, bool bReopen);
  // Empties m_mapShownDomains, then closes. S_FALSE when it was not open,
  // E_FAIL when the handle would not close.
  HRESULT Close();

  // ---- Generic table steps (corvane_db.cc) ----

  // S_OK exists, S_FALSE missing, E_FAIL when the question can't be asked.
  HRESULT TableExists(std::u16string_view table);
  HRESULT CreateTableIfMissing(std::u16string_view table, std::u16string_view createSql);
  HRESULT DropTable(const char16_t* table);
  // Deletes all rows and restarts the table's AUTOINCREMENT numbering.
  HRESULT ClearTable(std::u16string_view table);
  // Drops the table and creates it from a template whose "%s" is the name.
  void RecreateTable(std::u16string_view createTemplate, std::u16string_view table);
  HRESULT CreateIndex(const char16_t* table, const char16_t* column1, const char16_t* column2 = nullptr,
                      const char16_t* column3 = nullptr);
  HRESULT CountDistinctURLs(std::u16string_view table, int32_t* lpCount);
  // How many distinct URLs of table also stand in container: 3 when both
  // counts worked, 2 when only the overlap did, 1 when only the total did.
  HRESULT CountURLsIn(std::u16string_view container, std::u16string_view table, int32_t* lpOverlap,
                      int32_t* lpTotal);

  // ---- Nesting transaction pair (corvane_db.cc) ----

  // Only the outermost pair issues "begin" and "commit"; writers of many rows
  // open one whatever their caller holds, so that they join it.
  bool BeginTransaction();
  bool EndTransaction();
  // Ends a pair like EndTransaction, but the outermost one rolls back: what
  // a run wrote into a file found damaged is never committed.
  bool AbandonTransaction();

  // ---- DBConfig.ini (corvane_db.cc) ----

  // S_OK when the value read (or the default) has at least one character.
  // Values are capped at 259 characters.
  HRESULT GetConfig(std::u16string_view key, std::u16string* lpValue, std::u16string_view defaultValue);
  // A null value deletes the key.
  HRESULT SetConfig(std::u16string_view key, const std::u16string* value);
  HRESULT SetConfig(std::u16string_view key, std::u16string_view value);
  HRESULT DeleteConfig(std::u16string_view key);
  HRESULT SetConfigInt(std::u16string_view key, int32_t value);
  // Full path of DBConfig.ini; empty when there is no data folder.
  const std::u16string& ConfigPath();

  // ---- History tables (history_tables.cc) ----

  HRESULT AddNewHistory(IExtractor* pExtractor);
  HRESULT AddHistory(IExtractor* pExtractor);
  HRESULT MergeIEHistory(IExtractor* pExtractor);
  HRESULT GetNewestVisitTime(uint64_t* lpTime);
  HRESULT ClearHistory();
  HRESULT GetHistory(uint32_t uLimit, StatementPtr* lppStmt);
  // Every visible row whose title or address holds the text, newest first.
  HRESULT SearchHistory(std::u16string_view text, CHistoryRows* lpRows, uint32_t uBrowser);
  HRESULT GetHistoryDates(uint32_t uLimit, StatementPtr* lppStmt);
  HRESULT GetHistoryByDate(uint32_t uDayNumber, StatementPtr* lppStmt);
  HRESULT GetIEHistory(uint32_t uLimit, StatementPtr* lppStmt);
  HRESULT SearchIEHistory(std::u16string_view text, CHistoryRows* lpRows);
  HRESULT GetIEHistoryDates(uint32_t uLimit, StatementPtr* lppStmt);
  HRESULT GetIEHistoryByDate(uint32_t uDayNumber, StatementPtr* lppStmt);
  HRESULT HideHistory(std::u16string_view urlOrAll, uint32_t uBrowser);
  HRESULT HideHistoryByID(std::u16string_view id, uint32_t uBrowser);
  HRESULT HideIEHistory(std::u16string_view urlOrAll);
  HRESULT HideIEHistoryByID(std::u16string_view id);
  static std::u16string EscapeSearchText(std::u16string_view text);

  // ---- Favorite and focus tables (favorite_tables.cc) ----

  HRESULT AddFavorites(IExtractor* pExtractor);
  HRESULT FindFavorite(std::u16string_view fixedURL, std::u16string_view name, std::u16string_view path);
  HRESULT IsFavoriteURL(std::u16string_view fixedURL);
  HRESULT GetFavorites(uint32_t uLimit, StatementPtr* lppStmt);
  HRESULT HideFavorite(std::u16string_view urlOrAll);
  HRESULT HideFavoriteByID(std::u16string_view id);
  HRESULT ClearFavorites();
  HRESULT AddFocusURL(std::u16string_view name, std::u16string_view url);
  HRESULT FindFocusURL(std::u16string_view name, std::u16string_view url);
  HRESULT GetFocusURLs(StatementPtr* lppStmt);
  HRESULT RemoveFocusURL(std::u16string_view url);
  HRESULT RemoveFocusByID(std::u16string_view id);
  HRESULT ClearFocusURLs();

  // ---- Reference lists (reflist_tables.cc) ----

  HRESULT PrepareListInsert(const char16_t* table, StatementPtr* lppStmt);
  HRESULT InsertListRow(CSqliteStatement* pStmt, const char* mainDomain, const char* domain, const char* name,
                        const char* subName);
  HRESULT PrepareNamesInsert(StatementPtr* lppStmt);
  HRESULT InsertNameRow(CSqliteStatement* pStmt, const char* name, const char* domain);

  // ---- Analysis tables (analysis_tables.cc) ----

  HRESULT ClearPreparedURLs();
  HRESULT WritePreparedURLs(const PreparedMap& map);
  HRESULT BuildRecommendURLsFromMap(const PreparedMap& map);

  // ---- Recommendation tables (recommend_tables.cc) ----

  HRESULT BuildRecommendURLs();
  HRESULT BuildRecommendDomains();
  HRESULT MarkTopDomains();
  HRESULT BuildZSTable();
  HRESULT BuildSubDomains();

  // ---- Recent tables (recent_tables.cc) ----

  HRESULT BuildRecentHistory();
  HRESULT BuildRecentMatch(const SubDomainTest& isSubDomain);
  bool MarkRecentMatches(std::u16string_view source, std::u16string_view matchTable,
                         const SubDomainTest& isSubDomain);
  HRESULT BuildRecentDomainTemp();
  HRESULT BuildRecentDomains();
  HRESULT MergeRecentDomains();
  HRESULT RestoreRecentHistory();

  // ---- Hide marks across a rebuild (hide_tables.cc) ----

  // 0 when the map got an entry, 1 when it stayed empty, E_FAIL when the
  // table can't be read.
  HRESULT GetHiddenRecommendDomains(HideMap* lpMap);
  HRESULT GetHiddenSubDomains(HideMap* lpMap);
  HRESULT GetHiddenRecommendURLs(HideMap* lpMap);
  HRESULT ReapplyHiddenRecommendDomains(const HideMap& map);
  HRESULT ReapplyHiddenSubDomains(const HideMap& map);
  HRESULT ReapplyHiddenRecommendURLs(const HideMap& map, float factor);

  // ---- Serving queries and host hides (serving_queries.cc) ----

  HRESULT GetRecommendDomains(bool bFocus, std::vector<DomainRow>* lpRows);
  // The listings of the sub-domains and of the single URLs, each whole and
  // in its order, without the filter of shown main domains: the listing
  // pages them itself (serving/shown_set_pager.h). Ties keep table order.
  HRESULT GetSubDomains(bool bFocus, StatementPtr* lppStmt);
  HRESULT GetRecommendURLs(bool bFocus, StatementPtr* lppStmt);
  HRESULT GetRecommendURLsByVisitCount(bool bFocus, StatementPtr* lppStmt);
  // The sub-sites of every white-listed main domain, by main domain and
  // then best first.
  HRESULT GetAllDomainSubSites(StatementPtr* lppStmt);
  HRESULT GetFocusID(std::u16string_view url, uint32_t* lpuID);
  HRESULT HideRecommendDomainRow(std::u16string_view id, bool bPermanent);
  HRESULT HideSubDomainRow(std::u16string_view id, bool bPermanent);
  HRESULT HideRecommendURLRow(std::u16string_view id, bool bPermanent);
  HRESULT HideRecommendURLRowByURL(std::u16string_view url, bool bPermanent);
  HRESULT GetRecentDomains(uint32_t uCount, StatementPtr* lppStmt);
  // TRecentHistory, best first; ties keep table order.
  HRESULT GetRecentHistoryRows(StatementPtr* lppStmt);

  // ---- A damaged file set aside and rebuilt (db_recovery.cc) ----

  // Whether the open file needs rebuilding: an earlier listing or update
  // met damage in it, or it fails its quick check.
  bool NeedsRecovery();
  // Renames the damaged file (with its journal) to CorvaneAppDB.db.corrupt,
  // never over an earlier one, salvages the person's own rows from it,
  // builds a fresh file with the pins and the IE snapshot in it and the hide
  // marks waiting in TSalvagedMark, and makes the next update read the
  // browser again. One debug line, and the DBConfig.ini key "Recovered",
  // say what happened. Runs under a lock of the data folder, so that two
  // processes never both rebuild.
  HRESULT RecoverDamagedFile(std::u16string_view path);
  // Puts salvaged hide marks back once the update has rebuilt their tables:
  // those of history rows and favourites after the extraction, those of
  // the ranking tables (and then the table of marks) after the analysis.
  enum class MarkStage { kVisitsAndFavorites, kRankings };
  HRESULT PutBackSalvagedMarks(MarkStage stage);
  // True when the watch saw a failure; damage is noted in DBConfig.ini so
  // that the next start rebuilds the file even where its check passes.
  bool StorageFailed(const CStorageWatch& watch);

  // The page cache for an update (small: it reads every page once) or for
  // history searches (large enough for the search's index, which they read
  // again and again).
  void SizeCacheFor(bool bSearch);

  // The last history search: a person typing a word searches for each
  // longer text in turn, and every row that holds the longer text holds the
  // shorter one. Valid while the database is as it was (no change through
  // this connection, none through another); forgotten when a handle opens.
  struct LastSearch {
    std::u16string text;
    uint32_t browser = 0;
    int64_t changes = -1;
    int64_t dataVersion = -1;
    CHistoryRows rows;
  };
  LastSearch* LastHistorySearch() { return &m_lastSearch; }

  // ---- State shared with the recommendation listing ----

  ShownDomainMap m_mapShownDomains;

 private:
  HRESULT CreateSchema();
  // The pragmas of every handle; then the schema in one transaction.
  void ConfigureHandle();
  HRESULT OpenFresh(std::u16string_view path);
  HRESULT CreateTableWithIndices(std::u16string_view table, std::u16string_view createSql,
                                 std::initializer_list<const char16_t*> indexColumns);

  std::u16string m_strConfigPath;
  bool m_bSearchCache = false;
  LastSearch m_lastSearch;
  std::atomic<int32_t> m_nTransactionCount{0};
};

// Replaces every "%s" of a template with the name.
std::u16string FillTemplate(std::u16string_view sqlTemplate, std::u16string_view name);

// Text quoted as an SQL string literal: single quotes doubled, quotes added.
std::u16string SqlQuote(std::u16string_view text);

// Prepares the statement, binds the texts from index 0 on and runs it to
// its end: S_OK when it ran, E_FAIL otherwise.
HRESULT ExecWithTexts(CCorvaneDB* db, std::u16string_view sql, std::initializer_list<std::u16string_view> texts);

// Prepares the statement, binds the number at index 0 and runs it to its
// end: S_OK when it ran, E_FAIL otherwise.
HRESULT ExecWithNumber(CCorvaneDB* db, std::u16string_view sql, int64_t number);

// A "select count(*)" with the texts bound: S_OK above 0, S_FALSE at 0,
// E_FAIL when it can't be asked.
HRESULT CountWithTexts(CCorvaneDB* db, std::u16string_view sql, std::initializer_list<std::u16string_view> texts);

// True when the text is a decimal number that fits in a signed 64-bit
// integer: digits with an optional sign, blanks around them allowed, as
// SQL would read the text put into a statement. Ids that a host passes as
// text are checked with it before they are bound; the number goes to
// *lpValue when that is not null.
bool IsDecimalId(std::u16string_view text, int64_t* lpValue = nullptr);

}  // namespace corvane

#endif  // CORVANE_STORE_CORVANE_DB_H_
