#include "cli/explain_data.h"

#include <algorithm>

#include "cli/rule_match.h"
#include "cli/store_reader.h"

namespace corvane::cli {
namespace {

// The statements explain runs, on tables and columns the component
// documents.
constexpr char kUrlDays[] = "select count(distinct DayIndex), min(DayIndex) from TPreparedURL where URL = ?";
constexpr char kIsFavorite[] = "select count(*) from TFavorite where FixedURL = ?";
constexpr char kH2ByUrl[] =
    "select URL, Name, VisitCount, Score, MainDomainName from [h2] where URL in (?, ?) order by Score desc limit 5";
constexpr char kH2ByHost[] =
    "select URL, Name, VisitCount, Score, MainDomainName from [h2] where FullDomainName in (?, ?) "
    "order by Score desc limit 5";
constexpr char kJ1ByUrl[] =
    "select URL, Name, VisitCount, Score, MainDomainName from [j1] where URL in (?, ?) order by Score desc limit 5";
constexpr char kJ1ByHost[] =
    "select URL, Name, VisitCount, Score, MainDomainName from [j1] where FullDomainName in (?, ?) "
    "order by Score desc limit 5";
constexpr char kRecommendUrlRows[] =
    "select rowid, FixedURL, Weight, Hide from TRecommendURL where FixedURL in (?, ?) order by rowid";
constexpr char kRecommendDomainRows[] =
    "select rowid, Domain, Score, Hide from TRecommendDomain where Domain in (?, ?) order by rowid";
constexpr char kSubDomainRows[] =
    "select rowid, Domain, Score, Hide from TSubDomain where Domain in (?, ?) order by rowid";
constexpr char kWhiteGroups[] = "select Name, SubName, MainDomain from TWhiteList where Domain in (?, ?)";
constexpr char kSubRules[] = "select MainDomain, Domain from TSubList";
constexpr char kInZ[] = "select count(*) from [z] where FullDomainName in (?, ?)";
constexpr char kBlackListed[] = "select count(*) from TBlackList where Domain in (?, ?)";

bool StartsWith(std::string_view text, std::string_view prefix) { return text.substr(0, prefix.size()) == prefix; }

// The host itself, or a host below it.
bool IsWithin(const std::string& host, const std::string& domain) {
  return !domain.empty() && (host == domain || (host.size() > domain.size() && host.ends_with("." + domain)));
}

bool CountAbove0(StoreReader& reader, const char* sql, std::initializer_list<std::string> args) {
  Statement stmt = reader.Query(sql, args);
  return reader.Step(stmt.get()) && sqlite3_column_int(stmt.get(), 0) > 0;
}

void ReadDays(StoreReader& reader, ScoredUrl* lpUrl) {
  Statement stmt = reader.Query(kUrlDays, {lpUrl->url});
  if (reader.Step(stmt.get())) {
    lpUrl->days = static_cast<uint32_t>(sqlite3_column_int(stmt.get(), 0));
    lpUrl->newestDay = static_cast<uint32_t>(sqlite3_column_int(stmt.get(), 1));
  }
  lpUrl->favorite = CountAbove0(reader, kIsFavorite, {lpUrl->url});
}

// The URL itself, or the five best URLs of the host, from h2 and j1.
void ReadScoredUrls(StoreReader& reader, ExplainFacts* lpFacts) {
  const std::pair<const char*, const char*> kTables[] = {{"h2", lpFacts->isUrl ? kH2ByUrl : kH2ByHost},
                                                         {"j1", lpFacts->isUrl ? kJ1ByUrl : kJ1ByHost}};
  for (const auto& [table, sql] : kTables) {
    Statement stmt = lpFacts->isUrl ? reader.Query(sql, {lpFacts->fixedUrl, lpFacts->fixedUrl})
                                    : reader.Query(sql, {lpFacts->domain, lpFacts->altDomain});
    while (reader.Step(stmt.get())) {
      ScoredUrl url;
      url.table = table;
      url.url = ColumnText(stmt.get(), 0);
      url.name = ColumnText(stmt.get(), 1);
      url.visits = static_cast<uint32_t>(sqlite3_column_int64(stmt.get(), 2));
      url.score = static_cast<uint32_t>(sqlite3_column_int64(stmt.get(), 3));
      if (lpFacts->mainDomain.empty()) lpFacts->mainDomain = ColumnText(stmt.get(), 4);
      ReadDays(reader, &url);
      lpFacts->urls.push_back(std::move(url));
    }
  }
}

void ReadRanked(StoreReader& reader, const char* table, const char* sql, const std::string& key,
                const std::string& altKey, ExplainFacts* lpFacts) {
  Statement stmt = reader.Query(sql, {key, altKey});
  while (reader.Step(stmt.get())) {
    lpFacts->ranked.push_back(RankedRow{table, sqlite3_column_int64(stmt.get(), 0), ColumnText(stmt.get(), 1),
                                        sqlite3_column_int64(stmt.get(), 2), sqlite3_column_int(stmt.get(), 3)});
  }
}

// The white-list group of the host, and the sub-domain rules it matches.
void ReadReferenceLists(StoreReader& reader, ExplainFacts* lpFacts) {
  Statement white = reader.Query(kWhiteGroups, {lpFacts->domain, lpFacts->altDomain});
  while (reader.Step(white.get())) {
    // The host and its www form may both stand in the group under one name.
    std::string group = ColumnText(white.get(), 0) + " / " + ColumnText(white.get(), 1);
    if (std::find(lpFacts->whiteGroups.begin(), lpFacts->whiteGroups.end(), group) == lpFacts->whiteGroups.end()) {
      lpFacts->whiteGroups.push_back(group);
    }
    if (lpFacts->mainDomain.empty()) lpFacts->mainDomain = ColumnText(white.get(), 2);
  }
  // A rule belongs to a main domain; it applies to the hosts below it.
  Statement rules = reader.Query(kSubRules, {});
  while (reader.Step(rules.get())) {
    std::string main = ColumnText(rules.get(), 0);
    std::string rule = ColumnText(rules.get(), 1);
    if (!IsWithin(lpFacts->domain, main) || !MatchesRule(lpFacts->domain, rule)) continue;
    lpFacts->matchingRules.push_back(rule);
    if (lpFacts->mainDomain.empty()) lpFacts->mainDomain = main;
  }
  lpFacts->inZ = CountAbove0(reader, kInZ, {lpFacts->domain, lpFacts->altDomain});
  lpFacts->blackListed = CountAbove0(reader, kBlackListed, {lpFacts->domain, lpFacts->altDomain});
}

void SplitQuery(const std::string& text, ExplainFacts* lpFacts) {
  lpFacts->isUrl = text.find('/') != std::string::npos;
  if (lpFacts->isUrl) lpFacts->fixedUrl = FixedUrlOf(text);
  lpFacts->domain = HostOf(text);
  const std::string& host = lpFacts->domain;
  lpFacts->altDomain = StartsWith(host, "www.") ? host.substr(4) : "www." + host;
}

}  // namespace

std::string FixedUrlOf(std::string_view url) {
  for (std::string_view prefix : {"http://www.", "http://", "www."}) {
    if (StartsWith(url, prefix)) {
      url.remove_prefix(prefix.size());
      break;
    }
  }
  if (!url.empty() && url.back() == '/') url.remove_suffix(1);
  return std::string(url);
}

std::string HostOf(std::string_view url) {
  // A scheme stands before the first "/"; a "://" further on is in the path.
  size_t scheme = url.find("://");
  if (scheme != std::string_view::npos && scheme < url.find('/')) url.remove_prefix(scheme + 3);
  url = url.substr(0, url.find('/'));
  size_t port = url.find(':');
  if (port != std::string_view::npos && port > 0) url = url.substr(0, port);
  if (!url.empty() && url.back() == '.') url.remove_suffix(1);
  return std::string(url);
}

bool ReadExplainFacts(const std::string& dbPath, const std::string& text, ExplainFacts* lpFacts, std::string* lpError) {
  StoreReader reader;
  if (reader.Open(dbPath)) {
    SplitQuery(text, lpFacts);
    ReadScoredUrls(reader, lpFacts);
    if (lpFacts->isUrl) {
      ReadRanked(reader, "TRecommendURL", kRecommendUrlRows, lpFacts->fixedUrl, lpFacts->fixedUrl, lpFacts);
    }
    ReadRanked(reader, "TRecommendDomain", kRecommendDomainRows, lpFacts->domain, lpFacts->altDomain, lpFacts);
    ReadRanked(reader, "TSubDomain", kSubDomainRows, lpFacts->domain, lpFacts->altDomain, lpFacts);
    ReadReferenceLists(reader, lpFacts);
  }
  *lpError = reader.Error();
  return lpError->empty();
}

}  // namespace corvane::cli
