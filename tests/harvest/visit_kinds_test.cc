// Which visits the library keeps, on hand-made browser files whose every
// row is a case; and damaged or busy files.

#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "harvest/fixture/profile_fixture.h"
#include "harvest/harvest_host.h"

namespace corvane::testing {
namespace {

namespace fs = std::filesystem;

void Exec(sqlite3* db, const std::string& sql) {
  char* message = nullptr;
  ASSERT_EQ(sqlite3_exec(db, sql.c_str(), nullptr, nullptr, &message), SQLITE_OK) << (message ? message : "");
}

std::vector<std::string> URLs(const std::vector<Delivered>& items) {
  std::vector<std::string> urls;
  for (const Delivered& item : items) urls.push_back(item.url);
  return urls;
}

class VisitKindsTest : public HarvestTest {
 protected:
  VisitKindsTest() : m_tz("TZ", "UTC") {}

  // A Chromium profile whose History holds exactly the given SQL.
  std::string ChromiumHistory(const std::string& rows) {
    std::string folder = Home() + "/.config/chromium/Default";
    fs::create_directories(folder);
    std::ofstream(Home() + "/.config/chromium/Local State") << R"({"profile":{"last_used":"Default"}})";
    sqlite3* db = nullptr;
    sqlite3_open((folder + "/History").c_str(), &db);
    Exec(db, "create table urls(id INTEGER PRIMARY KEY, url LONGVARCHAR, title LONGVARCHAR, visit_count INTEGER, "
             "typed_count INTEGER, last_visit_time INTEGER, hidden INTEGER);"
             "create table visits(id INTEGER PRIMARY KEY, url INTEGER, visit_time INTEGER, from_visit INTEGER, "
             "transition INTEGER, segment_id INTEGER, visit_duration INTEGER, originator_cache_guid TEXT);"
             "create table visit_source(id INTEGER PRIMARY KEY, source INTEGER NOT NULL);" + rows);
    sqlite3_close(db);
    return folder + "/History";
  }

  test::ScopedEnv m_tz;
};

// 2024-03-05 09:07:03.041 UTC in Chromium's microseconds since 1601.
constexpr char kTime[] = "13354103223041000";

TEST_F(VisitKindsTest, ChromiumKeepsChainEndsThatArePagesThePersonChose) {
  std::string rows;
  // id, hidden, transition (as stored, signed), visit source (-1: none).
  const struct {
    int id;
    int hidden;
    int64_t transition;
    int source;
  } kRows[] = {
      {1, 0, 0x30000000, -1},                              // link, whole chain: kept
      {2, 0, 0x10000000, -1},                              // a redirect step: left out
      {3, 0, static_cast<int32_t>(0xA0000000u), -1},       // landing page of a server redirect: kept
      {4, 0, 0x30000003, -1},                              // automatic subframe
      {5, 0, 0x30000004, -1},                              // manual subframe
      {6, 0, 0x3000000A, -1},                              // generated keyword visit
      {7, 1, 0x30000001, -1},                              // typed, but the URL is hidden
      {8, 0, 0x30000001, 0},                               // typed on another device, synced
      {9, 0, 0x30000008, 1},                               // reload, browsed here: kept
  };
  for (const auto& row : kRows) {
    std::string id = std::to_string(row.id);
    rows += "insert into urls values(" + id + ", 'https://u" + id + ".com/', 'T" + id + "', 3, 0, 0, " +
            std::to_string(row.hidden) + ");";
    rows += "insert into visits values(" + id + ", " + id + ", " + kTime + ", 0, " + std::to_string(row.transition) +
            ", 0, 0, '');";
    if (row.source >= 0) rows += "insert into visit_source values(" + id + ", " + std::to_string(row.source) + ");";
  }
  ChromiumHistory(rows);
  std::vector<Delivered> visits = Extract(BROWSER_CHROME, EXTRACT_HISTORY);
  EXPECT_EQ(URLs(visits), (std::vector<std::string>{"https://u1.com/", "https://u3.com/", "https://u9.com/"}));
  ASSERT_FALSE(visits.empty());
  const SYSTEMTIME& time = visits[0].time;
  EXPECT_EQ(std::vector<int>({time.wYear, time.wMonth, time.wDay, time.wDayOfWeek, time.wHour, time.wMinute,
                              time.wSecond, time.wMilliseconds}),
            std::vector<int>({2024, 3, 5, 2, 9, 7, 3, 41}));
  EXPECT_EQ(visits[0].name, "T1");
  EXPECT_EQ(visits[0].count, 3);
}

// Berlin leaves summer time on 2024-10-27 at 03:00, back to 02:00: the hour
// from 02:00 comes twice, and the visits keep the order of their instants.
TEST_F(VisitKindsTest, RepeatedLocalHourKeepsTheOrderOfTheInstants) {
  test::ScopedEnv berlin("TZ", "Europe/Berlin");
  // 00:30, 00:59 and 01:30 UTC: 02:30 summer time, 02:59 summer time, 02:30 winter time.
  ChromiumHistory(
      "insert into urls values(1, 'https://first.com/', 'F', 1, 0, 0, 0), (2, 'https://second.com/', 'S', 1, 0, 0, 0),"
      "(3, 'https://third.com/', 'T', 1, 0, 0, 0);"
      "insert into visits values(1, 3, 13374466200000000, 0, 805306368, 0, 0, ''),"
      "(2, 1, 13374462600000000, 0, 805306368, 0, 0, ''), (3, 2, 13374464340000000, 0, 805306368, 0, 0, '');");
  std::vector<Delivered> visits = Extract(BROWSER_CHROME, EXTRACT_HISTORY);
  ASSERT_EQ(URLs(visits), (std::vector<std::string>{"https://first.com/", "https://second.com/", "https://third.com/"}));
  std::vector<std::vector<int>> clock;
  for (const Delivered& visit : visits) {
    clock.push_back({visit.time.wDay, visit.time.wDayOfWeek, visit.time.wHour, visit.time.wMinute});
  }
  EXPECT_EQ(clock, (std::vector<std::vector<int>>{{27, 0, 2, 30}, {27, 0, 2, 59}, {27, 0, 2, 30}}));
}

TEST_F(VisitKindsTest, ChromiumAccountBookmarksJoinTheProfilesOwn) {
  ChromiumHistory("");
  std::string folder = Home() + "/.config/chromium/Default";
  std::ofstream(folder + "/Bookmarks") << R"({"version": 1, "roots": {"bookmark_bar": {"type": "folder", "name": "x",
      "children": [{"type": "url", "name": "Local", "url": "https://local.com/"},
                   {"type": "separator"}, {"type": "url", "name": "No URL"}]}}})";
  std::ofstream(folder + "/AccountBookmarks") << R"({"version": 1, "roots": {"other": {"type": "folder", "name": "y",
      "children": [{"type": "folder", "name": "Trips", "children": [
                   {"type": "url", "name": "Account", "url": "https://account.com/"}]}]}}})";
  std::vector<Delivered> bookmarks = Extract(BROWSER_CHROME, EXTRACT_FAVORITES);
  ASSERT_EQ(URLs(bookmarks), (std::vector<std::string>{"https://local.com/", "https://account.com/"}));
  EXPECT_EQ(bookmarks[0].path, "Bookmarks bar");
  EXPECT_EQ(bookmarks[1].path, "Other bookmarks/Trips");
  EXPECT_EQ(bookmarks[1].name, "Account");
  // A damaged account file leaves the profile's own bookmarks.
  std::ofstream(folder + "/AccountBookmarks", std::ios::trunc) << "[[[[";
  EXPECT_EQ(URLs(Extract(BROWSER_CHROME, EXTRACT_FAVORITES)), (std::vector<std::string>{"https://local.com/"}));
}

