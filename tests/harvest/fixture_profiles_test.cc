// Fixture profiles of both families read back through the library's
// exports: counts, local times across a daylight-saving change, bookmark
// paths, and the installed and default browser.

#include <set>

#include "harvest/fixture/browsing_model.h"
#include "harvest/fixture/profile_fixture.h"
#include "harvest/harvest_host.h"

namespace corvane::testing {
namespace {

using fixture::ProfileSpec;

// Spring forward in Berlin: 2024-03-31 02:00 CET becomes 03:00 CEST.
ProfileSpec DaylightSavingSpec() {
  ProfileSpec spec;
  spec.days = 3;
  spec.visitsPerDay = 60;
  spec.distinctUrls = 400;
  spec.hosts = 80;
  spec.bookmarks = 100;
  spec.lastDay = "2024-04-01";
  spec.seed = 5;
  return spec;
}

// Visits the person chose, counted from the model itself: redirect steps
// and subframe loads are no such visits.
size_t ChosenVisits(const ProfileSpec& spec) {
  fixture::BrowsingModel model(spec);
  size_t chosen = 0;
  const char* kDays[] = {"2024-03-30", "2024-03-31", "2024-04-01"};
  for (const char* day : kDays) {
    int y = 0, m = 0, d = 0;
    fixture::ParseDay(day, &y, &m, &d);
    for (const fixture::VisitEvent& visit : model.Day(y, m, d)) {
      if (visit.kind != fixture::VisitKind::kRedirectSource && visit.kind != fixture::VisitKind::kSubframe) ++chosen;
    }
  }
  return chosen;
}

class FixtureProfilesTest : public HarvestTest {
 protected:
  FixtureProfilesTest() : m_tz("TZ", "Europe/Berlin") {}
  test::ScopedEnv m_tz;
};

// Every day starts with the habit sites at 07:30 to 07:40 local time: a
// conversion with the wrong offset on either side of the change would move
// them an hour.
void ExpectMorningsAtLocalTime(const std::vector<Delivered>& visits) {
  std::set<int> days;
  for (const Delivered& visit : visits) {
    EXPECT_GE(visit.time.wHour, 7) << visit.url;
    if (days.insert(visit.time.wDay).second) {
      EXPECT_EQ(visit.time.wHour, 7) << "first visit of day " << visit.time.wDay;
      EXPECT_GE(visit.time.wMinute, 30);
      EXPECT_LT(visit.time.wMinute, 41);
    }
  }
  EXPECT_EQ(days, (std::set<int>{30, 31, 1}));
}

TEST_F(FixtureProfilesTest, ChromiumHistoryAndBookmarks) {
  ProfileSpec spec = DaylightSavingSpec();
  std::string error;
  ASSERT_TRUE(fixture::WriteChromiumProfile(Home(), spec, &error)) << error;
  EXPECT_TRUE(LoadHarvest().IsBrowserInstalled(BROWSER_CHROME));
  EXPECT_FALSE(LoadHarvest().IsBrowserInstalled(BROWSER_FIREFOX));
  EXPECT_FALSE(LoadHarvest().IsBrowserInstalled(BROWSER_IE));
  std::vector<Delivered> visits = Extract(BROWSER_CHROME, EXTRACT_HISTORY);
  EXPECT_EQ(visits.size(), ChosenVisits(spec));
  ExpectMorningsAtLocalTime(visits);
  for (const Delivered& visit : visits) {
    EXPECT_EQ(visit.browser, BROWSER_CHROME);
    EXPECT_GE(visit.count, 1);
    EXPECT_EQ(visit.url.find("tracker-net"), std::string::npos) << "a subframe load was delivered";
    EXPECT_NE(visit.url.rfind("http://", 0), 0u) << "a redirect step was delivered";
  }
  std::vector<Delivered> bookmarks = Extract(BROWSER_CHROME, EXTRACT_FAVORITES);
  ASSERT_EQ(bookmarks.size(), 100u);
  std::set<std::string> paths;
  for (const Delivered& bookmark : bookmarks) paths.insert(bookmark.path);
  EXPECT_EQ(paths, (std::set<std::string>{"Bookmarks bar", "Bookmarks bar/Work", "Other bookmarks",
                                          "Other bookmarks/Reading"}));
}

TEST_F(FixtureProfilesTest, FirefoxHistoryAndBookmarks) {
  ProfileSpec spec = DaylightSavingSpec();
  std::string error;
  ASSERT_TRUE(fixture::WriteFirefoxProfile(Home(), spec, &error)) << error;
  EXPECT_TRUE(LoadHarvest().IsBrowserInstalled(BROWSER_FIREFOX));
  EXPECT_FALSE(LoadHarvest().IsBrowserInstalled(BROWSER_CHROME));
  std::vector<Delivered> visits = Extract(BROWSER_FIREFOX, EXTRACT_HISTORY);
  EXPECT_EQ(visits.size(), ChosenVisits(spec));
  ExpectMorningsAtLocalTime(visits);
  std::vector<Delivered> bookmarks = Extract(BROWSER_FIREFOX, EXTRACT_FAVORITES);
  // Tags and saved searches are no bookmarks.
  ASSERT_EQ(bookmarks.size(), 100u);
  std::set<std::string> paths;
  for (const Delivered& bookmark : bookmarks) paths.insert(bookmark.path);
  EXPECT_EQ(paths, (std::set<std::string>{"Bookmarks Toolbar", "Bookmarks Toolbar/Work", "Bookmarks Menu/Reading",
                                          "Other Bookmarks"}));
}

TEST_F(FixtureProfilesTest, DefaultBrowserFollowsMimeApps) {
  std::string error;
  ASSERT_TRUE(fixture::WriteChromiumProfile(Home(), DaylightSavingSpec(), &error)) << error;
  EXPECT_EQ(LoadHarvest().GetDefautBrowser(), BROWSER_NONE);
  ASSERT_TRUE(fixture::WriteDefaultBrowser(Home(), fixture::Family::kFirefox, &error));
  EXPECT_EQ(LoadHarvest().GetDefautBrowser(), BROWSER_FIREFOX);
  ASSERT_TRUE(fixture::WriteDefaultBrowser(Home(), fixture::Family::kChromium, &error));
  EXPECT_EQ(LoadHarvest().GetDefautBrowser(), BROWSER_CHROME);
}

TEST_F(FixtureProfilesTest, AppendedDayIsDelivered) {
  ProfileSpec spec = DaylightSavingSpec();
  std::string error;
  ASSERT_TRUE(fixture::WriteChromiumProfile(Home(), spec, &error)) << error;
  size_t before = Extract(BROWSER_CHROME, EXTRACT_HISTORY).size();
  ASSERT_TRUE(fixture::AppendChromiumDay(Home(), spec, "2024-04-02", &error)) << error;
  std::vector<Delivered> after = Extract(BROWSER_CHROME, EXTRACT_HISTORY);
  size_t newDay = 0;
  for (const Delivered& visit : after) newDay += visit.time.wMonth == 4 && visit.time.wDay == 2 ? 1 : 0;
  EXPECT_GT(newDay, 40u);
  EXPECT_EQ(after.size(), before + newDay);
}

}  // namespace
}  // namespace corvane::testing
