// Fixture profiles of both families read back through the library's
// exports: counts, local times across both daylight-saving changes, bookmark
// paths, the installed and default browser, appended days, and the habits
// the fixture claims to have.

#include <sqlite3.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <set>

#include "harvest/fixture/browsing_model.h"
#include "harvest/fixture/profile_fixture.h"
#include "harvest/harvest_host.h"

namespace corvane::testing {
namespace {

using fixture::Family;
using fixture::ProfileSpec;

ProfileSpec SmallSpec(const std::string& lastDay) {
  ProfileSpec spec;
  spec.days = 3;
  spec.visitsPerDay = 60;
  spec.distinctUrls = 400;
  spec.hosts = 80;
  spec.bookmarks = 100;
  spec.lastDay = lastDay;
  spec.seed = 5;
  return spec;
}

// Spring forward in Berlin: 2024-03-31 02:00 CET becomes 03:00 CEST.
ProfileSpec SpringSpec() { return SmallSpec("2024-04-01"); }
// Fall back in Berlin: 2024-10-27 03:00 CEST becomes 02:00 CET.
ProfileSpec AutumnSpec() { return SmallSpec("2024-10-28"); }

// Visits the person chose, counted from the model itself, day by day as
// the writers write them.
size_t ChosenVisits(const ProfileSpec& spec) {
  fixture::BrowsingModel model(spec);
  size_t chosen = 0;
  std::string error;
  bool made = fixture::ForEachDay(
      spec, &model,
      [&](const std::vector<fixture::VisitEvent>& visits) {
        for (const fixture::VisitEvent& visit : visits) chosen += fixture::IsChosen(visit.kind) ? 1 : 0;
        return true;
      },
      &error);
  EXPECT_TRUE(made) << error;
  return chosen;
}

bool Write(Family family, const std::string& home, const ProfileSpec& spec, std::string* error) {
  return family == Family::kChromium ? fixture::WriteChromiumProfile(home, spec, error)
                                     : fixture::WriteFirefoxProfile(home, spec, error);
}

uint32_t BrowserOf(Family family) { return family == Family::kChromium ? BROWSER_CHROME : BROWSER_FIREFOX; }

class FixtureProfilesTest : public HarvestTest {
 protected:
  FixtureProfilesTest() : m_tz("TZ", "Europe/Berlin") {}
  test::ScopedEnv m_tz;
};

// Every day starts with the habit sites at 07:30 to 07:40 local time: a
// conversion with the wrong offset on either side of a change would move
// them an hour. The newest day ends at 21:00, the default end.
void ExpectMorningsAndEveningAtLocalTime(const std::vector<Delivered>& visits, const std::set<int>& expectedDays,
                                         int lastDay) {
  std::set<int> days;
  for (const Delivered& visit : visits) {
    EXPECT_GE(visit.time.wHour, 7) << visit.url;
    if (days.insert(visit.time.wDay).second) {
      EXPECT_EQ(visit.time.wHour, 7) << "first visit of day " << visit.time.wDay;
      EXPECT_GE(visit.time.wMinute, 30);
      EXPECT_LT(visit.time.wMinute, 41);
    }
    if (visit.time.wDay == lastDay) {
      EXPECT_LE(visit.time.wHour * 3600 + visit.time.wMinute * 60 + visit.time.wSecond, 21 * 3600) << visit.url;
    }
  }
  EXPECT_EQ(days, expectedDays);
}

TEST_F(FixtureProfilesTest, ChromiumHistoryAndBookmarks) {
  ProfileSpec spec = SpringSpec();
  std::string error;
  ASSERT_TRUE(fixture::WriteChromiumProfile(Home(), spec, &error)) << error;
  EXPECT_TRUE(LoadHarvest().IsBrowserInstalled(BROWSER_CHROME));
  EXPECT_FALSE(LoadHarvest().IsBrowserInstalled(BROWSER_FIREFOX));
  EXPECT_FALSE(LoadHarvest().IsBrowserInstalled(BROWSER_IE));
  std::vector<Delivered> visits = Extract(BROWSER_CHROME, EXTRACT_HISTORY);
  EXPECT_EQ(visits.size(), ChosenVisits(spec));
  ExpectMorningsAndEveningAtLocalTime(visits, {30, 31, 1}, 1);
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
  ProfileSpec spec = SpringSpec();
  std::string error;
  ASSERT_TRUE(fixture::WriteFirefoxProfile(Home(), spec, &error)) << error;
  EXPECT_TRUE(LoadHarvest().IsBrowserInstalled(BROWSER_FIREFOX));
  EXPECT_FALSE(LoadHarvest().IsBrowserInstalled(BROWSER_CHROME));
  std::vector<Delivered> visits = Extract(BROWSER_FIREFOX, EXTRACT_HISTORY);
  EXPECT_EQ(visits.size(), ChosenVisits(spec));
  ExpectMorningsAndEveningAtLocalTime(visits, {30, 31, 1}, 1);
  std::vector<Delivered> bookmarks = Extract(BROWSER_FIREFOX, EXTRACT_FAVORITES);
  // Tags and saved searches are no bookmarks.
  ASSERT_EQ(bookmarks.size(), 100u);
  std::set<std::string> paths;
  for (const Delivered& bookmark : bookmarks) paths.insert(bookmark.path);
  EXPECT_EQ(paths, (std::set<std::string>{"Bookmarks Toolbar", "Bookmarks Toolbar/Work", "Bookmarks Menu/Reading",
                                          "Other Bookmarks"}));
}

// The day the clocks go back has 25 hours; the mornings around it stay at
// 07:30 local time in both families.
TEST_F(FixtureProfilesTest, BothFamiliesAcrossTheAutumnChange) {
  ProfileSpec spec = AutumnSpec();
  for (Family family : {Family::kChromium, Family::kFirefox}) {
    std::string error;
    ASSERT_TRUE(Write(family, Home(), spec, &error)) << error;
    std::vector<Delivered> visits = Extract(BrowserOf(family), EXTRACT_HISTORY);
    EXPECT_EQ(visits.size(), ChosenVisits(spec));
    ExpectMorningsAndEveningAtLocalTime(visits, {26, 27, 28}, 28);
  }
}

TEST_F(FixtureProfilesTest, DefaultBrowserFollowsMimeApps) {
  std::string error;
  ASSERT_TRUE(fixture::WriteChromiumProfile(Home(), SpringSpec(), &error)) << error;
  EXPECT_EQ(LoadHarvest().GetDefautBrowser(), BROWSER_NONE);
  ASSERT_TRUE(fixture::WriteDefaultBrowser(Home(), Family::kFirefox, &error));
  EXPECT_EQ(LoadHarvest().GetDefautBrowser(), BROWSER_FIREFOX);
  ASSERT_TRUE(fixture::WriteDefaultBrowser(Home(), Family::kChromium, &error));
  EXPECT_EQ(LoadHarvest().GetDefautBrowser(), BROWSER_CHROME);
}

TEST_F(FixtureProfilesTest, AppendedDayDeliversExactlyItsChosenVisits) {
  ProfileSpec spec = SpringSpec();
  for (Family family : {Family::kChromium, Family::kFirefox}) {
    std::string error;
    ASSERT_TRUE(Write(family, Home(), spec, &error)) << error;
    size_t before = Extract(BrowserOf(family), EXTRACT_HISTORY).size();
    bool appended = family == Family::kChromium ? fixture::AppendChromiumDay(Home(), spec, "2024-04-02", &error)
                                                : fixture::AppendFirefoxDay(Home(), spec, "2024-04-02", &error);
    ASSERT_TRUE(appended) << error;
    std::unique_ptr<fixture::BrowsingModel> model;
    std::vector<fixture::VisitEvent> day;
    ASSERT_TRUE(fixture::AppendedDay(spec, "2024-04-02", &model, &day, &error)) << error;
    size_t chosen = 0;
    for (const fixture::VisitEvent& visit : day) chosen += fixture::IsChosen(visit.kind) ? 1 : 0;
    std::vector<Delivered> after = Extract(BrowserOf(family), EXTRACT_HISTORY);
    size_t newDay = 0;
    for (const Delivered& visit : after) newDay += visit.time.wMonth == 4 && visit.time.wDay == 2 ? 1 : 0;
    EXPECT_GT(chosen, 30u);
    EXPECT_EQ(newDay, chosen);
    EXPECT_EQ(after.size(), before + newDay);
  }
}

// ---- The habits the fixture claims ----

class FixtureHabitsTest : public HarvestTest {
 protected:
  FixtureHabitsTest() : m_tz("TZ", "UTC") {}

