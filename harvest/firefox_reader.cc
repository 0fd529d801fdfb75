// Reading a Firefox profile: history and bookmarks from places.sqlite,
// through a private copy with its write-ahead log.

#include <array>
#include <map>
#include <vector>

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
// reloads (9), in time order. The page a redirect started from is left out
// too: a visit of type 5 or 6 is the page where a redirect landed, and its
// from_visit is the visit that redirected (RedirectSources).
constexpr char kVisitsSql[] =
    "select v.place_id, v.visit_date, v.id, case when v.visit_type in (5, 6) then v.from_visit end from "
    "moz_historyvisits v where v.visit_type not in (4, 7, 8, 9) order by v.visit_date, v.id";
constexpr int kIdColumn = 2;
constexpr int kRedirectedFromColumn = 3;
constexpr char kPageSql[] = "select url, title, typed, hidden from moz_places where id = ?";
constexpr char kVisitSql[] = "select visit_date, place_id from moz_historyvisits where id = ?";

// The delivered visits that started a redirect, found as the rows go by
// without a second pass over the visits: a redirect lands a moment after
// it starts, so the visit it started from is among the last rows seen. One
// further back is looked up in the file at the end.
class RedirectSources {
 public:
  static void See(sqlite3_stmt* stmt, bool added, void* context) {
    auto* self = static_cast<RedirectSources*>(context);
    if (sqlite3_column_type(stmt, kRedirectedFromColumn) != SQLITE_NULL) {
      self->Landed(sqlite3_column_int64(stmt, kRedirectedFromColumn));
    }
    const int64_t position = added ? static_cast<int64_t>(self->m_items->SourceSize()) - 1 : -1;
    self->m_recent[self->m_next++ % kRecent] = Row{sqlite3_column_int64(stmt, kIdColumn), position};
  }

  explicit RedirectSources(const ItemStore* items) : m_items(items) {}

  // The places of the visits to drop among the source's visits.
  std::vector<size_t> Places(const PrivateCopy& copy) {
    Statement visit = copy.Prepare(kVisitSql);
    for (int64_t id : m_earlier) {
      if (!visit) break;
      sqlite3_reset(visit.get());
      if (sqlite3_bind_int64(visit.get(), 1, id) != SQLITE_OK || sqlite3_step(visit.get()) != SQLITE_ROW) continue;
      const PageTexts* page = m_items->FindPage(sqlite3_column_int64(visit.get(), 1));
      const size_t place = page != nullptr ? m_items->FindSourceVisit(sqlite3_column_int64(visit.get(), 0), page)
                                           : std::string::npos;
      if (place != std::string::npos) m_places.push_back(place);
    }
    return m_places;
  }

 private:
  static constexpr size_t kRecent = 64;
  struct Row {
    int64_t id = -1;
    int64_t position = -1;  // -1: not delivered
  };

  void Landed(int64_t from) {
    for (const Row& row : m_recent) {
      if (row.id != from) continue;
      if (row.position >= 0) m_places.push_back(static_cast<size_t>(row.position));
      return;
    }
    m_earlier.push_back(from);
  }

  const ItemStore* m_items;
  std::array<Row, kRecent> m_recent{};
  size_t m_next = 0;
  std::vector<size_t> m_places;
  std::vector<int64_t> m_earlier;
};
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
  Statement pages = copy.Prepare(kPageSql);
  if (!stmt || !pages) return false;
  RedirectSources redirects(lpItems);
  int rc = AddVisitRows(stmt.get(), pages.get(), VisitQuery{0, nullptr, RedirectSources::See, &redirects}, file, lpItems);
  if (rc == SQLITE_DONE) lpItems->DropSourceVisits(redirects.Places(copy));
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
