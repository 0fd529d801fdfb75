// output.h: how listings reach stdout: aligned text tables for people,
// the same rows as CSV (--csv), and exactly one JSON document for programs
// (--json). Every row shows its row ID (row_ids.h); JSON adds the kind and
// the component's own ID, and gives times as ISO 8601 beside the
// component's stamp.

#ifndef CORVANE_CLI_OUTPUT_H_
#define CORVANE_CLI_OUTPUT_H_

#include <json/value.h>

#include <cstdio>
#include <string>
#include <vector>

#include "cli/records.h"
#include "cli/row_ids.h"

namespace corvane::cli {

enum class TableFormat { kText, kCsv };

// Rows of text cells printed under a header: as text, each column as wide
// as its widest cell (counted in characters, not bytes), the last one not
// padded; as CSV (RFC 4180), the header trimmed.
class TextTable {
 public:
  explicit TextTable(std::vector<std::string> header);
  void AddRow(std::vector<std::string> cells);
  void Print(std::FILE* out, TableFormat format = TableFormat::kText) const;
  size_t RowCount() const { return m_rows.size(); }

 private:
  std::vector<std::string> m_header;
  std::vector<std::vector<std::string>> m_rows;
};

// Characters of a UTF-8 text.
size_t DisplayWidth(const std::string& text);

// The row ID of a record of the sites listing; "-" for a part without one.
std::string SiteRowId(const SiteRecord& record);

Json::Value SitesJson(const std::vector<SiteRecord>& records);
Json::Value RecentJson(const std::vector<SiteRecord>& records);
Json::Value UrlsJson(const std::vector<UrlRecord>& records, RowKind kind);
Json::Value DaysJson(const std::vector<DayGroup>& groups);

// One JSON document, indented, with a final line break.
void PrintJson(const Json::Value& document, std::FILE* out);

// Listings as text or CSV.
void PrintSites(const std::vector<SiteRecord>& sites, TableFormat format, std::FILE* out);
void PrintRecent(const std::vector<SiteRecord>& sites, TableFormat format, std::FILE* out);
void PrintDays(const std::vector<DayGroup>& days, TableFormat format, std::FILE* out);
void PrintUrls(const std::vector<UrlRecord>& records, RowKind kind, TableFormat format, std::FILE* out);

}  // namespace corvane::cli

#endif  // CORVANE_CLI_OUTPUT_H_
