#include "store/corvane_db.h"

#include <limits>

#include "platform/app_data.h"
#include "platform/folder_access.h"
#include "platform/ini_file.h"
#include "platform/paths.h"
#include "store/history_search.h"
#include "store/schema.h"

namespace corvane {
namespace {

constexpr char16_t kConfigSection[] = u"DBConfig";
constexpr char16_t kConfigFileName[] = u"DBConfig.ini";
// A value of DBConfig.ini is read into a buffer of this many characters,
// terminator included.
constexpr size_t kConfigBufferChars = 260;
// How long a statement waits for another process (a second host) that holds
// the database, before it fails.
constexpr int kBusyTimeoutMs = 5000;
// Pages kept in memory, in KiB. An update, and the check at opening, read
// every page once: a small cache keeps their memory low. A history search
// reads the rows of many addresses from the 32 KiB pages of the search's
// covering index (24 MB for a heavy user), which a small cache reads from
// the file again at each keystroke.
constexpr char kUpdateCachePragma[] = "PRAGMA cache_size = -8192;";
constexpr char kSearchCachePragma[] = "PRAGMA cache_size = -32768;";
// Pages of a new file. With 32 KiB pages a heavy user's history and its
// indices are written, sorted and committed in about half the time that
// SQLite's default 4 KiB pages take; a file that exists keeps its own.
constexpr char kPageSizePragma[] = "PRAGMA page_size = 32768;";

}  // namespace

std::u16string FillTemplate(std::u16string_view sqlTemplate, std::u16string_view name) {
  std::u16string out;
  out.reserve(sqlTemplate.size() + name.size());
  for (size_t i = 0; i < sqlTemplate.size(); ++i) {
    if (sqlTemplate[i] == u'%' && i + 1 < sqlTemplate.size() && sqlTemplate[i + 1] == u's') {
      out.append(name);
      ++i;
    } else {
      out.push_back(sqlTemplate[i]);
    }
  }
  return out;
}

std::u16string SqlQuote(std::u16string_view text) {
  std::u16string out(u"'");
  for (char16_t c : text) {
    if (c == u'\'') out.push_back(u'\'');
    out.push_back(c);
  }
  out.push_back(u'\'');
  return out;
}

namespace {

StatementPtr PrepareWithTexts(CCorvaneDB* db, std::u16string_view sql, std::initializer_list<std::u16string_view> texts) {
  StatementPtr stmt = db->Prepare(sql);
  int index = 0;
  for (std::u16string_view text : texts) {
    if (stmt && !stmt->BindText16(index++, text)) stmt.reset();
  }
  return stmt;
}

}  // namespace

HRESULT ExecWithTexts(CCorvaneDB* db, std::u16string_view sql, std::initializer_list<std::u16string_view> texts) {
  StatementPtr stmt = PrepareWithTexts(db, sql, texts);
  return stmt && stmt->Execute() ? S_OK : E_FAIL;
}

HRESULT ExecWithNumber(CCorvaneDB* db, std::u16string_view sql, int64_t number) {
  StatementPtr stmt = db->Prepare(sql);
  return stmt && stmt->BindInt64(0, number) && stmt->Execute() ? S_OK : E_FAIL;
}

HRESULT CountWithTexts(CCorvaneDB* db, std::u16string_view sql, std::initializer_list<std::u16string_view> texts) {
  StatementPtr stmt = PrepareWithTexts(db, sql, texts);
  if (!stmt || !stmt->Step()) return E_FAIL;
  return stmt->ColumnInt64(0) > 0 ? S_OK : S_FALSE;
}

namespace {

// The white space that SQL skips around a number.
bool IsSqlBlank(char16_t c) { return c == u' ' || c == u'\t' || c == u'\n' || c == u'\r' || c == u'\f'; }

}  // namespace

bool IsDecimalId(std::u16string_view text, int64_t* lpValue) {
  size_t begin = 0;
  size_t end = text.size();
  while (begin < end && IsSqlBlank(text[begin])) ++begin;
  while (end > begin && IsSqlBlank(text[end - 1])) --end;
  const bool negative = begin < end && text[begin] == u'-';
  if (begin < end && (text[begin] == u'-' || text[begin] == u'+')) ++begin;
  if (begin == end) return false;
  // Gathered as a negative number, whose range reaches one further than
  // the positive one: "-9223372036854775808" fits.
  int64_t value = 0;
  for (size_t i = begin; i < end; ++i) {
    const char16_t c = text[i];
    if (c < u'0' || c > u'9') return false;
    const int digit = c - u'0';
    if (value < (std::numeric_limits<int64_t>::min() + digit) / 10) return false;
    value = value * 10 - digit;
  }
  if (!negative && value == std::numeric_limits<int64_t>::min()) return false;
  if (lpValue != nullptr) *lpValue = negative ? value : -value;
  return true;
}

// ---- Lifecycle ----

HRESULT CCorvaneDB::Open(std::u16string_view path, bool bReopen) {
  if (IsOpen()) {
    if (!bReopen) return S_FALSE;
    static_cast<void>(Close());
  }
  if (!CSqliteDB::Open(path)) return E_FAIL;
  ConfigureHandle();
  if (NeedsRecovery()) return RecoverDamagedFile(path);
  const CStorageWatch watch;
  static_cast<void>(Begin());
  HRESULT hr = CreateSchema();
  static_cast<void>(Commit());
  if (FAILED(hr) && watch.Damaged()) return RecoverDamagedFile(path);
  // A file that can't take the schema for another reason (no rights, a
  // full disk) is left as it is, and closed, so that a later Initialize
  // tries again instead of running an update against it.
  if (FAILED(hr)) static_cast<void>(CSqliteDB::Close());
  return hr;
}

void CCorvaneDB::ConfigureHandle() {
  sqlite3_busy_timeout(Handle(), kBusyTimeoutMs);
  // An update writes a heavy user's whole history and its four indices in
  // one transaction; with SQLite's default 2 MB cache the index pages spill
  // to the file and are read back over and over.
  static_cast<void>(ExecUtf8(kPageSizePragma));
  static_cast<void>(ExecUtf8(kUpdateCachePragma));
  m_bSearchCache = false;
  // A new handle counts its changes and data versions from the start again.
  m_lastSearch = LastSearch{};
}

void CCorvaneDB::SizeCacheFor(bool bSearch) {
  if (!IsOpen() || bSearch == m_bSearchCache) return;
  if (ExecUtf8(bSearch ? kSearchCachePragma : kUpdateCachePragma)) m_bSearchCache = bSearch;
}

HRESULT CCorvaneDB::OpenFresh(std::u16string_view path) {
  if (!CSqliteDB::Open(path)) return E_FAIL;
  ConfigureHandle();
  static_cast<void>(Begin());
  HRESULT hr = CreateSchema();
  static_cast<void>(Commit());
  if (FAILED(hr)) static_cast<void>(CSqliteDB::Close());
  return hr;
}

HRESULT CCorvaneDB::Close() {
  m_mapShownDomains.clear();
  if (!IsOpen()) return S_FALSE;
  return CSqliteDB::Close() ? S_OK : E_FAIL;
}

HRESULT CCorvaneDB::CreateTableWithIndices(std::u16string_view table, std::u16string_view createSql,
                                           std::initializer_list<const char16_t*> indexColumns) {
  HRESULT hr = TableExists(table);
  if (hr == S_FALSE) hr = Exec(createSql) ? S_OK : E_FAIL;
  if (FAILED(hr)) return hr;
  std::u16string tableName(table);
  for (const char16_t* column : indexColumns) {
    // Fails on every start but the first, since the index exists by then.
    static_cast<void>(CreateIndex(tableName.c_str(), column));
  }
  return S_OK;
}

HRESULT CCorvaneDB::CreateSchema() {
  HRESULT hr = CreateTableWithIndices(schema::kHistory, schema::kCreateHistory,
                                      {u"VisitTime", u"VisitDate", u"HideDate", u"URL"});
  if (FAILED(hr)) return hr;
  hr = CreateTableWithIndices(schema::kFavorite, schema::kCreateFavorite, {});
  if (FAILED(hr)) return hr;
  static_cast<void>(CreateIndex(schema::kFavorite, u"URL", u"Name", u"Path"));
  hr = CreateTableWithIndices(schema::kFocusURL, schema::kCreateFocusURL, {u"URL"});
  if (FAILED(hr)) return hr;
  hr = CreateTableWithIndices(schema::kIEHistory, schema::kCreateIEHistory,
                              {u"VisitTime", u"VisitDate", u"HideDate", u"URL"});
  if (FAILED(hr)) return hr;
  hr = CreateTableWithIndices(schema::kPreparedURL, schema::kCreatePreparedURL, {});
  if (FAILED(hr)) return hr;
  // Without its index a search reads every row, and finds the same.
  static_cast<void>(CreateHistorySearchIndex(this));
  const std::pair<const char16_t*, const char16_t*> kLists[] = {
      {schema::kWhiteList, schema::kCreateWhiteList},
      {schema::kBlackList, schema::kCreateBlackList},
      {schema::kSubList, schema::kCreateSubList},
      {schema::kRecommendDomain, schema::kCreateRecommendDomain},
  };
  for (const auto& [table, createSql] : kLists) {
    hr = CreateTableIfMissing(table, createSql);
    if (FAILED(hr)) return hr;
  }
  return S_OK;
}

// ---- Generic table steps ----

HRESULT CCorvaneDB::TableExists(std::u16string_view table) {
  StatementPtr stmt = Prepare(u"select count(*) from sqlite_master where type='table' and name=?;");
  if (!stmt || !stmt->BindText16(0, table) || !stmt->Execute()) return E_FAIL;
  return stmt->ColumnInt(0) > 0 ? S_OK : S_FALSE;
}

HRESULT CCorvaneDB::CreateTableIfMissing(std::u16string_view table, std::u16string_view createSql) {
  HRESULT hr = TableExists(table);
  if (hr != S_FALSE) return hr;
  return Exec(createSql) ? S_OK : E_FAIL;
}

HRESULT CCorvaneDB::DropTable(const char16_t* table) {
  if (table == nullptr) return E_INVALIDARG;
  return Exec(FillTemplate(u"DROP TABLE %s;", table)) ? S_OK : E_FAIL;
}

HRESULT CCorvaneDB::ClearTable(std::u16string_view table) {
  bool deleted = Exec(std::u16string(u"delete from ") + std::u16string(table));
  // A table without an AUTOINCREMENT key has no line in sqlite_sequence;
  // the update then changes nothing.
  StatementPtr reset = Prepare(u"update sqlite_sequence set seq = 0 where name=?;");
  if (reset && reset->BindText16(0, table)) static_cast<void>(reset->Execute());
  return deleted ? S_OK : E_FAIL;
}

void CCorvaneDB::RecreateTable(std::u16string_view createTemplate, std::u16string_view table) {
  static_cast<void>(Exec(FillTemplate(u"drop table %s", table)));
  static_cast<void>(Exec(FillTemplate(createTemplate, table)));
}

HRESULT CCorvaneDB::CreateIndex(const char16_t* table, const char16_t* column1, const char16_t* column2,
                                const char16_t* column3) {
  if (table == nullptr || column1 == nullptr) return E_INVALIDARG;
  std::u16string name = std::u16string(table) + u"_" + column1;
  std::u16string columns(column1);
  for (const char16_t* more : {column2, column3}) {
    if (more == nullptr) continue;
    name.append(u"_").append(more);
    columns.append(u",").append(more);
  }
  std::u16string sql = u"create index " + name + u" on " + table + u"(" + columns + u");";
  return Exec(sql) ? S_OK : E_FAIL;
}

HRESULT CCorvaneDB::CountDistinctURLs(std::u16string_view table, int32_t* lpCount) {
  StatementPtr stmt = Prepare(FillTemplate(u"select count(distinct URL) from %s;", table));
  if (!stmt || !stmt->Step()) return E_FAIL;
  *lpCount = stmt->ColumnInt(0);
  return S_OK;
}

HRESULT CCorvaneDB::CountURLsIn(std::u16string_view container, std::u16string_view table, int32_t* lpOverlap,
                                int32_t* lpTotal) {
  *lpOverlap = 0;
  *lpTotal = 0;
  bool totalWorked = SUCCEEDED(CountDistinctURLs(table, lpTotal));
  std::u16string sql = u"select count(distinct URL) from " + std::u16string(table) +
                       u" where URL in (select distinct URL from " + std::u16string(container) + u");";
  StatementPtr stmt = Prepare(sql);
  bool overlapWorked = stmt && stmt->Step();
  if (overlapWorked) *lpOverlap = stmt->ColumnInt(0);
  if (totalWorked && overlapWorked) return 3;
  if (overlapWorked) return 2;
  if (totalWorked) return 1;
  return E_FAIL;
}

// ---- Nesting transaction pair ----

bool CCorvaneDB::BeginTransaction() {
  if (m_nTransactionCount.load() == 0 && !Begin()) return false;
  m_nTransactionCount.fetch_add(1);
  return true;
}

bool CCorvaneDB::EndTransaction() {
  if (m_nTransactionCount.fetch_sub(1) - 1 != 0) return true;
  return Commit();
}

bool CCorvaneDB::AbandonTransaction() {
  if (m_nTransactionCount.fetch_sub(1) - 1 != 0) return true;
  return ExecUtf8("rollback");
}

// ---- DBConfig.ini ----

const std::u16string& CCorvaneDB::ConfigPath() {
  if (!m_strConfigPath.empty()) return m_strConfigPath;
  std::u16string folder;
  if (!GetDataFolder(&folder)) return m_strConfigPath;
  static_cast<void>(GrantFolderAccess(folder, kUsersAccount, kGenericAll));
  m_strConfigPath = PathJoin(folder, kConfigFileName);
  return m_strConfigPath;
}

HRESULT CCorvaneDB::GetConfig(std::u16string_view key, std::u16string* lpValue, std::u16string_view defaultValue) {
  *lpValue = ReadProfileString(ConfigPath(), kConfigSection, key, defaultValue, kConfigBufferChars);
  return lpValue->empty() ? E_FAIL : S_OK;
}

HRESULT CCorvaneDB::SetConfig(std::u16string_view key, const std::u16string* value) {
  const std::u16string& path = ConfigPath();
  if (path.empty()) return E_FAIL;
  return WriteProfileString(path, kConfigSection, key, value) ? S_OK : E_FAIL;
}

HRESULT CCorvaneDB::SetConfig(std::u16string_view key, std::u16string_view value) {
  std::u16string text(value);
  return SetConfig(key, &text);
}

HRESULT CCorvaneDB::DeleteConfig(std::u16string_view key) { return SetConfig(key, nullptr); }

HRESULT CCorvaneDB::SetConfigInt(std::u16string_view key, int32_t value) {
  std::string digits = std::to_string(value);
  return SetConfig(key, std::u16string(digits.begin(), digits.end()));
}

}  // namespace corvane
