// The scoring and the recommendation through the exports: deliveries of
// the scripted extraction library, one forced update, and the tables and
// counters it leaves.

#include <filesystem>
#include <fstream>

#include "intake/provider_host.h"

namespace corvane::testing {
namespace {

class PipelineTest : public ProviderTest {};

TEST_F(PipelineTest, ScoresOfRecentAndLongStandingSites) {
  // No visit today: the newest date has day index 1, and no row index 0.
  // 10 visits on 3 days, the newest with index 1: (150 + 10) x 2.0.
  Visit("http://recent.com/", "2024-03-09 10:00:00.000", 4, "Newest");
  Visit("http://recent.com/", "2024-03-08 10:00:00.000", 3, "Middle");
  Visit("http://recent.com/", "2024-03-07 10:00:00.000", 3, "Oldest");
  // The same as a favourite, whose address holds a quote: x 1.3.
  Visit("http://liked.com/it's/", "2024-03-09 11:00:00.000", 4);
  Visit("http://liked.com/it's/", "2024-03-08 11:00:00.000", 3);
  Visit("http://liked.com/it's/", "2024-03-07 11:00:00.000", 3);
  m_fixture.favorites[BROWSER_CHROME] = {FakeItem{"Favourite", "http://liked.com/it's/", "Bookmarks bar", ""}};
  // One visit on day index 9: (50 + 1) x 1.2, in h2. Day indexes count
  // dates with visits: five more dates lie between.
  for (int day = 2; day <= 6; ++day) Visit("http://filler.net/", March(day) + " 10:00:00.000");
  Visit("http://old.com/", "2024-03-01 10:00:00.000");
  ASSERT_EQ(Update(), S_OK);
  EXPECT_EQ(Scalar("select min(DayIndex) from TPreparedURL"), "1");
  EXPECT_EQ(Scalar("select Score || ' ' || VisitCount || ' ' || AvgVisitCount from j1 where URL = 'recent.com'"),
            "320 10 3");
  EXPECT_EQ(Scalar("select Score from j1 where URL = 'liked.com/it''s'"), "416");
  EXPECT_EQ(Scalar("select Score || ' ' || MainDomainName || ' ' || FullDomainName from h2 where URL = 'old.com'"),
            "61 old.com old.com");
  // Three days give one row, with the sum of the visits, the newest time
  // of the URL and the name of its newest day.
  EXPECT_EQ(Scalar("select count(*) from TPreparedURL where URL = 'recent.com'"), "3");
  EXPECT_EQ(Rows("select Name, LastVisitTime = (select VisitTimeLong from TPreparedURL where URL = 'recent.com' and "
                 "DayIndex = 1) from j1 where URL = 'recent.com'"),
            std::vector<std::string>{"Newest|1"});
}

TEST_F(PipelineTest, RecentOnlyUpToDayIndexSixLongStandingFromSeven) {
  // Day indexes count dates with visits; today has one.
  for (int day = 10; day >= 3; --day) Visit("http://filler" + std::to_string(day) + ".com/", March(day) + " 08:00:00");
  Visit("http://six.com/", "2024-03-04 09:00:00.000");
  Visit("http://seven.com/", "2024-03-04 09:30:00.000");
  Visit("http://seven.com/", "2024-03-03 09:00:00.000");
  ASSERT_EQ(Update(), S_OK);
  EXPECT_EQ(Scalar("select DayIndex from TPreparedURL where URL = 'six.com'"), "6");
  EXPECT_EQ(Rows("select URL from j1 where URL in ('six.com', 'seven.com')"), std::vector<std::string>{"six.com"});
  // (2 days x 50 + 2) x 1.5 for the band of index 6.
  EXPECT_EQ(Rows("select URL, Score from h2 where URL in ('six.com', 'seven.com')"),
            std::vector<std::string>{"seven.com|153"});
}

// H1 and E2inH1 describe j1, the recent table, with e2, the recently first
// opened sites; H2 and E3inH2 describe h2 with e3.
TEST_F(PipelineTest, FirstOpenedSitesSplitIntoRecentAndOlderAndFeedTheCounters) {
  // Nine dates with visits, today the newest: day indexes 0 to 8.
  for (int day = 2; day <= 10; ++day) {
    Visit("http://first.com/", March(day) + " 07:00:00.000");
    if (day >= 9) Visit("http://fresh.com/", March(day) + " 07:30:00.000");
  }
  // One visit is below the least count of the e tables; it is still scored.
  Visit("http://once.com/", "2024-03-10 08:00:00.000");
  ASSERT_EQ(Update(), S_OK);
  EXPECT_EQ(Rows("select URL, VisitCount, Score from e3"), std::vector<std::string>{"first.com|9|0"});
  EXPECT_EQ(Rows("select URL, VisitCount from e2"), std::vector<std::string>{"fresh.com|2"});
  EXPECT_EQ(Rows("select URL from h2"), std::vector<std::string>{"first.com"});
  EXPECT_EQ(Rows("select URL from j1 order by URL"), (std::vector<std::string>{"fresh.com", "once.com"}));
  EXPECT_EQ(Config("H2") + " " + Config("E3inH2") + " " + Config("E3"), "1 1 1");
  EXPECT_EQ(Config("H1") + " " + Config("E2inH1") + " " + Config("E2"), "2 1 1");
}

TEST_F(PipelineTest, WhiteListAndSubListRulesShapeTheRecommendation) {
  std::filesystem::create_directories(m_dir.Path() + "/CorvaneApp");
  std::ofstream(DataFile("WhiteList.js")) << R"({"whitelist":[{"maindomain":"news.com","name":"News","domains":[{"domain":"www.news.com"}]}],
                     "blacklist":[{"maindomain":"bad.com","name":"Bad","domains":[{"domain":"bad.com"}]}],
                     "sublist":[{"maindomain":"me.org","name":"Me","domains":[{"domain":"[a-z]+\\.me\\.org"}]},
                                {"maindomain":"you.net","name":"You","domains":[{"domain":".*"}]}]})";
  // Folder pages and bare hosts only, a second apart: every visit counts.
  // Today has none, so the nine dates take the day indexes 1 to 9 and each
  // URL has older visits: all go to h2.
  const char* kURLs[] = {"http://www.news.com/", "http://bad.com/",   "http://blog.me.org/", "http://blog.me.org/archive/",
                         "http://BLOG.me.org/x/", "http://www.me.org/", "http://a.you.net/",  "http://blog.other.net/"};
  for (int day = 1; day <= 9; ++day) {
    for (int i = 0; i < 8; ++i) Visit(kURLs[i], March(day) + " 10:00:0" + std::to_string(8 - i) + ".000");
  }
  ASSERT_EQ(Update(), S_OK);
  EXPECT_EQ(Scalar("select count(*) from h2"), "8");
  // "www." goes in the fixed form, so the host is matched by the main
  // domain's own row of the white list; the black-listed host is no page.
  EXPECT_EQ(Rows("select Domain, MainDomain from TRecommendDomain"), std::vector<std::string>{"news.com|news.com"});
  EXPECT_EQ(Scalar("select count(*) from TRecommendURL where FixedURL in ('bad.com', 'news.com')"), "0");
  // The rule spells lower-case hosts of me.org; ".*" of you.net never sees
  // a host of another main domain.
  EXPECT_EQ(Rows("select URL from z order by URL"),
            (std::vector<std::string>{"a.you.net", "blog.me.org", "blog.me.org/archive"}));
  EXPECT_EQ(Scalar("select count(*) from sqlite_master where name = 'ZDomainTemp'"), "0");
}

}  // namespace
}  // namespace corvane::testing
