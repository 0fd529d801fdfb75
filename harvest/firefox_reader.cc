// Reading a Firefox profile: history and bookmarks from places.sqlite,
// through a private copy with its write-ahead log.

#include <map>

#include "common/utf.h"
#include "harvest/private_copy.h"
#include "harvest/profile_readers.h"
#include "harvest/visit_rows.h"

namespace corvane::harvest {
namespace {

std::string Text8(sqlite3_stmt* stmt, int column) {
  const unsigned char* text = sqlite3_column_text(stmt, column);
  return text != nullptr ? reinterpret_cast<const char*>(text) : std::string();
}

// Visits other than embedded loads (4), downloads (7), framed links (8) and
// reloads (9), on pages not hidden, and not the page a redirect started
// from: a visit of type 5 or 6 is the landing page, and its from_visit is
// the visit that redirected.
constexpr char kVisitsSql[] =
    "select p.url, p.title, p.typed, v.visit_date, p.id from moz_historyvisits v join moz_places p on "
    "p.id = v.place_id where p.hidden = 0 and v.visit_type not in (4, 7, 8, 9) and v.id not in (select from_visit from "
    "moz_historyvisits where visit_type in (5, 6) and from_visit is not null) order by v.visit_date, v.id";
constexpr char kFoldersSql[] = "select id, parent, title, guid from moz_bookmarks where type = 2";
// Saved searches are place: URLs in the bookmark tree.
constexpr char kBookmarksSql[] =
    "select b.title, p.url, b.parent from moz_bookmarks b join moz_places p on p.id = b.fk where b.type = 1 and p.url "
    "not like 'place:%' order by b.parent, b.position";

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

bool ReadFirefoxHistory(const std::string& profile, ItemStore* lpItems) {
  PrivateCopy copy;
  std::string file = profile + "/places.sqlite";
  if (!copy.Open(file)) return false;
  Statement stmt = copy.Prepare(kVisitsSql);
  if (!stmt) return false;
  int rc = AddVisitRows(stmt.get(), VisitQuery{0, nullptr}, file, lpItems);
  if (copy.Finished(rc)) return true;
  lpItems->AbandonSource();
  return false;
}

bool ReadFirefoxBookmarks(const std::string& profile, ItemStore* lpItems) {
  PrivateCopy copy;
  if (!copy.Open(profile + "/places.sqlite")) return false;
  std::map<int64_t, Folder> folders;
  Statement stmt = copy.Prepare(kFoldersSql);
  if (!stmt) return false;
  int rc = SQLITE_ROW;
  while ((rc = sqlite3_step(stmt.get())) == SQLITE_ROW) {
    folders[sqlite3_column_int64(stmt.get(), 0)] =
        Folder{sqlite3_column_int64(stmt.get(), 1), Text8(stmt.get(), 2), Text8(stmt.get(), 3)};
  }
  if (!copy.Finished(rc)) return false;
  stmt = copy.Prepare(kBookmarksSql);
  if (!stmt) return false;
  while ((rc = sqlite3_step(stmt.get())) == SQLITE_ROW) {
    std::string path = PathOf(sqlite3_column_int64(stmt.get(), 2), folders);
    if (path.empty()) continue;
    lpItems->AddFavorite(ColumnText16(stmt.get(), 0), ColumnText16(stmt.get(), 1), FromUtf8(path));
  }
  if (copy.Finished(rc)) return true;
  lpItems->AbandonSource();
  return false;
}

}  // namespace corvane::harvest
