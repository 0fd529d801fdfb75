// Fixture profiles of both families read back through the library's
// exports: counts, local times across both daylight-saving changes, bookmark
// paths, the installed browser and appended days.
//
// Which visits the library keeps, on hand-made browser files whose every
// row is a case.

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

}  // namespace
}  // namespace corvane::testing