  static ProfileSpec BusySpec() {
    ProfileSpec spec;
    spec.days = 10;
    spec.visitsPerDay = 400;
    spec.distinctUrls = 3000;
    spec.hosts = 300;
    spec.bookmarks = 10;
    spec.lastDay = "2024-05-20";
    spec.seed = 11;
    return spec;
  }

  // One number from the History file the fixture wrote.
  int64_t HistoryCount(const std::string& sql) {
    sqlite3* db = nullptr;
    sqlite3_open_v2(fixture::ChromiumHistoryPath(Home()).c_str(), &db, SQLITE_OPEN_READONLY, nullptr);
    sqlite3_stmt* stmt = nullptr;
    int64_t value = -1;
    if (sqlite3_prepare_v2(db, sql.c_str(), -1, &stmt, nullptr) == SQLITE_OK && sqlite3_step(stmt) == SQLITE_ROW) {
      value = sqlite3_column_int64(stmt, 0);
    }
    EXPECT_EQ(value >= 0, true) << sqlite3_errmsg(db) << ": " << sql;
    sqlite3_finalize(stmt);
    sqlite3_close(db);
    return value;
  }

  test::ScopedEnv m_tz;
};

std::string HostOf(const std::string& url) {
  size_t start = url.find("://") + 3;
  return url.substr(start, url.find('/', start) - start);
}

// The popular site a host belongs to; the host itself for a tail host.
std::string SiteOf(const std::string& host) {
  for (const fixture::PopularSite& site : fixture::PopularSites()) {
    for (const std::string& known : site.hosts) {
      if (known == host) return site.mainDomain;
    }
  }
  return host;
}

TEST_F(FixtureHabitsTest, MorningsOpenSeveralSitesAndTheTopIsAMix) {
  std::string error;
  ASSERT_TRUE(fixture::WriteChromiumProfile(Home(), BusySpec(), &error)) << error;
  std::vector<Delivered> visits = Extract(BROWSER_CHROME, EXTRACT_HISTORY);
  ASSERT_FALSE(visits.empty());
  // The first four visits of each day: the same habit sites, of four makers.
  std::map<int, std::vector<std::string>> mornings;
  for (const Delivered& visit : visits) {
    std::vector<std::string>& first = mornings[visit.time.wDay];
    if (first.size() < 4) first.push_back(HostOf(visit.url));
  }
  ASSERT_EQ(mornings.size(), 10u);
  std::set<std::string> sites;
  for (const std::string& host : mornings.begin()->second) sites.insert(SiteOf(host));
  EXPECT_EQ(sites.size(), 4u);
  for (const auto& [day, hosts] : mornings) EXPECT_EQ(hosts, mornings.begin()->second) << "day " << day;
  // The six most visited hosts belong to at least four different sites.
  std::map<std::string, int> perHost;
  for (const Delivered& visit : visits) ++perHost[HostOf(visit.url)];
  std::vector<std::pair<int, std::string>> ranked;
  for (const auto& [host, count] : perHost) ranked.emplace_back(-count, host);
  std::sort(ranked.begin(), ranked.end());
  std::set<std::string> topSites;
  for (size_t i = 0; i < 6 && i < ranked.size(); ++i) topSites.insert(SiteOf(ranked[i].second));
  EXPECT_GE(topSites.size(), 4u);
  // And the head is more than one maker's hosts, yet the long tail is there.
  EXPECT_GT(perHost.size(), 150u);
}

// Every kind of visit the model makes is in the file, with the links the
// browser keeps between them, and the reader delivers exactly the kinds
// the header of profile_readers.h names.
TEST_F(FixtureHabitsTest, ChromiumFileHoldsEveryKindLinkedAsTheBrowserLinksThem) {
  ProfileSpec spec = BusySpec();
  std::string error;
  ASSERT_TRUE(fixture::WriteChromiumProfile(Home(), spec, &error)) << error;
  const std::string kCore = "(transition & 255)";
  EXPECT_GT(HistoryCount("select count(*) from visits where " + kCore + " = 8"), 0) << "no reload";
  EXPECT_GT(HistoryCount("select count(*) from visits where " + kCore + " = 7"), 0) << "no form submission";
  EXPECT_GT(HistoryCount("select count(*) from visits where (transition & 16777216) != 0"), 0) << "no step back";
  EXPECT_GT(HistoryCount("select count(*) from visits where " + kCore + " = 3"), 0) << "no subframe";
  // Walks: most links come from an earlier visit.
  EXPECT_GT(HistoryCount("select count(*) from visits v join visits f on f.id = v.from_visit where f.visit_time <= "
                         "v.visit_time and (v.transition & 255) = 0"),
            HistoryCount("select count(*) from visits") / 3);
  EXPECT_EQ(HistoryCount("select count(*) from visits v left join visits f on f.id = v.from_visit where "
                         "v.from_visit != 0 and (f.id is null or f.visit_time > v.visit_time)"),
            0);
  // Every redirect's landing page comes from the chain's start, which is no
  // chain end itself.
  // SERVER_REDIRECT is the top bit: stored as a signed 32-bit value, negative.
  int64_t landings = HistoryCount("select count(*) from visits where transition < 0");
  EXPECT_GT(landings, 0);
  EXPECT_EQ(HistoryCount("select count(*) from visits v join visits f on f.id = v.from_visit where v.transition < 0 "
                         "and (f.transition & 0x10000000) != 0 and (f.transition & 0x20000000) = 0"),
            landings);
  // Reloads are in the file but not in a URL's count, nor delivered.
  EXPECT_EQ(HistoryCount("select sum(visit_count) from urls"),
            HistoryCount("select count(*) from visits where " + kCore + " != 8"));
  size_t chosen = ChosenVisits(spec);
  EXPECT_EQ(Extract(BROWSER_CHROME, EXTRACT_HISTORY).size(), chosen);
  EXPECT_EQ(static_cast<int64_t>(chosen),
            HistoryCount("select count(*) from visits v join urls u on u.id = v.url where u.hidden = 0 and "
                         "(v.transition & 0x20000000) != 0 and (v.transition & 255) not in (3, 4, 8, 10)"));
}

TEST_F(FixtureHabitsTest, NewestDayEndsAtItsEndTimeAndTheRestStaysTheSame) {
  ProfileSpec evening = BusySpec();
  ProfileSpec noon = BusySpec();
  noon.endTime = "12:00";
  std::string error;
  ASSERT_TRUE(fixture::WriteChromiumProfile(Home(), evening, &error)) << error;
  std::vector<Delivered> full = Extract(BROWSER_CHROME, EXTRACT_HISTORY);
  ASSERT_TRUE(fixture::WriteChromiumProfile(Home(), noon, &error)) << error;
  std::vector<Delivered> cut = Extract(BROWSER_CHROME, EXTRACT_HISTORY);
  ASSERT_FALSE(cut.empty());
  ASSERT_LT(cut.size(), full.size());
  // The cut profile is the evening one up to noon of the newest day.
  std::vector<std::string> fullURLs = URLs(full);
  fullURLs.resize(cut.size());
  EXPECT_EQ(URLs(cut), fullURLs);
  const SYSTEMTIME& last = cut.back().time;
  EXPECT_EQ(last.wDay, 20);
  EXPECT_LT(last.wHour, 12);
  EXPECT_EQ(full[cut.size()].time.wDay, 20);
  EXPECT_GE(full[cut.size()].time.wHour, 12);
  // Earlier days run into the night.
  bool lateEarlier = std::any_of(full.begin(), full.end(), [](const Delivered& visit) {
    return visit.time.wDay == 19 && visit.time.wHour >= 22;
  });
  EXPECT_TRUE(lateEarlier);
  noon.endTime = "25:00";
  EXPECT_FALSE(fixture::WriteChromiumProfile(Home(), noon, &error));
  EXPECT_NE(error.find("end time"), std::string::npos) << error;
}

TEST_F(FixtureHabitsTest, SameSeedWritesTheSameFiles) {
  auto read = [](const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  };
  ProfileSpec spec = BusySpec();
  spec.days = 3;
  std::string error;
  std::string other = Scratch() + "/other-home";
  for (const std::string& home : {Home(), other}) {
    ASSERT_TRUE(fixture::WriteChromiumProfile(home, spec, &error)) << error;
    ASSERT_TRUE(fixture::WriteFirefoxProfile(home, spec, &error)) << error;
  }
  EXPECT_EQ(read(fixture::ChromiumHistoryPath(Home())), read(fixture::ChromiumHistoryPath(other)));
  EXPECT_EQ(read(fixture::FirefoxPlacesPath(Home())), read(fixture::FirefoxPlacesPath(other)));
  spec.seed += 1;
  ASSERT_TRUE(fixture::WriteChromiumProfile(other, spec, &error)) << error;
  EXPECT_NE(read(fixture::ChromiumHistoryPath(Home())), read(fixture::ChromiumHistoryPath(other)));
}

}  // namespace
}  // namespace corvane::testing
