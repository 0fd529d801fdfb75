// explain_data.h: what the data folder's database says about one URL or
// host, read for the explain command.
//
// The component has no query for why a site ranks where it does, so the
// host reads CorvaneAppDB.db read-only through StoreReader: the analysis
// tables (h2, j1, z, TPreparedURL), the recommendation tables and the
// reference tables, whose names and columns the component documents. Every
// value from the command line is bound as a parameter. A table that does
// not exist yet (no update has run) simply gives no rows; a file that is no
// database of the component is an error.

#ifndef CORVANE_CLI_EXPLAIN_DATA_H_
#define CORVANE_CLI_EXPLAIN_DATA_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace corvane::cli {

// One scored URL of h2 (long-standing) or j1 (recent only).
struct ScoredUrl {
  std::string table;  // "h2" or "j1"
  std::string url;    // fixed URL
  std::string name;
  uint32_t visits = 0;
  uint32_t score = 0;
  uint32_t days = 0;          // distinct day indexes in TPreparedURL
  uint32_t newestDay = 0;     // smallest day index
  bool favorite = false;
};

// A row of TRecommendDomain, TSubDomain or TRecommendURL.
struct RankedRow {
  std::string table;
  int64_t rowid = 0;
  std::string key;  // Domain, or URL for TRecommendURL
  int64_t score = 0;
  int32_t hide = 0;
};

struct ExplainFacts {
  bool isUrl = false;
  std::string fixedUrl;    // for a URL
  std::string domain;      // full domain (host)
  std::string altDomain;   // the same host with "www." added or taken off
  std::string mainDomain;  // as the database records it; empty when it has no row of the host
  std::vector<ScoredUrl> urls;          // the URL, or the best URLs of the host
  std::vector<RankedRow> ranked;
  std::vector<std::string> whiteGroups; // "Group / SubName" of TWhiteList rows of the host
  std::vector<std::string> matchingRules;  // TSubList rules of the host's main domain that it matches
  bool inZ = false;                     // the host became a sub-domain site (table z)
  bool blackListed = false;
};

// The stored form of a URL: "http://www.", else "http://", else "www." taken
// off the front, then one trailing "/" off the end.
std::string FixedUrlOf(std::string_view url);
// The host of a URL or of a bare host: behind the scheme, up to the first
// "/", without a port and without one trailing dot.
std::string HostOf(std::string_view url);

// Reads the facts for text, a URL (holds "/") or a host. False with a
// one-line message when the file is no readable database of the component.
[[nodiscard]] bool ReadExplainFacts(const std::string& dbPath, const std::string& text, ExplainFacts* lpFacts,
                                    std::string* lpError);

}  // namespace corvane::cli

#endif  // CORVANE_CLI_EXPLAIN_DATA_H_
