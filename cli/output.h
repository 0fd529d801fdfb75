// output.h: how listings reach stdout: aligned text tables for people,
// and exactly one JSON document for programs (--json).

#ifndef CORVANE_CLI_OUTPUT_H_
#define CORVANE_CLI_OUTPUT_H_

#include <json/value.h>

#include <cstdio>
#include <string>
#include <vector>

#include "cli/records.h"

namespace corvane::cli {

// Rows of text cells printed under a header, each column as wide as its
// widest cell (counted in characters, not bytes). The last column is not
// padded.
class TextTable {
 public:
  explicit TextTable(std::vector<std::string> header);
  void AddRow(std::vector<std::string> cells);
  void Print(std::FILE* out) const;
  size_t RowCount() const { return m_rows.size(); }

 private:
  std::vector<std::string> m_header;
  std::vector<std::vector<std::string>> m_rows;
};

// Characters of a UTF-8 text.
size_t DisplayWidth(const std::string& text);

Json::Value ToJson(const SiteRecord& record);
Json::Value ToJson(const UrlRecord& record);
Json::Value ToJson(const DayGroup& group);
Json::Value ToJson(const std::vector<SiteRecord>& records);
Json::Value ToJson(const std::vector<UrlRecord>& records);
Json::Value ToJson(const std::vector<DayGroup>& groups);

// One JSON document, indented, with a final line break.
void PrintJson(const Json::Value& document, std::FILE* out);

// Text listings.
void PrintSites(const std::vector<SiteRecord>& sites, std::FILE* out);
void PrintRecent(const std::vector<SiteRecord>& sites, std::FILE* out);
void PrintDays(const std::vector<DayGroup>& days, std::FILE* out);
void PrintUrls(const std::vector<UrlRecord>& records, bool withPath, std::FILE* out);

}  // namespace corvane::cli

#endif  // CORVANE_CLI_OUTPUT_H_
