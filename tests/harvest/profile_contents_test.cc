// Fixture profiles of both families read back through the library's
// exports: counts, local times across both daylight-saving changes, bookmark
// paths, the installed browser, appended days, and the habits the fixture
// claims to have.
//
// Which visits the library keeps, on hand-made browser files whose every
// row is a case, and their local times where a zone repeats an hour.

#include <algorithm>
#include <fstream>
#include <set>

#include "harvest/harvest_host.h"

namespace corvane::testing {
namespace {

using fixture::Family;
using fixture::ProfileSpec;

// Every day starts with the habit sites at 07:30 to 07:40 local time: a
// conversion with the wrong offset on either side of a change would move
// them an hour. The newest day ends at 21:00, the default end.
void ExpectMorningsAndEveningAtLocalTime(const std::vector<Delivered>& visits, const std::set<int>& expectedDays,
                                         int lastDay) {
  std::set<int> days;
  for (const Delivered& visit : visits) {
    const SYSTEMTIME& t = visit.time;
    EXPECT_GE(t.wHour, 7) << visit.url;
    EXPECT_TRUE(!days.insert(t.wDay).second || (t.wHour == 7 && t.wMinute >= 30 && t.wMinute < 41)) << visit.url;
    EXPECT_TRUE(t.wDay != lastDay || t.wHour * 3600 + t.wMinute * 60 + t.wSecond <= 21 * 3600) << visit.url;
  }
  EXPECT_EQ(days, expectedDays);
}

// Spring forward in Berlin: 2024-03-31 02:00 CET becomes 03:00 CEST; fall
// back: 2024-10-27 03:00 CEST becomes 02:00 CET, a day of 25 hours.
TEST_F(HarvestTest, FixtureProfilesOfBothFamiliesAcrossBothDaylightSavingChanges) {
  SetEnv("TZ", "Europe/Berlin");
  const std::set<std::string> kPaths[] = {
      {"Bookmarks bar", "Bookmarks bar/Work", "Other bookmarks", "Other bookmarks/Reading"},
      {"Bookmarks Toolbar", "Bookmarks Toolbar/Work", "Bookmarks Menu/Reading", "Other Bookmarks"}};
  for (Family family : {Family::kChromium, Family::kFirefox}) {
    SCOPED_TRACE(family == Family::kChromium ? "Chromium" : "Firefox");
    uint32_t browser = BrowserOf(family), other = family == Family::kChromium ? BROWSER_FIREFOX : BROWSER_CHROME;
    ProfileSpec spec{.seed = 5, .days = 3, .visitsPerDay = 60, .distinctUrls = 400, .hosts = 80, .bookmarks = 100,
                     .lastDay = "", .endTime = ""};
    for (const char* lastDay : {"2024-10-28", "2024-04-01"}) {
      spec.lastDay = lastDay;
      test::TempDir home;
      ASSERT_TRUE(WriteFixture(family, home.Path(), spec));
      SetEnv("HOME", home.Path().c_str());
      std::vector<Delivered> visits = Extract(browser, EXTRACT_HISTORY);
      EXPECT_EQ(visits.size(), ChosenByModel(spec).chosen);
      if (spec.lastDay == "2024-10-28") {
        ExpectMorningsAndEveningAtLocalTime(visits, {26, 27, 28}, 28);
        continue;
      }
      ExpectMorningsAndEveningAtLocalTime(visits, {30, 31, 1}, 1);
      EXPECT_TRUE(IsBrowserInstalled(browser));
      EXPECT_FALSE(IsBrowserInstalled(other) || IsBrowserInstalled(BROWSER_IE));
      for (const Delivered& visit : visits) {
        EXPECT_TRUE(visit.browser == browser && visit.count >= 1) << visit.url;
        EXPECT_EQ(visit.url.find("tracker-net"), std::string::npos) << "a subframe load was delivered";
        EXPECT_NE(visit.url.rfind("http://", 0), 0u) << "a redirect step was delivered";
      }
      // Tags and saved searches are no bookmarks.
      std::vector<Delivered> bookmarks = Extract(browser, EXTRACT_FAVORITES);
      EXPECT_EQ(bookmarks.size(), 100u);
      std::set<std::string> paths;
      for (const Delivered& bookmark : bookmarks) paths.insert(bookmark.path);
      EXPECT_EQ(paths, kPaths[family == Family::kChromium ? 0 : 1]);
      // One more day delivers exactly its chosen visits, on that day.
      ASSERT_TRUE(WriteFixture(family, home.Path(), spec, "2024-04-02"));
      std::vector<Delivered> after = Extract(browser, EXTRACT_HISTORY);
      size_t newDay = 0;
      for (const Delivered& visit : after) newDay += Clock(visit.time).rfind("2024-04-02", 0) == 0 ? 1 : 0;
      EXPECT_GT(newDay, 30u);
      EXPECT_EQ(newDay, ChosenOnAppendedDay(spec, "2024-04-02"));
      EXPECT_EQ(after.size(), visits.size() + newDay);
    }
  }
}

// The popular site a host belongs to; the host itself for a tail host.
std::string SiteOf(const std::string& host) {
  for (const fixture::PopularSite& site : fixture::PopularSites()) {
    if (std::count(site.hosts.begin(), site.hosts.end(), host) > 0) return site.mainDomain;
  }
  return host;
}

// The habits the fixture claims: the first four visits of each day go to
// the same habit sites, of four makers; the six most visited hosts belong
// to at least four sites, and the long tail is there. Every kind of visit
// the model makes is in the file. The newest day ends at its end time, and
// the rest stays the same; the same seed writes the same files.
TEST_F(HarvestTest, FixtureChromiumProfileHasTheHabitsItClaims) {
  ProfileSpec spec{.seed = 11, .days = 10, .visitsPerDay = 400, .distinctUrls = 3000, .hosts = 300, .bookmarks = 10,
                   .lastDay = "2024-05-20", .endTime = ""};
  ASSERT_TRUE(WriteFixture(Family::kChromium, Home(), spec));
  std::vector<Delivered> visits = Extract(BROWSER_CHROME, EXTRACT_HISTORY);
  std::map<int, std::vector<std::string>> mornings;
  std::map<std::string, int> perHost;
  for (const Delivered& visit : visits) {
    std::vector<std::string>& first = mornings[visit.time.wDay];
    if (first.size() < 4) first.push_back(HostOf(visit.url));
    ++perHost[HostOf(visit.url)];
  }
  ASSERT_EQ(mornings.size(), 10u);
  std::set<std::string> sites;
  for (const std::string& host : mornings.begin()->second) sites.insert(SiteOf(host));
  EXPECT_EQ(sites.size(), 4u);
  for (const auto& [day, hosts] : mornings) EXPECT_EQ(hosts, mornings.begin()->second) << "day " << day;
  std::vector<std::pair<int, std::string>> ranked;
  for (const auto& [host, count] : perHost) ranked.emplace_back(-count, host);
  std::sort(ranked.begin(), ranked.end());
  std::set<std::string> topSites;
  for (size_t i = 0; i < 6 && i < ranked.size(); ++i) topSites.insert(SiteOf(ranked[i].second));
  EXPECT_GE(topSites.size(), 4u);
  EXPECT_GT(perHost.size(), 150u);

  sqlite3* db = nullptr;
  ASSERT_EQ(sqlite3_open_v2(fixture::ChromiumHistoryPath(Home()).c_str(), &db, SQLITE_OPEN_READONLY, nullptr), 0);
  auto number = [db](const std::string& sql) {
    sqlite3_stmt* stmt = nullptr;
    int64_t value = -1;
    if (sqlite3_prepare_v2(db, sql.c_str(), -1, &stmt, nullptr) == 0 && sqlite3_step(stmt) == SQLITE_ROW) {
      value = sqlite3_column_int64(stmt, 0);
    }
    sqlite3_finalize(stmt);
    EXPECT_GE(value, 0) << sql;
    return value;
  };
  // Reloads, form submissions, steps back, subframes, server redirects'
  // landing pages (the top bit: stored signed 32-bit, negative) are all in
  // the file; reloads are in the file but not in a URL's count.
  const std::string kVisits = "select count(*) from visits where ";
  for (const char* kind : {"(transition & 255) = 8", "(transition & 255) = 7", "(transition & 16777216) != 0",
                           "(transition & 255) = 3", "transition < 0"}) {
    EXPECT_GT(number(kVisits + kind), 0) << kind;
  }
  EXPECT_EQ(number("select sum(visit_count) from urls"), number(kVisits + "(transition & 255) != 8"));
  sqlite3_close(db);

  std::string other = m_scratch.File("other");
  ASSERT_TRUE(WriteFixture(Family::kChromium, other, spec) && WriteFixture(Family::kFirefox, other, spec) &&
              WriteFixture(Family::kFirefox, Home(), spec));
  EXPECT_EQ(ReadAll(fixture::ChromiumHistoryPath(Home())), ReadAll(fixture::ChromiumHistoryPath(other)));
  EXPECT_EQ(ReadAll(fixture::FirefoxPlacesPath(Home())), ReadAll(fixture::FirefoxPlacesPath(other)));
  ProfileSpec noon = spec;
  noon.endTime = "12:00";
  ASSERT_TRUE(WriteFixture(Family::kChromium, other, noon));
  SetEnv("HOME", other.c_str());
  std::vector<Delivered> cut = Extract(BROWSER_CHROME, EXTRACT_HISTORY);
  ASSERT_FALSE(cut.empty());
  ASSERT_LT(cut.size(), visits.size());
  std::vector<std::string> fullURLs = URLs(visits);
  fullURLs.resize(cut.size());
  EXPECT_EQ(URLs(cut), fullURLs);
  EXPECT_TRUE(cut.back().time.wDay == 20 && cut.back().time.wHour < 12) << Clock(cut.back().time);
  EXPECT_TRUE(visits[cut.size()].time.wDay == 20 && visits[cut.size()].time.wHour >= 12);
}

TEST_F(HarvestTest, ChromiumKeepsChainEndsThatArePagesThePersonChose) {
  const struct {
    int hidden;
    int64_t transition;  // as stored, signed
    int source;          // visit_source; -1: none
  } kRows[] = {
      {0, 0x30000000, -1},                         // 1 link, whole chain: kept
      {0, 0x10000000, -1},                         // 2 a redirect step: left out
      {0, static_cast<int32_t>(0xA0000000u), -1},  // 3 landing page of a server redirect: kept
      {0, 0x30000003, -1},                         // 4 automatic subframe
      {0, 0x30000004, -1},                         // 5 manual subframe
      {0, 0x3000000A, -1},                         // 6 generated keyword visit
      {1, 0x30000001, -1},                         // 7 typed, but the URL is hidden
      {0, 0x30000001, 0},                          // 8 typed on another device, synced
      {0, 0x30000008, 1},                          // 9 reload, browsed here: left out
      {0, 0x30000007, -1},                         // 10 form submission: kept
      {0, 0x31000000, -1},                         // 11 a step back to a link's page: kept
      {0, 0x33000001, -1},                         // 12 a step forward to a typed page: kept
  };
  std::string rows;
  for (size_t i = 0; i < std::size(kRows); ++i) {
    std::string id = std::to_string(i + 1);
    // 2024-03-05 09:07:03.041 UTC in microseconds since 1601.
    rows += "insert into urls values(" + id + ", 'https://u" + id + ".com/', 'T" + id + "', 3, 0, 0, " +
            std::to_string(kRows[i].hidden) + "); insert into visits values(" + id + ", " + id +
            ", 13354103223041000, 0, " + std::to_string(kRows[i].transition) + ", 0, 0, '');";
    if (kRows[i].source >= 0) rows += "insert into visit_source values(" + id + ", " + std::to_string(kRows[i].source) + ");";
  }
  HandChromiumHistory(Home(), rows);
  std::vector<Delivered> visits = Extract(BROWSER_CHROME, EXTRACT_HISTORY);
  ASSERT_EQ(URLs(visits), (std::vector<std::string>{"https://u1.com/", "https://u3.com/", "https://u10.com/",
                                                    "https://u11.com/", "https://u12.com/"}));
  // A visit is one visit, whatever the page's visit_count (3).
  EXPECT_EQ(Clock(visits[0].time) + " " + visits[0].name + " " + std::to_string(visits[0].count),
            "2024-03-05 2 09:07:03.041 T1 1");
}

// Firefox's visit types: 1 link, 2 typed, 3 bookmark, 4 embed, 5 and 6 the
// page a redirect landed on, 7 download, 8 framed link, 9 reload. The page
// that redirected is left out, hidden or not; the same address visited on
// its own is still a visit.
TEST_F(HarvestTest, FirefoxLeavesOutEmbedsDownloadsFramesReloadsAndRedirectingPages) {
  std::string rows =
      "insert into moz_places(id, url, title, visit_count, hidden) values (1, 'http://a.org/', '', 1, 1),"
      "(2, 'https://a.org/', 'A', 1, 0), (3, 'https://b.org/go', 'Go', 2, 0), (4, 'https://b.org/home', 'Home', 1, 0),"
      "(5, 'https://hidden.org/', 'H', 1, 1), (6, 'http://r.org/', 'R', 1, 0), (7, 'https://r.org/home', 'Home', 1, 0);"
      "insert into moz_historyvisits(id, from_visit, place_id, visit_date, visit_type) values"
      "(10, 0, 1, 1709629620000000, 2), (11, 10, 2, 1709629620100000, 5), (12, 0, 3, 1709629621000000, 1),"
      "(13, 0, 3, 1709629622000000, 2), (14, 13, 4, 1709629622100000, 6), (500, 0, 6, 1709629624000000, 2),"
      "(501, 500, 7, 1709629624100000, 6), (502, null, 5, 1709629625000000, 1);";
  for (int type = 1; type <= 9; ++type) {
    std::string id = std::to_string(type);
    rows += "insert into moz_places(id, url, title, visit_count) values(100" + id + ", 'https://t" + id +
            ".org/', 'T', 1); insert into moz_historyvisits(id, place_id, visit_date, visit_type) values(" + id +
            ", 100" + id + ", 1709629623041000, " + id + ");";
  }
  HandFirefoxPlaces(Home(), rows);
  std::vector<Delivered> visits = Extract(BROWSER_FIREFOX, EXTRACT_HISTORY);
  ASSERT_EQ(URLs(visits), (std::vector<std::string>{"https://a.org/", "https://b.org/go", "https://b.org/home",
                                                    "https://t1.org/", "https://t2.org/", "https://t3.org/",
                                                    "https://t5.org/", "https://t6.org/", "https://r.org/home"}));
  // The kept visit of b.org/go is the one at 09:07:01, not the redirect.
  EXPECT_EQ(Clock(visits[1].time) + " " + std::to_string(visits[1].count), "2024-03-05 2 09:07:01.000 1");
}

// Berlin leaves summer time on 2024-10-27 at 03:00, back to 02:00: the hour
// from 02:00 comes twice, and the visits keep the order of their instants.
// 00:30, 00:59 and 01:30 UTC: 02:30 summer time, 02:59 summer time, 02:30
// winter time, stored out of order.
TEST_F(HarvestTest, RepeatedLocalHourKeepsTheOrderOfTheInstants) {
  SetEnv("TZ", "Europe/Berlin");
  HandChromiumHistory(Home(),
                      "insert into urls values(1, 'https://first.com/', 'F', 1, 0, 0, 0), (2, 'https://second.com/', "
                      "'S', 1, 0, 0, 0), (3, 'https://third.com/', 'T', 1, 0, 0, 0); insert into visits values"
                      "(1, 3, 13374466200000000, 0, 805306368, 0, 0, ''), (2, 1, 13374462600000000, 0, 805306368, 0, "
                      "0, ''), (3, 2, 13374464340000000, 0, 805306368, 0, 0, '');");
  HandFirefoxPlaces(Home(),
                    "insert into moz_places(id, url, title, visit_count) values(1, 'https://first.com/', 'F', 1),"
                    "(2, 'https://second.com/', 'S', 1), (3, 'https://third.com/', 'T', 1);"
                    "insert into moz_historyvisits(id, from_visit, place_id, visit_date, visit_type) values"
                    "(1, 0, 3, 1729992600000000, 1), (2, 0, 1, 1729989000000000, 1), (3, 0, 2, 1729990740000000, 1);");
  for (uint32_t browser : {BROWSER_CHROME, BROWSER_FIREFOX}) {
    std::vector<Delivered> visits = Extract(browser, EXTRACT_HISTORY);
    EXPECT_EQ(URLs(visits), (std::vector<std::string>{"https://first.com/", "https://second.com/", "https://third.com/"}));
    std::vector<std::string> clock;
    for (const Delivered& visit : visits) clock.push_back(Clock(visit.time));
    EXPECT_EQ(clock, (std::vector<std::string>{"2024-10-27 0 02:30:00.000", "2024-10-27 0 02:59:00.000",
                                               "2024-10-27 0 02:30:00.000"})) << browser;
  }
}

TEST_F(HarvestTest, ChromiumAccountBookmarksJoinTheProfilesOwn) {
  HandChromiumHistory(Home(), "");
  std::string folder = Home() + "/.config/chromium/Default";
  std::ofstream(folder + "/Bookmarks") << R"({"version": 1, "roots": {"bookmark_bar": {"type": "folder", "name": "x",
      "children": [{"type": "url", "name": "Local", "url": "https://local.com/"},
                   {"type": "separator"}, {"type": "url", "name": "No URL"}]}}})";
  std::ofstream(folder + "/AccountBookmarks") << R"({"version": 1, "roots": {"other": {"type": "folder", "name": "y",
      "children": [{"type": "folder", "name": "Trips", "children": [
                   {"type": "url", "name": "Account", "url": "https://account.com/"}]}]}}})";
  std::vector<std::string> bookmarks;
  for (const Delivered& item : Extract(BROWSER_CHROME, EXTRACT_FAVORITES)) {
    bookmarks.push_back(item.path + " | " + item.name + " | " + item.url);
  }
  EXPECT_EQ(bookmarks, (std::vector<std::string>{"Bookmarks bar | Local | https://local.com/",
                                                 "Other bookmarks/Trips | Account | https://account.com/"}));
  // A damaged account file leaves the profile's own bookmarks.
  std::ofstream(folder + "/AccountBookmarks", std::ios::trunc) << "[[[[";
  EXPECT_EQ(URLs(Extract(BROWSER_CHROME, EXTRACT_FAVORITES)), (std::vector<std::string>{"https://local.com/"}));
}

TEST_F(HarvestTest, FirefoxBookmarkPathNamesEveryFolderFromItsRoot) {
  HandFirefoxPlaces(Home(),
                    "insert into moz_places(id, url, title) values(1, 'https://deep.org/', 'D'), "
                    "(2, 'https://top.org/', 'T');"
                    "insert into moz_bookmarks(id, type, fk, parent, position, title, guid) values "
                    "(4, 2, null, 3, 0, 'Work', 'work________'), (5, 2, null, 4, 0, 'Deep', 'deep________'), "
                    "(6, 1, 1, 5, 0, 'Deep one', 'bookmark1___'), (7, 1, 2, 2, 0, 'Top one', 'bookmark2___');");
  std::vector<std::string> bookmarks;
  for (const Delivered& item : Extract(BROWSER_FIREFOX, EXTRACT_FAVORITES)) bookmarks.push_back(item.path + " | " + item.url);
  std::sort(bookmarks.begin(), bookmarks.end());
  EXPECT_EQ(bookmarks, (std::vector<std::string>{"Bookmarks Menu | https://top.org/",
                                                 "Bookmarks Toolbar/Work/Deep | https://deep.org/"}));
}

}  // namespace
}  // namespace corvane::testing