TEST_F(VisitKindsTest, FirefoxLeavesOutEmbedsDownloadsFramesAndRedirectingPages) {
  std::string error;
  fixture::ProfileSpec spec;
  spec.days = 1;
  spec.visitsPerDay = 5;
  spec.distinctUrls = 20;
  spec.hosts = 10;
  spec.bookmarks = 0;
  spec.lastDay = "2024-03-05";
  ASSERT_TRUE(fixture::WriteFirefoxProfile(Home(), spec, &error)) << error;
  sqlite3* db = nullptr;
  ASSERT_EQ(sqlite3_open(fixture::FirefoxPlacesPath(Home()).c_str(), &db), SQLITE_OK);
  Exec(db, "delete from moz_historyvisits;");
  for (int type = 1; type <= 9; ++type) {
    std::string id = std::to_string(type);
    Exec(db, "insert into moz_places(id, url, title, hidden, visit_count) values(" + std::to_string(1000 + type) +
                 ", 'https://t" + id + ".org/', 'T', 0, 1);"
                 "insert into moz_historyvisits(place_id, visit_date, visit_type) values(" +
                 std::to_string(1000 + type) + ", 1709629623041000, " + id + ");");
  }
  // A redirect: the typed address redirected (its place not hidden, as it
  // was also visited on its own before) and landed on a page whose visit
  // carries the temporary redirect's type. And a hidden place's link visit.
  Exec(db, "insert into moz_places(id, url, title, hidden, visit_count) values(2001, 'http://r.org/', 'R', 0, 1), "
           "(2002, 'https://r.org/home', 'Home', 0, 1), (2003, 'https://hidden.org/', 'H', 1, 1);"
           "insert into moz_historyvisits(id, from_visit, place_id, visit_date, visit_type) values"
           "(500, 0, 2001, 1709629624000000, 2), (501, 500, 2002, 1709629624100000, 6),"
           "(502, null, 2003, 1709629625000000, 1);");
  sqlite3_close(db);
  EXPECT_EQ(URLs(Extract(BROWSER_FIREFOX, EXTRACT_HISTORY)),
            (std::vector<std::string>{"https://t1.org/", "https://t2.org/", "https://t3.org/", "https://t5.org/",
                                      "https://t6.org/", "https://t9.org/", "https://r.org/home"}));
}

