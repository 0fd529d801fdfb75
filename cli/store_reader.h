// store_reader.h: the component's database file, read-only.
//
// The database and its tables are an interface the component documents, so
// a host may look into it, but never writes it: the file is opened
// read-only, every value is bound, and table names come only from the
// host's own statements. Reading a table that is not there yet (no
// analysis has run) is no error; a file that is no database of the
// component, or any other failure of SQLite, is one.

#ifndef CORVANE_CLI_STORE_READER_H_
#define CORVANE_CLI_STORE_READER_H_

#include <sqlite3.h>

#include <cstdint>
#include <initializer_list>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace corvane::cli {

using Statement = std::unique_ptr<sqlite3_stmt, decltype(&sqlite3_finalize)>;

class StoreReader {
 public:
  StoreReader() = default;
  StoreReader(const StoreReader&) = delete;
  StoreReader& operator=(const StoreReader&) = delete;

  // Opens the file read-only and checks that it holds the component's
  // history table. False with the reason in Error().
  [[nodiscard]] bool Open(const std::string& path);
  // The statement with its text arguments bound; null when it did not
  // prepare, the cause in Error() unless a table was missing.
  Statement Query(const char* sql, std::initializer_list<std::string> args);
  // True for a row; false at the end and on a failure, kept in Error().
  [[nodiscard]] bool Step(sqlite3_stmt* stmt);
  // Empty as long as every read worked.
  const std::string& Error() const { return m_error; }

 private:
  void Fail(const std::string& what);

  std::unique_ptr<sqlite3, decltype(&sqlite3_close)> m_db{nullptr, &sqlite3_close};
  std::string m_path;
  std::string m_error;
};

// Text of a column; null reads as empty.
std::string ColumnText(sqlite3_stmt* stmt, int column);

// The TRecommendDomain row IDs of the hosts that have one, by host: the ID
// that "hide site" takes. An empty map when the database cannot be read.
std::map<std::string, int64_t> ReadDomainRowIds(const std::string& path, const std::vector<std::string>& hosts);

// What the visible history holds: visits, days, and the first and last
// visit stamps. Zeros when the database cannot be read.
struct HistorySummary {
  int64_t visits = 0;
  int64_t days = 0;
  std::string first;
  std::string last;
};
HistorySummary ReadHistorySummary(const std::string& path);

// The component's IDs of every ranked row of a main domain that is not
// hidden: its hosts, its sub-domains that are sites of their own, and its
// single pages. False with the reason when the database cannot be read.
struct SiteRows {
  std::vector<uint32_t> hosts;
  std::vector<uint32_t> subDomains;
  std::vector<uint32_t> pages;
};
[[nodiscard]] bool ReadSiteRows(const std::string& path, const std::string& mainDomain, SiteRows* lpRows,
                                std::string* lpError);

}  // namespace corvane::cli

#endif  // CORVANE_CLI_STORE_READER_H_
