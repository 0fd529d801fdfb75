#include "cli/explain_data.h"

#include <sqlite3.h>

#include <algorithm>
#include <memory>

#include "cli/rule_match.h"
#include "common/text_util.h"
#include "common/url_util.h"
#include "common/utf.h"
#include "store/schema.h"

namespace corvane::cli {
namespace {

using Db = std::unique_ptr<sqlite3, decltype(&sqlite3_close)>;
using Stmt = std::unique_ptr<sqlite3_stmt, decltype(&sqlite3_finalize)>;

// A prepared statement with its text arguments bound; null when the
// statement does not prepare (a table that is not there yet).
Stmt Query(sqlite3* db, const std::string& sql, std::initializer_list<std::string> args) {
  sqlite3_stmt* raw = nullptr;
  if (sqlite3_prepare_v2(db, sql.c_str(), -1, &raw, nullptr) != SQLITE_OK) raw = nullptr;
  Stmt stmt(raw, &sqlite3_finalize);
  int index = 1;
  for (const std::string& arg : args) {
    if (stmt) sqlite3_bind_text(stmt.get(), index++, arg.c_str(), -1, SQLITE_TRANSIENT);
  }
  return stmt;
}

std::string Table(const char16_t* name) { return ToUtf8(name); }

std::string Text(sqlite3_stmt* stmt, int column) {
  const unsigned char* text = sqlite3_column_text(stmt, column);
  return text == nullptr ? std::string() : reinterpret_cast<const char*>(text);
}

void ReadDays(sqlite3* db, ScoredUrl* lpUrl) {
  Stmt stmt = Query(db, "select count(distinct DayIndex), min(DayIndex) from " + Table(schema::kPreparedURL) +
                            " where URL = ?", {lpUrl->url});
  if (stmt && sqlite3_step(stmt.get()) == SQLITE_ROW) {
    lpUrl->days = static_cast<uint32_t>(sqlite3_column_int(stmt.get(), 0));
    lpUrl->newestDay = static_cast<uint32_t>(sqlite3_column_int(stmt.get(), 1));
  }
  Stmt favorite = Query(db, "select count(*) from " + Table(schema::kFavorite) + " where FixedURL = ?", {lpUrl->url});
  lpUrl->favorite = favorite && sqlite3_step(favorite.get()) == SQLITE_ROW && sqlite3_column_int(favorite.get(), 0) > 0;
}

// The URL itself, or the five best URLs of the host, from h2 and j1.
void ReadScoredUrls(sqlite3* db, ExplainFacts* lpFacts) {
  for (const char16_t* table : {schema::kH2, schema::kJ1}) {
    std::string where = lpFacts->isUrl ? " where URL in (?, ?)" : " where FullDomainName in (?, ?)";
    Stmt stmt = Query(db, "select URL, Name, VisitCount, Score from " + Table(table) + where +
                              " order by Score desc limit 5",
                      {lpFacts->isUrl ? lpFacts->fixedUrl : lpFacts->domain,
                       lpFacts->isUrl ? lpFacts->fixedUrl : lpFacts->altDomain});
    while (stmt && sqlite3_step(stmt.get()) == SQLITE_ROW) {
      ScoredUrl url;
      url.table = table == schema::kH2 ? "h2" : "j1";
      url.url = Text(stmt.get(), 0);
      url.name = Text(stmt.get(), 1);
      url.visits = static_cast<uint32_t>(sqlite3_column_int64(stmt.get(), 2));
      url.score = static_cast<uint32_t>(sqlite3_column_int64(stmt.get(), 3));
      ReadDays(db, &url);
      lpFacts->urls.push_back(std::move(url));
    }
  }
}

void ReadRanked(sqlite3* db, const char16_t* table, const std::string& keyColumn, const std::string& scoreColumn,
                const std::string& key, const std::string& altKey, ExplainFacts* lpFacts) {
  Stmt stmt = Query(db, "select rowid, " + keyColumn + ", " + scoreColumn + ", Hide from " + Table(table) + " where " +
                            keyColumn + " in (?, ?) order by rowid", {key, altKey});
  while (stmt && sqlite3_step(stmt.get()) == SQLITE_ROW) {
    lpFacts->ranked.push_back(RankedRow{Table(table), sqlite3_column_int64(stmt.get(), 0), Text(stmt.get(), 1),
                                        sqlite3_column_int64(stmt.get(), 2), sqlite3_column_int(stmt.get(), 3)});
  }
}

// The white-list group of the host, and the sub-domain rules it matches.
void ReadReferenceLists(sqlite3* db, ExplainFacts* lpFacts) {
  Stmt white = Query(db, "select Name, SubName from " + Table(schema::kWhiteList) + " where Domain in (?, ?)",
                     {lpFacts->domain, lpFacts->altDomain});
  while (white && sqlite3_step(white.get()) == SQLITE_ROW) {
    // The host and its www form may both stand in the group under one name.
    std::string group = Text(white.get(), 0) + " / " + Text(white.get(), 1);
    if (std::find(lpFacts->whiteGroups.begin(), lpFacts->whiteGroups.end(), group) == lpFacts->whiteGroups.end()) {
      lpFacts->whiteGroups.push_back(group);
    }
  }
  Stmt rules = Query(db, "select Domain from " + Table(schema::kSubList) + " where MainDomain = ?", {lpFacts->mainDomain});
  while (rules && sqlite3_step(rules.get()) == SQLITE_ROW) {
    std::string rule = Text(rules.get(), 0);
    if (MatchesRule(lpFacts->domain, rule)) lpFacts->matchingRules.push_back(rule);
  }
  Stmt z = Query(db, "select count(*) from " + Table(schema::kZ) + " where FullDomainName in (?, ?)",
                 {lpFacts->domain, lpFacts->altDomain});
  lpFacts->inZ = z && sqlite3_step(z.get()) == SQLITE_ROW && sqlite3_column_int(z.get(), 0) > 0;
  Stmt black = Query(db, "select count(*) from " + Table(schema::kBlackList) + " where Domain in (?, ?)",
                     {lpFacts->domain, lpFacts->altDomain});
  lpFacts->blackListed = black && sqlite3_step(black.get()) == SQLITE_ROW && sqlite3_column_int(black.get(), 0) > 0;
}

void SplitQuery(const std::string& text, ExplainFacts* lpFacts) {
  lpFacts->isUrl = text.find('/') != std::string::npos;
  std::u16string url = FromUtf8(text);
  std::u16string host, main;
  if (lpFacts->isUrl) {
    static_cast<void>(GetFullDomain(url, &host));
    MakeFixedURL(url);
    lpFacts->fixedUrl = ToUtf8(url);
  } else {
    host = url;
  }
  static_cast<void>(GetMainDomain(host, &main));
  lpFacts->domain = ToUtf8(host);
  lpFacts->altDomain = host.rfind(u"www.", 0) == 0 ? ToUtf8(host.substr(4)) : "www." + lpFacts->domain;
  lpFacts->mainDomain = ToUtf8(main);
}

}  // namespace

bool ReadExplainFacts(const std::string& dbPath, const std::string& text, ExplainFacts* lpFacts, std::string* lpError) {
  sqlite3* raw = nullptr;
  int rc = sqlite3_open_v2(dbPath.c_str(), &raw, SQLITE_OPEN_READONLY, nullptr);
  Db db(raw, &sqlite3_close);
  if (rc != SQLITE_OK) {
    *lpError = "cannot open " + dbPath + " read-only: " + (raw ? sqlite3_errmsg(raw) : "out of memory");
    return false;
  }
  SplitQuery(text, lpFacts);
  ReadScoredUrls(db.get(), lpFacts);
  if (lpFacts->isUrl) {
    ReadRanked(db.get(), schema::kRecommendURL, "FixedURL", "Weight", lpFacts->fixedUrl, lpFacts->fixedUrl, lpFacts);
  }
  ReadRanked(db.get(), schema::kRecommendDomain, "Domain", "Score", lpFacts->domain, lpFacts->altDomain, lpFacts);
  ReadRanked(db.get(), schema::kSubDomain, "Domain", "Score", lpFacts->domain, lpFacts->altDomain, lpFacts);
  ReadReferenceLists(db.get(), lpFacts);
  return true;
}

}  // namespace corvane::cli
