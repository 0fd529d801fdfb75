// Which visits the library keeps, on hand-made browser files whose every
// row is a case, and their local times where a zone repeats an hour.

#include <sqlite3.h>

#include <filesystem>
#include <fstream>

#include "harvest/fixture/profile_fixture.h"
#include "harvest/hand_profiles.h"
#include "harvest/harvest_host.h"

namespace corvane::testing {
namespace {

namespace fs = std::filesystem;

class VisitKindsTest : public HarvestTest {
 protected:
  VisitKindsTest() : m_tz("TZ", "UTC") {}

  // A Chromium profile whose History holds exactly the given SQL.
  std::string ChromiumHistory(const std::string& rows) { return HandChromiumHistory(Home(), rows); }

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
      {9, 0, 0x30000008, 1},                               // reload, browsed here: left out
      {10, 0, 0x30000007, -1},                             // form submission: kept
      {11, 0, 0x31000000, -1},                             // a step back to a link's page: kept
      {12, 0, 0x33000001, -1},                             // a step forward to a typed page: kept
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
  EXPECT_EQ(URLs(visits), (std::vector<std::string>{"https://u1.com/", "https://u3.com/", "https://u10.com/",
                                                    "https://u11.com/", "https://u12.com/"}));
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

TEST_F(VisitKindsTest, FirefoxLeavesOutEmbedsDownloadsFramesReloadsAndRedirectingPages) {
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
  ExecSql(db, "delete from moz_historyvisits;");
  for (int type = 1; type <= 9; ++type) {
    std::string id = std::to_string(type);
    ExecSql(db, "insert into moz_places(id, url, title, hidden, visit_count) values(" + std::to_string(1000 + type) +
                 ", 'https://t" + id + ".org/', 'T', 0, 1);"
                 "insert into moz_historyvisits(place_id, visit_date, visit_type) values(" +
                 std::to_string(1000 + type) + ", 1709629623041000, " + id + ");");
  }
  // A redirect: the typed address redirected (its place not hidden, as it
  // was also visited on its own before) and landed on a page whose visit
  // carries the temporary redirect's type. And a hidden place's link visit.
  ExecSql(db, "insert into moz_places(id, url, title, hidden, visit_count) values(2001, 'http://r.org/', 'R', 0, 1), "
           "(2002, 'https://r.org/home', 'Home', 0, 1), (2003, 'https://hidden.org/', 'H', 1, 1);"
           "insert into moz_historyvisits(id, from_visit, place_id, visit_date, visit_type) values"
           "(500, 0, 2001, 1709629624000000, 2), (501, 500, 2002, 1709629624100000, 6),"
           "(502, null, 2003, 1709629625000000, 1);");
  sqlite3_close(db);
  EXPECT_EQ(URLs(Extract(BROWSER_FIREFOX, EXTRACT_HISTORY)),
            (std::vector<std::string>{"https://t1.org/", "https://t2.org/", "https://t3.org/", "https://t5.org/",
                                      "https://t6.org/", "https://r.org/home"}));
}

// Types 5 and 6 mark the page a redirect landed on: that page is kept.
// The page that redirected is the one left out, whether its place is
// hidden or not; the same address visited on its own is still a visit.
TEST_F(VisitKindsTest, FirefoxKeepsRedirectLandingPagesAndLeavesOutTheRedirectingVisit) {
  HandFirefoxPlaces(Home(),
                    "insert into moz_places(id, url, title, visit_count, hidden) values"
                    "(1, 'http://a.org/', '', 1, 1), (2, 'https://a.org/', 'A', 1, 0),"
                    "(3, 'https://b.org/go', 'Go', 2, 0), (4, 'https://b.org/home', 'Home', 1, 0);"
                    "insert into moz_historyvisits(id, from_visit, place_id, visit_date, visit_type) values"
                    "(10, 0, 1, 1709629620000000, 2), (11, 10, 2, 1709629620100000, 5),"
                    "(12, 0, 3, 1709629621000000, 1),"
                    "(13, 0, 3, 1709629622000000, 2), (14, 13, 4, 1709629622100000, 6);");
  std::vector<Delivered> visits = Extract(BROWSER_FIREFOX, EXTRACT_HISTORY);
  EXPECT_EQ(URLs(visits), (std::vector<std::string>{"https://a.org/", "https://b.org/go", "https://b.org/home"}));
  ASSERT_EQ(visits.size(), 3u);
  // The kept visit of b.org/go is the one at 09:07:01, not the redirect.
  EXPECT_EQ(visits[1].time.wSecond, 1);
  EXPECT_EQ(visits[1].count, 2);
}

// The same hour in Firefox, whose times count from 1970.
TEST_F(VisitKindsTest, FirefoxRepeatedLocalHourKeepsTheOrderOfTheInstants) {
  test::ScopedEnv berlin("TZ", "Europe/Berlin");
  HandFirefoxPlaces(Home(),
                    "insert into moz_places(id, url, title, visit_count) values(1, 'https://first.com/', 'F', 1),"
                    "(2, 'https://second.com/', 'S', 1), (3, 'https://third.com/', 'T', 1);"
                    "insert into moz_historyvisits(id, from_visit, place_id, visit_date, visit_type) values"
                    "(1, 0, 3, 1729992600000000, 1), (2, 0, 1, 1729989000000000, 1), (3, 0, 2, 1729990740000000, 1);");
  std::vector<Delivered> visits = Extract(BROWSER_FIREFOX, EXTRACT_HISTORY);
  ASSERT_EQ(URLs(visits), (std::vector<std::string>{"https://first.com/", "https://second.com/", "https://third.com/"}));
  std::vector<std::vector<int>> clock;
  for (const Delivered& visit : visits) {
    clock.push_back({visit.time.wDay, visit.time.wDayOfWeek, visit.time.wHour, visit.time.wMinute});
  }
  EXPECT_EQ(clock, (std::vector<std::vector<int>>{{27, 0, 2, 30}, {27, 0, 2, 59}, {27, 0, 2, 30}}));
}

}  // namespace
}  // namespace corvane::testing
