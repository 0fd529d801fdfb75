// Reading a Firefox profile: history and bookmarks from places.sqlite,
// through a private copy with its write-ahead log.

#include <map>

#include "common/debug_log.h"
#include "common/local_clock.h"
#include "common/utf.h"
#include "harvest/private_copy.h"
#include "harvest/profile_readers.h"

namespace corvane::harvest {
namespace {

std::u16string Text16(sqlite3_stmt* stmt, int column) {
  const unsigned char* text = sqlite3_column_text(stmt, column);
  return text != nullptr ? FromUtf8(reinterpret_cast<const char*>(text)) : std::u16string();
}

sqlite3_stmt* Prepare(sqlite3* db, const char* sql, const std::string& profile) {
  sqlite3_stmt* stmt = nullptr;
  if (sqlite3_prepare_v2(db, sql, -1, &stmt, nullptr) == SQLITE_OK) return stmt;
  DebugLog("harvest: places.sqlite of %s is not as expected: %s\n", profile.c_str(), sqlite3_errmsg(db));
  sqlite3_finalize(stmt);
  return nullptr;
}

struct Folder {
  int64_t parent = 0;
  std::string title;
  std::string guid;
};

// The readable names of the roots; tags are no bookmarks.
const char* RootName(const std::string& guid) {
  if (guid == "menu________") return "Bookmarks Menu";
  if (guid == "toolbar_____") return "Bookmarks Toolbar";
  if (guid == "unfiled_____") return "Other Bookmarks";
  if (guid == "mobile______") return "Mobile Bookmarks";
  return nullptr;
}

// "Bookmarks Toolbar/Work"; empty for a folder outside the four roots.
std::string PathOf(int64_t folder, const std::map<int64_t, Folder>& folders) {
  std::string path;
  for (int depth = 0; depth < 256; ++depth) {
    auto found = folders.find(folder);
    if (found == folders.end()) return std::string();
    if (const char* root = RootName(found->second.guid)) return path.empty() ? root : std::string(root) + "/" + path;
    path = path.empty() ? found->second.title : found->second.title + "/" + path;
    folder = found->second.parent;
  }
  return std::string();
}

}  // namespace

void ReadFirefoxHistory(const std::string& profile, uint32_t browser, ItemList* lpItems) {
  PrivateCopy copy;
  if (!copy.Open(profile + "/places.sqlite")) return;
  sqlite3_stmt* stmt = Prepare(copy.Handle(),
                               "select p.url, p.title, p.visit_count, p.typed, v.visit_date from moz_historyvisits v "
                               "join moz_places p on p.id = v.place_id where p.hidden = 0 and v.visit_type not in "
                               "(4, 7, 8) and v.id not in (select from_visit from moz_historyvisits where visit_type "
                               "in (5, 6) and from_visit is not null) order by v.visit_date, v.id",
                               profile);
  while (stmt != nullptr && sqlite3_step(stmt) == SQLITE_ROW) {
    SYSTEMTIME time{};
    UnixMicrosToLocalTime(sqlite3_column_int64(stmt, 4), &time);
    lpItems->push_back(std::make_unique<HarvestItem>(EXTRACT_HISTORY, browser, Text16(stmt, 1), Text16(stmt, 0),
                                                     std::u16string(), time, sqlite3_column_int(stmt, 2),
                                                     static_cast<uint32_t>(sqlite3_column_int(stmt, 3))));
  }
  sqlite3_finalize(stmt);
}

void ReadFirefoxBookmarks(const std::string& profile, uint32_t browser, ItemList* lpItems) {
  PrivateCopy copy;
  if (!copy.Open(profile + "/places.sqlite")) return;
  std::map<int64_t, Folder> folders;
  sqlite3_stmt* stmt = Prepare(copy.Handle(), "select id, parent, title, guid from moz_bookmarks where type = 2", profile);
  while (stmt != nullptr && sqlite3_step(stmt) == SQLITE_ROW) {
    const unsigned char* title = sqlite3_column_text(stmt, 2);
    const unsigned char* guid = sqlite3_column_text(stmt, 3);
    folders[sqlite3_column_int64(stmt, 0)] = Folder{sqlite3_column_int64(stmt, 1),
                                                    title ? reinterpret_cast<const char*>(title) : "",
                                                    guid ? reinterpret_cast<const char*>(guid) : ""};
  }
  sqlite3_finalize(stmt);
  stmt = Prepare(copy.Handle(),
                 "select b.title, p.url, b.parent from moz_bookmarks b join moz_places p on p.id = b.fk where b.type = "
                 "1 and p.url not like 'place:%' order by b.parent, b.position",
                 profile);
  while (stmt != nullptr && sqlite3_step(stmt) == SQLITE_ROW) {
    std::string path = PathOf(sqlite3_column_int64(stmt, 2), folders);
    if (path.empty()) continue;
    lpItems->push_back(std::make_unique<HarvestItem>(EXTRACT_FAVORITES, browser, Text16(stmt, 0), Text16(stmt, 1),
                                                     FromUtf8(path), SYSTEMTIME{}, 0, 0));
  }
  sqlite3_finalize(stmt);
}

}  // namespace corvane::harvest