TEST_F(VisitKindsTest, CorruptOrTruncatedHistoryDeliversNothing) {
  std::string history = ChromiumHistory("insert into urls values(1, 'https://a.com/', 'A', 1, 0, 0, 0);"
                                        "insert into visits values(1, 1, 13354103223041000, 0, 805306368, 0, 0, '');");
  ASSERT_EQ(Extract(BROWSER_CHROME, EXTRACT_HISTORY).size(), 1u);
  // Truncated in the middle of its pages.
  fs::resize_file(history, fs::file_size(history) / 2);
  EXPECT_TRUE(Extract(BROWSER_CHROME, EXTRACT_HISTORY).empty());
  // Garbage where a database should be.
  std::ofstream(history, std::ios::trunc | std::ios::binary) << std::string(8192, '\x5a');
  EXPECT_TRUE(Extract(BROWSER_CHROME, EXTRACT_HISTORY).empty());
  // Damaged bookmarks and a missing file.
  std::ofstream(Home() + "/.config/chromium/Default/Bookmarks") << "{\"roots\": {\"bookmark_bar\": ";
  EXPECT_TRUE(Extract(BROWSER_CHROME, EXTRACT_FAVORITES).empty());
  // Nesting deep enough to exhaust a recursive reader's stack.
  std::string deep;
  for (int i = 0; i < 100000; ++i) deep += R"({"type": "folder", "name": "f", "children": [)";
  std::ofstream(Home() + "/.config/chromium/Default/Bookmarks", std::ios::trunc)
      << R"({"roots": {"bookmark_bar": )" << deep;
  EXPECT_TRUE(Extract(BROWSER_CHROME, EXTRACT_FAVORITES).empty());
  fs::remove(history);
  EXPECT_TRUE(Extract(BROWSER_CHROME, EXTRACT_HISTORY).empty());
  // A sound database of some other layout.
  sqlite3* db = nullptr;
  ASSERT_EQ(sqlite3_open(history.c_str(), &db), SQLITE_OK);
  Exec(db, "create table visits(id INTEGER PRIMARY KEY, when_visited INTEGER); insert into visits values(1, 2);");
  sqlite3_close(db);
  EXPECT_TRUE(Extract(BROWSER_CHROME, EXTRACT_HISTORY).empty());
}

// Another process holds the database with an open write transaction, as a
// running browser does, and its last commit still sits in the write-ahead
// log: the read sees that commit, neither blocks nor sees the unfinished
// write, nor does it disturb the writer.
TEST_F(VisitKindsTest, ProfileHeldOpenAndWrittenByAnotherProcess) {
  std::string error;
  fixture::ProfileSpec spec;
  spec.days = 2;
  spec.visitsPerDay = 30;
  spec.distinctUrls = 100;
  spec.hosts = 20;
  spec.bookmarks = 5;
  spec.lastDay = "2024-03-05";
  ASSERT_TRUE(fixture::WriteFirefoxProfile(Home(), spec, &error)) << error;
  size_t committed = Extract(BROWSER_FIREFOX, EXTRACT_HISTORY).size();
  int ready[2];
  int done[2];
  ASSERT_EQ(pipe(ready), 0);
  ASSERT_EQ(pipe(done), 0);
  pid_t child = fork();
  if (child == 0) {
    sqlite3* db = nullptr;
    sqlite3_open(fixture::FirefoxPlacesPath(Home()).c_str(), &db);
    // One committed visit that stays in the log (no checkpoint), then a
    // write transaction left open.
    sqlite3_exec(db, "PRAGMA locking_mode=EXCLUSIVE; PRAGMA wal_autocheckpoint=0; insert into "
                     "moz_historyvisits(place_id, visit_date, visit_type) values(1, 1709629622000000, 1); begin "
                     "exclusive; insert into moz_historyvisits(place_id, visit_date, visit_type) values(1, "
                     "1709629623041000, 1);", nullptr, nullptr, nullptr);
    char byte = 1;
    static_cast<void>(write(ready[1], &byte, 1));
    static_cast<void>(read(done[0], &byte, 1));
    sqlite3_exec(db, "commit", nullptr, nullptr, nullptr);
    sqlite3_close(db);
    _exit(0);
  }
  char byte = 0;
  ASSERT_EQ(read(ready[0], &byte, 1), 1);
  std::error_code ignored;
  EXPECT_GT(fs::file_size(fixture::FirefoxPlacesPath(Home()) + "-wal", ignored), 0u);
  EXPECT_EQ(Extract(BROWSER_FIREFOX, EXTRACT_HISTORY).size(), committed + 1);
  EXPECT_EQ(Extract(BROWSER_FIREFOX, EXTRACT_FAVORITES).size(), 5u);
  ASSERT_EQ(write(done[1], &byte, 1), 1);
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
  EXPECT_EQ(Extract(BROWSER_FIREFOX, EXTRACT_HISTORY).size(), committed + 2);
}

}  // namespace
}  // namespace corvane::testing
