// IE as the source, through the exports: the IE-only path while IE visits
// have not reached THistory, and the normal path in IE mode once they
// have. "Now" is 2024-03-10 20:00.

#include "analysis/analysis_host.h"
#include "corvane/VisitHarvest.h"

namespace corvane::testing {
namespace {

TEST_F(AnalysisTest, IEOnlyPathSumsTheSnapshotUntilIEVisitsReachTheHistory) {
  UseIEOnly();
  IEVisit("http://three.com/", "2024-03-08 10:00:00.000", 1);
  IEVisit("http://two.com/", "2024-03-08 11:00:00.000", 1);
  // The first merge fills only the snapshot: the IE-only path.
  ASSERT_EQ(Update(), S_OK);
  EXPECT_EQ(Config("IEHistoryAdded"), "");
  EXPECT_EQ(Scalar("select count(*) from THistory"), "0");
  EXPECT_EQ(Rows("select FixedURL, Weight, VisitCount, AvgVisitCount from TRecommendURL order by FixedURL"),
            (std::vector<std::string>{"three.com|0|1|1", "two.com|0|1|1"}));
  for (const char* key : {"H2", "E3inH2", "E3", "H1", "E2inH1", "E2"}) EXPECT_EQ(Config(key), "-1") << key;

  // Grown counts reach THistory as the difference: IE mode on the normal
  // path, where a URL needs 3 recent visits for j1.
  m_fixture.history[BROWSER_IE] = {};
  IEVisit("http://three.com/", "2024-03-10 09:00:00.000", 4);
  IEVisit("http://two.com/", "2024-03-10 09:30:00.000", 3);
  // New URLs: a file page and, older, its bare host. IE rows are not
  // compared with each other, so both count.
  IEVisit("http://site.com/page.html", "2024-03-10 12:00:00.000", 1);
  IEVisit("http://site.com/", "2024-03-10 11:00:00.000", 1);
  ASSERT_EQ(Update(), S_OK);
  EXPECT_EQ(Config("IEHistoryAdded"), "2024.03.10");
  EXPECT_EQ(Rows("select URL, VisitCount from TPreparedURL order by URL"),
            (std::vector<std::string>{"site.com|1", "site.com/page.html|1", "three.com|3", "two.com|2"}));
  EXPECT_EQ(Rows("select URL, Score from j1"), std::vector<std::string>{"three.com|106"});
  EXPECT_EQ(Rows("select URL, Score from h2 order by URL"),
            (std::vector<std::string>{"site.com|102", "site.com/page.html|102", "two.com|104"}));
  EXPECT_EQ(Config("H2"), "3");
  EXPECT_EQ(Config("H1"), "1");
}

TEST_F(AnalysisTest, IEOnlyPathSumsAURLOverThreeDatesAndAveragesPerDate) {
  UseIEOnly();
  // IE keeps one entry per address, so one page reaches three dates under
  // three spellings that share the fixed form "site.com".
  IEVisit("http://www.site.com/", "2024-03-10 09:00:00.000", 2, "Newest");
  IEVisit("http://site.com/", "2024-03-09 09:00:00.000", 1, "Middle");
  IEVisit("http://www.site.com", "2024-03-08 09:00:00.000", 3, "Oldest");
  ASSERT_EQ(Update(), S_OK);
  EXPECT_EQ(Config("IEHistoryAdded"), "");
  ASSERT_EQ(Scalar("select count(distinct VisitDate) from TIEHistory"), "3");
  // One row: the visits summed and averaged over the three dates, with the
  // newest spelling, title and time.
  EXPECT_EQ(Scalar("select Name from TRecommendURL"), "Newest");
  EXPECT_EQ(Scalar("select LastVisitTime = (select max(VisitTimeLong) from TIEHistory) from TRecommendURL"), "1");
  EXPECT_EQ(Rows("select URL, FixedURL, VisitCount, AvgVisitCount, Weight from TRecommendURL"),
            std::vector<std::string>{"http://www.site.com/|site.com|6|2|0"});
  EXPECT_EQ(Scalar("select count(*) from TPreparedURL"), "0");
}

TEST_F(AnalysisTest, IERowsOnTheNormalPathCountWithoutATitleAndAllPassTheOneSecondRule) {
  UseIEOnly();
  IEVisit("http://seed.com/", "2024-03-08 10:00:00.000", 1);
  ASSERT_EQ(Update(), S_OK);
  m_fixture.history[BROWSER_IE] = {};
  IEVisit("http://seed.com/", "2024-03-08 10:00:00.000", 1);
  // Without a title: counted all the same.
  IEVisit("http://untitled.com/", "2024-03-10 08:00:00.000", 1, "");
  // A file page and, half a second older, its bare host. Other browsers'
  // rows would drop the file page as a step inside the site and count the
  // host; every IE row passes the rule of one second instead, so the file
  // page counts and the host, too soon after it, does not.
  IEVisit("http://fast.com/page.html", "2024-03-10 10:00:00.500", 1);
  IEVisit("http://fast.com/", "2024-03-10 10:00:00.000", 1);
  // Four folder pages of one host 400 ms apart: the reference time stays
  // at the first until a row lies a full second from it.
  IEVisit("http://beat.com/a/", "2024-03-10 11:00:01.200", 1);
  IEVisit("http://beat.com/b/", "2024-03-10 11:00:00.800", 1);
  IEVisit("http://beat.com/c/", "2024-03-10 11:00:00.400", 1);
  IEVisit("http://beat.com/d/", "2024-03-10 11:00:00.000", 1);
  ASSERT_EQ(Update(), S_OK);
  ASSERT_EQ(Config("IEHistoryAdded"), "2024.03.10");
  EXPECT_EQ(Rows("select URL from TPreparedURL where DayIndex = 0 order by URL"),
            (std::vector<std::string>{"beat.com/a", "beat.com/d", "fast.com/page.html", "untitled.com"}));
  EXPECT_EQ(Scalar("select Name from TPreparedURL where URL = 'untitled.com'"), "");
}

TEST_F(AnalysisTest, IEOnlyPathWithAnEmptySnapshotKeepsTheRecommendations) {
  for (int day = 1; day <= 9; ++day) Visit("http://blog.me.org/", "2024-03-0" + std::to_string(day) + " 10:00:00.000");
  ASSERT_EQ(Update(), S_OK);
  ASSERT_EQ(Rows("select FixedURL from TRecommendURL"), std::vector<std::string>{"blog.me.org"});
  // IE now, and it delivers nothing: nothing to write is still success.
  UseIEOnly();
  m_fixture.history.clear();
  ASSERT_EQ(Update(), S_OK);
  EXPECT_EQ(Rows("select FixedURL from TRecommendURL"), std::vector<std::string>{"blog.me.org"});
  EXPECT_EQ(Config("H2"), "-1");
  EXPECT_EQ(Config("E2"), "-1");
}

TEST_F(AnalysisTest, TableZHoldsTheRowsOfHostsThatARuleOfTheirMainDomainMatches) {
  WriteWhiteList(R"({"sublist":[{"maindomain":"me.org","name":"Me","domains":[{"domain":"[a-z]+\\.me\\.org"}]},
                                {"maindomain":"you.net","name":"You","domains":[{"domain":".*"}]}]})");
  // Folder pages and bare hosts only, a second apart: every visit counts.
  // Today has none, so the nine dates take the day indexes 1 to 9 and each
  // URL has older visits: all go to h2.
  const char* kURLs[] = {"http://blog.me.org/", "http://blog.me.org/archive/", "http://BLOG.me.org/x/",
                         "http://www.me.org/",  "http://a.you.net/",           "http://blog.other.net/"};
  for (int day = 1; day <= 9; ++day) {
    for (int i = 0; i < 6; ++i) {
      Visit(kURLs[i], "2024-03-0" + std::to_string(day) + " 10:00:0" + std::to_string(6 - i) + ".000");
    }
  }
  ASSERT_EQ(Update(), S_OK);
  EXPECT_EQ(Scalar("select count(*) from h2"), "6");
  // The rule spells lower-case hosts of me.org; ".*" of you.net never sees
  // a host of another main domain.
  EXPECT_EQ(Rows("select URL from z order by URL"),
            (std::vector<std::string>{"a.you.net", "blog.me.org", "blog.me.org/archive"}));
  EXPECT_EQ(Scalar("select count(*) from sqlite_master where name = 'ZDomainTemp'"), "0");
}

}  // namespace
}  // namespace corvane::testing
