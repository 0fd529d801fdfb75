// Reading a Chromium-family profile: History (SQLite, through a private
// copy) and Bookmarks (JSON).

#include <json/json.h>

#include <fstream>
#include <map>

#include "common/debug_log.h"
#include "common/local_clock.h"
#include "common/utf.h"
#include "harvest/private_copy.h"
#include "harvest/profile_readers.h"

namespace corvane::harvest {
namespace {

constexpr int64_t kWindowsEpochMicros = 11644473600LL * 1000000;
constexpr uint32_t kCoreMask = 0xFF;
constexpr uint32_t kAutoSubframe = 3;
constexpr uint32_t kManualSubframe = 4;
constexpr uint32_t kKeywordGenerated = 10;
constexpr uint32_t kChainEnd = 0x20000000;

// The visits with what the urls table says of their pages; columns are
// named, as newer versions add some.
constexpr char kVisitsSql[] =
    "select u.url, u.title, u.visit_count, u.typed_count, v.visit_time, v.transition from visits v join urls u on "
    "u.id = v.url where u.hidden = 0";
// Visits listed in visit_source came from elsewhere (synced, an extension,
// an import); 1 is a visit browsed here.
constexpr char kBrowsedHereSql[] = " and v.id not in (select id from visit_source where source != 1)";
constexpr char kVisitOrderSql[] = " order by v.visit_time, v.id";
constexpr char kTableExistsSql[] = "select 1 from sqlite_master where type = 'table' and name = 'visit_source'";

// A visit the browser itself shows as one.
bool IsChosenVisit(int64_t storedTransition) {
  uint32_t transition = static_cast<uint32_t>(storedTransition);
  uint32_t core = transition & kCoreMask;
  return (transition & kChainEnd) != 0 && core != kAutoSubframe && core != kManualSubframe && core != kKeywordGenerated;
}

std::u16string Text16(sqlite3_stmt* stmt, int column) {
  const unsigned char* text = sqlite3_column_text(stmt, column);
  return text != nullptr ? FromUtf8(reinterpret_cast<const char*>(text)) : std::u16string();
}

void AddBookmarks(const Json::Value& node, const std::string& path, uint32_t browser, ItemList* lpItems) {
  if (!node.isObject() || !node["children"].isArray()) return;
  for (const Json::Value& child : node["children"]) {
    if (!child.isObject() || !child["type"].isString()) continue;
    std::string type = child["type"].asString();
    std::string name = child["name"].isString() ? child["name"].asString() : std::string();
    if (type == "folder") {
      AddBookmarks(child, path + "/" + name, browser, lpItems);
    } else if (type == "url" && child["url"].isString()) {
      lpItems->push_back(std::make_unique<HarvestItem>(EXTRACT_FAVORITES, browser, FromUtf8(name),
                                                       FromUtf8(child["url"].asString()), FromUtf8(path), SYSTEMTIME{},
                                                       0, 0));
    }
  }
}

// False, with a debug line when the file is there, for a file that is no
// JSON object.
bool ReadBookmarksFile(const std::string& path, Json::Value* lpRoot) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return false;
  Json::CharReaderBuilder builder;
  builder["stackLimit"] = 256;
  std::string errors;
  try {
    if (Json::parseFromStream(builder, in, lpRoot, &errors) && lpRoot->isObject()) return true;
  } catch (const std::exception& error) {
    errors = error.what();
  }
  DebugLog("harvest: %s can't be read: %s\n", path.c_str(), errors.c_str());
  return false;
}

}  // namespace

void ReadChromiumHistory(const std::string& profile, uint32_t browser, ItemList* lpItems) {
  PrivateCopy copy;
  if (!copy.Open(profile + "/History")) return;
  Statement hasSources = copy.Prepare(kTableExistsSql);
  bool sources = hasSources && sqlite3_step(hasSources.get()) == SQLITE_ROW;
  Statement stmt = copy.Prepare(std::string(kVisitsSql) + (sources ? kBrowsedHereSql : "") + kVisitOrderSql);
  while (stmt && sqlite3_step(stmt.get()) == SQLITE_ROW) {
    if (!IsChosenVisit(sqlite3_column_int64(stmt.get(), 5))) continue;
    SYSTEMTIME time{};
    UnixMicrosToLocalTime(sqlite3_column_int64(stmt.get(), 4) - kWindowsEpochMicros, &time);
    lpItems->push_back(std::make_unique<HarvestItem>(
        EXTRACT_HISTORY, browser, Text16(stmt.get(), 1), Text16(stmt.get(), 0), std::u16string(), time,
        sqlite3_column_int(stmt.get(), 2), static_cast<uint32_t>(sqlite3_column_int(stmt.get(), 3))));
  }
}

void ReadChromiumBookmarks(const std::string& profile, uint32_t browser, ItemList* lpItems) {
  // The profile's own bookmarks, then those the signed-in account keeps
  // apart in newer versions, in the same format.
  for (const char* file : {"/Bookmarks", "/AccountBookmarks"}) {
    Json::Value root;
    if (!ReadBookmarksFile(profile + file, &root)) continue;
    const Json::Value& roots = root["roots"];
    if (!roots.isObject()) continue;
    // The browser shows its roots under localized names; these are ours.
    const std::pair<const char*, const char*> kRoots[] = {
        {"bookmark_bar", "Bookmarks bar"}, {"other", "Other bookmarks"}, {"synced", "Mobile bookmarks"}};
    for (const auto& [key, name] : kRoots) AddBookmarks(roots[key], name, browser, lpItems);
  }
}

}  // namespace corvane::harvest
