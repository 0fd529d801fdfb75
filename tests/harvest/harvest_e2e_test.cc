// The extraction library at its boundary: its three exports and no other
// symbol, so that nothing of its inside can clash with a host's or the
// component's; and the component driving it on a fixture home, through its
// exports as a host does: the first update stores every visit the
// fixture's person chose, the recommendations lead with the sites that
// person uses most, and the next day's update adds exactly that day's visits.

#include <algorithm>
#include <set>

#include "common/utf.h"
#include "platform/ini_file.h"

#include "harvest/harvest_host.h"

namespace corvane::testing {
namespace {

using fixture::Family;

TEST(HarvestLibraryBoundaryTest, TheLibraryShowsItsThreeExportsAndNothingElse) {
  EXPECT_EQ(test::DefinedDynamicSymbols(test::BuildLibDir() + "/libVisitHarvest.so"),
            (std::set<std::string>{"CreateVisitHarvestObj", "GetDefautBrowser", "IsBrowserInstalled"}));
}

class HarvestEndToEndTest : public HarvestTest, public ::testing::WithParamInterface<Family> {
 protected:
  HarvestEndToEndTest() { SetEnv("TZ", "Europe/Berlin"); }
};

TEST_P(HarvestEndToEndTest, UpdatesStoreTheChosenVisitsAndRecommendTheTopSites) {
  fixture::ProfileSpec spec{.seed = 3, .days = 30, .visitsPerDay = 300, .distinctUrls = 3000, .hosts = 300,
                            .bookmarks = 40, .lastDay = "2024-05-20", .endTime = "20:30"};
  std::string error;
  ASSERT_TRUE(WriteFixture(GetParam(), Home(), spec) && fixture::WriteDefaultBrowser(Home(), GetParam(), &error)) << error;
  ModelHistory model = ChosenByModel(spec);
  ASSERT_GT(model.chosen, 5000u);

  UpdateAt("2024-05-20 21:00:00");
  std::string browser = GetParam() == Family::kChromium ? "Chrome" : "FireFox";
  EXPECT_EQ(Config("DefBrowser"), browser);
  EXPECT_EQ(Config("ExtractBrowser"), browser);
  EXPECT_EQ(Config("HitoryExtractCount"), std::to_string(model.chosen));
  EXPECT_EQ(Config("AddHistoryCount"), std::to_string(model.chosen));
  EXPECT_EQ(Column("select count(*) from THistory"), std::vector<std::string>{std::to_string(model.chosen)});
  EXPECT_EQ(Config("FavoriteExtractCount"), "40");

  // Each stored visit counts once: the visits of a page add up to the count
  // the browser keeps for it, for every page, also those seen many times on
  // many days.
  const std::string file = GetParam() == Family::kChromium ? fixture::ChromiumHistoryPath(Home())
                                                           : fixture::FirefoxPlacesPath(Home());
  const std::string table = GetParam() == Family::kChromium ? "urls" : "moz_places";
  std::set<std::string> browserCounts;
  for (const std::string& page : Column("select url || ' ' || visit_count from " + table, file)) browserCounts.insert(page);
  size_t manyDays = 0;
  for (const std::string& page : Column("select URL || ' ' || sum(VisitCount) || ' ' || count(distinct VisitDate) "
                                        "from THistory group by URL")) {
    const std::string sum = page.substr(0, page.rfind(' '));
    EXPECT_TRUE(browserCounts.count(sum)) << "stored as URL, visits, days: " << page;
    manyDays += std::stoi(sum.substr(sum.rfind(' ') + 1)) >= 30 && std::stoi(page.substr(page.rfind(' ') + 1)) >= 10;
  }
  EXPECT_GT(manyDays, 0u);

  // The sites the person uses most lead the recommendations.
  std::vector<std::pair<int, std::string>> ranked;
  for (const auto& [host, visits] : model.perHost) ranked.emplace_back(-visits, host);
  std::sort(ranked.begin(), ranked.end());
  std::vector<std::string> recommended = Column("select Domain from TRecommendURL order by Weight desc, LastVisitTime desc");
  ASSERT_GE(recommended.size(), 10u);
  EXPECT_EQ(recommended[0], ranked[0].second);
  std::set<std::string> topTen(recommended.begin(), recommended.begin() + 10);
  for (size_t i = 0; i < 5; ++i) EXPECT_TRUE(topTen.count(ranked[i].second)) << ranked[i].second << " not in the top ten";

  // The next day: only its visits are added; an update later the same day
  // finds nothing new.
  ASSERT_TRUE(WriteFixture(GetParam(), Home(), spec, "2024-05-21"));
  size_t newDay = ChosenOnAppendedDay(spec, "2024-05-21");
  ASSERT_GT(newDay, 150u);
  UpdateAt("2024-05-21 21:00:00");
  EXPECT_EQ(Config("AddHistoryCount"), std::to_string(newDay));
  EXPECT_EQ(Config("HitoryExtractCount"), std::to_string(model.chosen + newDay));
  UpdateAt("2024-05-21 22:00:00", true);
  EXPECT_EQ(Config("AddHistoryCount"), "0");
  EXPECT_EQ(Column("select count(*) from THistory"), std::vector<std::string>{std::to_string(model.chosen + newDay)});
}

// A page used a little every day ranks above a page opened often on one day
// and once before: the score counts each visit once. daily.example.org has
// 1, 2, 3, 1, 2, 3, ... visits on each of the ten days up to today (19),
// and a reload, which the browser does not count; burst.example.org has 30
// visits yesterday and one nine days ago. Both are bare hosts, visited a
// minute apart: the analysis counts every visit (a path page is always
// counted; no two visits of a host lie within a second).
TEST_P(HarvestEndToEndTest, EachVisitCountsOnceInTheStoreAndTheScore) {
  const bool chromium = GetParam() == Family::kChromium;
  struct Visit {
    int page;  // 1 daily, 2 burst
    int64_t unixMicros;
    bool reload;
  };
  // 2024-05-20 09:00 in Berlin, summer time.
  const int64_t kToday9 = 1716188400LL * 1000000;
  const int64_t kMinute = 60LL * 1000000, kDay = 86400LL * 1000000;
  std::vector<Visit> visits;
  for (int day = 0; day < 10; ++day) {
    for (int n = 0; n < day % 3 + 1; ++n) visits.push_back({1, kToday9 - day * kDay + n * kMinute, false});
  }
  visits.push_back({1, kToday9 + 10 * kMinute, true});
  for (int n = 0; n < 30; ++n) visits.push_back({2, kToday9 - kDay + 180 * kMinute + n * kMinute, false});
  visits.push_back({2, kToday9 - 9 * kDay + 180 * kMinute, false});

  // The browser's own counts leave the reload out: 19 and 31.
  std::string rows = chromium ? "insert into urls values(1, 'https://daily.example.org/', 'Daily', 19, 0, 0, 0), "
                                "(2, 'https://burst.example.org/', 'Burst', 31, 0, 0, 0);"
                              : "insert into moz_places(id, url, title, visit_count) values(1, "
                                "'https://daily.example.org/', 'Daily', 19), (2, 'https://burst.example.org/', 'Burst', 31);";
  int id = 0;
  for (const Visit& visit : visits) {
    const std::string time = std::to_string(chromium ? visit.unixMicros + 11644473600LL * 1000000 : visit.unixMicros);
    rows += chromium ? "insert into visits values(" + std::to_string(++id) + ", " + std::to_string(visit.page) + ", " +
                           time + ", 0, " + (visit.reload ? "805306376" : "805306369") + ", 0, 0, '');"
                     : "insert into moz_historyvisits(id, place_id, visit_date, visit_type) values(" +
                           std::to_string(++id) + ", " + std::to_string(visit.page) + ", " + time + ", " +
                           (visit.reload ? "9" : "2") + ");";
  }
  const std::string file = chromium ? HandChromiumHistory(Home(), rows) : HandFirefoxPlaces(Home(), rows);
  UpdateAt("2024-05-20 21:00:00");

  const std::vector<std::string> kCounts = {"https://burst.example.org/ 31", "https://daily.example.org/ 19"};
  EXPECT_EQ(Column(std::string("select url || ' ' || visit_count from ") + (chromium ? "urls" : "moz_places") +
                       " order by url", file), kCounts);
  EXPECT_EQ(Column("select URL || ' ' || sum(VisitCount) from THistory group by URL order by URL"), kCounts);
  // (50 x days + 1 x visits) x 2.0, the weight of a newest day index of 0
  // to 2: daily (50 x 10 + 19) x 2.0 = 1038; burst (50 x 2 + 31) x 2.0 =
  // 262. With each visit counted as the page's total, burst would take
  // (100 + 31 x 31) x 2.0 = 2122 against daily's (500 + 19 x 19) x 2.0 = 1722.
  EXPECT_EQ(Column("select URL || ' ' || VisitCount || ' ' || AvgVisitCount || ' ' || Score from h2 order by Score desc"),
            (std::vector<std::string>{"https://daily.example.org 19 1 1038", "https://burst.example.org 31 15 262"}));
  EXPECT_EQ(Column("select Domain from TRecommendURL order by Weight desc"),
            (std::vector<std::string>{"daily.example.org", "burst.example.org"}));
}

INSTANTIATE_TEST_SUITE_P(BothFamilies, HarvestEndToEndTest, ::testing::Values(Family::kChromium, Family::kFirefox),
                         [](const ::testing::TestParamInfo<Family>& family) {
                           return family.param == Family::kChromium ? "Chromium" : "Firefox";
                         });

}  // namespace
}  // namespace corvane::testing
