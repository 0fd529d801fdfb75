#include "cli/store_reader.h"

namespace corvane::cli {
namespace {

// A running update holds the write lock for a moment at its end.
constexpr int kBusyMilliseconds = 2000;

constexpr char kHasHistoryTable[] = "select count(*) from sqlite_master where type = 'table' and name = 'THistory'";
constexpr char kDomainRowId[] = "select rowid from TRecommendDomain where Domain = ?";

bool IsMissingTable(const char* message) {
  return message != nullptr && std::string(message).rfind("no such table", 0) == 0;
}

}  // namespace

void StoreReader::Fail(const std::string& what) {
  if (m_error.empty()) m_error = m_path + ": " + what;
}

bool StoreReader::Open(const std::string& path) {
  m_path = path;
  sqlite3* raw = nullptr;
  int rc = sqlite3_open_v2(path.c_str(), &raw, SQLITE_OPEN_READONLY, nullptr);
  m_db.reset(raw);
  if (rc != SQLITE_OK) {
    Fail(raw != nullptr ? sqlite3_errmsg(raw) : "out of memory");
    return false;
  }
  sqlite3_busy_timeout(raw, kBusyMilliseconds);
  Statement check = Query(kHasHistoryTable, {});
  bool found = check && Step(check.get()) && sqlite3_column_int(check.get(), 0) > 0;
  if (!found) Fail("not a database of the component (no history table)");
  return m_error.empty();
}

Statement StoreReader::Query(const char* sql, std::initializer_list<std::string> args) {
  sqlite3_stmt* raw = nullptr;
  if (m_db == nullptr || sqlite3_prepare_v2(m_db.get(), sql, -1, &raw, nullptr) != SQLITE_OK) {
    const char* message = m_db != nullptr ? sqlite3_errmsg(m_db.get()) : "not open";
    if (!IsMissingTable(message)) Fail(message);
    raw = nullptr;
  }
  Statement stmt(raw, &sqlite3_finalize);
  int index = 1;
  for (const std::string& arg : args) {
    if (stmt) sqlite3_bind_text(stmt.get(), index++, arg.c_str(), static_cast<int>(arg.size()), SQLITE_TRANSIENT);
  }
  return stmt;
}

bool StoreReader::Step(sqlite3_stmt* stmt) {
  if (stmt == nullptr) return false;
  int rc = sqlite3_step(stmt);
  if (rc == SQLITE_ROW) return true;
  if (rc != SQLITE_DONE) Fail(sqlite3_errmsg(m_db.get()));
  return false;
}

std::string ColumnText(sqlite3_stmt* stmt, int column) {
  const unsigned char* text = sqlite3_column_text(stmt, column);
  return text == nullptr ? std::string() : std::string(reinterpret_cast<const char*>(text),
                                                       static_cast<size_t>(sqlite3_column_bytes(stmt, column)));
}

std::map<std::string, int64_t> ReadDomainRowIds(const std::string& path, const std::vector<std::string>& hosts) {
  std::map<std::string, int64_t> ids;
  StoreReader reader;
  if (!reader.Open(path)) return ids;
  for (const std::string& host : hosts) {
    Statement stmt = reader.Query(kDomainRowId, {host});
    if (reader.Step(stmt.get())) ids[host] = sqlite3_column_int64(stmt.get(), 0);
  }
  return ids;
}

HistorySummary ReadHistorySummary(const std::string& path) {
  HistorySummary summary;
  StoreReader reader;
  if (!reader.Open(path)) return summary;
  Statement stmt = reader.Query("select count(*), count(distinct VisitDate), min(VisitTime), max(VisitTime) from "
                                "THistory where HideDate = 0", {});
  if (!reader.Step(stmt.get())) return summary;
  summary.visits = sqlite3_column_int64(stmt.get(), 0);
  summary.days = sqlite3_column_int64(stmt.get(), 1);
  summary.first = ColumnText(stmt.get(), 2);
  summary.last = ColumnText(stmt.get(), 3);
  return summary;
}

bool ReadSiteRows(const std::string& path, const std::string& mainDomain, SiteRows* lpRows, std::string* lpError) {
  StoreReader reader;
  if (!reader.Open(path)) {
    *lpError = reader.Error();
    return false;
  }
  const std::pair<const char*, std::vector<uint32_t>*> kTables[] = {
      {"select rowid from TRecommendDomain where MainDomain = ? and Hide <= 0", &lpRows->hosts},
      {"select rowid from TSubDomain where MainDomain = ? and Hide <= 0", &lpRows->subDomains},
      {"select rowid from TRecommendURL where MainDomain = ? and Hide <= 0", &lpRows->pages}};
  for (const auto& [sql, ids] : kTables) {
    Statement stmt = reader.Query(sql, {mainDomain});
    while (stmt && reader.Step(stmt.get())) ids->push_back(static_cast<uint32_t>(sqlite3_column_int64(stmt.get(), 0)));
  }
  *lpError = reader.Error();
  return lpError->empty();
}

}  // namespace corvane::cli
