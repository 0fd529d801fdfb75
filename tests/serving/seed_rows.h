// seed_rows.h: row builders for the tables that the managers read, written
// as the analysis would leave them.

#ifndef CORVANE_TESTS_SERVING_SEED_ROWS_H_
#define CORVANE_TESTS_SERVING_SEED_ROWS_H_

#include <cstdint>
#include <string>

namespace corvane::test {

// A time number of 2024-03-05 (any value works; it is only formatted).
inline constexpr uint64_t kSomeTime = 133540000000000000ULL;

inline std::string Q(const std::string& text) {
  std::string out = "'";
  for (char c : text) {
    if (c == '\'') out += '\'';
    out += c;
  }
  return out + "'";
}

inline std::string DomainRowSql(const char* table, const std::string& domain, const std::string& mainDomain,
                                uint32_t score, int hide = 0, uint64_t time = kSomeTime) {
  return std::string("insert into ") + table + " values(" + Q(domain) + "," + Q(mainDomain) + "," +
         std::to_string(time) + "," + std::to_string(score) + "," + std::to_string(hide) + ",0);";
}

inline std::string WhiteListSql(const std::string& name, const std::string& mainDomain, const std::string& domain,
                                const std::string& subName) {
  return "insert into TWhiteList values(" + Q(name) + "," + Q(mainDomain) + "," + Q(domain) + "," + Q(subName) + ");";
}

inline std::string NamesSql(const std::string& domain, const std::string& name) {
  return "insert into TNames values(" + Q(domain) + "," + Q(name) + ");";
}

inline std::string RecommendURLSql(const std::string& name, const std::string& url, const std::string& domain,
                                   const std::string& mainDomain, uint32_t weight, uint32_t visitCount = 1,
                                   int hide = 0) {
  return "insert into TRecommendURL values(" + Q(name) + "," + Q(url) + "," + Q(url.substr(7)) + "," +
         std::to_string(kSomeTime) + "," + Q(domain) + "," + Q(mainDomain) + "," + std::to_string(weight) + "," +
         std::to_string(hide) + "," + std::to_string(visitCount) + ",2);";
}

}  // namespace corvane::test

#endif  // CORVANE_TESTS_SERVING_SEED_ROWS_H_
