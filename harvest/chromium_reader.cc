// Reading a Chromium-family profile: History (SQLite, through a private
// copy) and Bookmarks (JSON).

#include <json/json.h>

#include <memory>

#include "common/debug_log.h"
#include "common/utf.h"
#include "harvest/private_copy.h"
#include "harvest/profile_readers.h"
#include "harvest/small_file.h"
#include "harvest/visit_rows.h"

namespace corvane::harvest {
namespace {

constexpr int64_t kWindowsEpochMicros = 11644473600LL * 1000000;
constexpr uint32_t kCoreMask = 0xFF;
constexpr uint32_t kAutoSubframe = 3;
constexpr uint32_t kManualSubframe = 4;
constexpr uint32_t kReload = 8;
constexpr uint32_t kKeywordGenerated = 10;
constexpr uint32_t kChainEnd = 0x20000000;

// The visits in time order; columns are named, as newer versions add some.
constexpr char kVisitsSql[] = "select v.url, v.visit_time, v.transition from visits v";
constexpr int kTransitionColumn = 2;
// Visits listed in visit_source came from elsewhere (synced, an extension,
// an import); 1 is a visit browsed here.
constexpr char kBrowsedHereSql[] = " where v.id not in (select id from visit_source where source != 1)";
constexpr char kVisitOrderSql[] = " order by v.visit_time, v.id";
constexpr char kPageSql[] = "select url, title, typed_count, hidden from urls where id = ?";
constexpr char kTableExistsSql[] = "select 1 from sqlite_master where type = 'table' and name = 'visit_source'";

// A visit the browser itself shows as one, other than a reload (see
// profile_readers.h). Back and forward steps and form submissions pass:
// their core type is that of a link or of the form, with a qualifier.
bool IsChosenVisit(sqlite3_stmt* stmt) {
  uint32_t transition = static_cast<uint32_t>(sqlite3_column_int64(stmt, kTransitionColumn));
  uint32_t core = transition & kCoreMask;
  return (transition & kChainEnd) != 0 && core != kAutoSubframe && core != kManualSubframe &&
         core != kKeywordGenerated && core != kReload;
}

void AddBookmarks(const Json::Value& node, const std::string& path, ItemStore* lpItems) {
  if (!node.isObject() || !node["children"].isArray()) return;
  for (const Json::Value& child : node["children"]) {
    if (!child.isObject() || !child["type"].isString()) continue;
    std::string type = child["type"].asString();
    std::string name = child["name"].isString() ? child["name"].asString() : std::string();
    if (type == "folder") {
      AddBookmarks(child, path + "/" + name, lpItems);
    } else if (type == "url" && child["url"].isString()) {
      lpItems->AddFavorite(FromUtf8(name), FromUtf8(child["url"].asString()), FromUtf8(path));
    }
  }
}

// False for a file that is missing (no line: the caller knows whether that
// matters) or, with a debug line, one that is no JSON object.
bool ReadBookmarksFile(const std::string& path, Json::Value* lpRoot, bool* lpMissing) {
  std::string text;
  SmallFileStatus status = ReadSmallFile(path, kMaxBookmarksBytes, &text);
  *lpMissing = status == SmallFileStatus::kMissing;
  if (*lpMissing) return false;
  if (status != SmallFileStatus::kRead) {
    DebugLog("harvest: %s can't be read: %s\n", path.c_str(), SmallFileStatusText(status));
    return false;
  }
  Json::CharReaderBuilder builder;
  builder["stackLimit"] = 256;
  std::string errors;
  try {
    std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    if (reader->parse(text.data(), text.data() + text.size(), lpRoot, &errors) && lpRoot->isObject()) return true;
  } catch (const std::exception& error) {
    errors = error.what();
  }
  DebugLog("harvest: %s can't be read: %s\n", path.c_str(), errors.c_str());
  return false;
}

}  // namespace

bool ReadChromiumHistory(const std::string& profile, ItemStore* lpItems) {
  PrivateCopy copy;
  std::string file = profile + "/History";
  if (!copy.Open(file)) return false;
  Statement hasSources = copy.Prepare(kTableExistsSql);
  bool sources = hasSources && sqlite3_step(hasSources.get()) == SQLITE_ROW;
  Statement stmt = copy.Prepare(std::string(kVisitsSql) + (sources ? kBrowsedHereSql : "") + kVisitOrderSql);
  Statement pages = copy.Prepare(kPageSql);
  if (!stmt || !pages) return false;
  int rc = AddVisitRows(stmt.get(), pages.get(), VisitQuery{kWindowsEpochMicros, IsChosenVisit}, file, lpItems);
  if (copy.Finished(rc)) return true;
  lpItems->AbandonSource();
  return false;
}

bool ReadChromiumBookmarks(const std::string& profile, ItemStore* lpItems) {
  // The profile's own bookmarks, then those the signed-in account keeps
  // apart in newer versions, in the same format. Only the first is always
  // there once the person has bookmarked anything.
  bool read = false;
  for (const char* file : {"/Bookmarks", "/AccountBookmarks"}) {
    Json::Value root;
    bool missing = false;
    if (!ReadBookmarksFile(profile + file, &root, &missing)) {
      if (missing && std::string(file) == "/Bookmarks") DebugLog("harvest: no file %s%s\n", profile.c_str(), file);
      continue;
    }
    read = true;
    const Json::Value& roots = root["roots"];
    if (!roots.isObject()) continue;
    // The browser shows its roots under localized names; these are ours.
    const std::pair<const char*, const char*> kRoots[] = {
        {"bookmark_bar", "Bookmarks bar"}, {"other", "Other bookmarks"}, {"synced", "Mobile bookmarks"}};
    for (const auto& [key, name] : kRoots) AddBookmarks(roots[key], name, lpItems);
  }
  return read;
}

}  // namespace corvane::harvest
