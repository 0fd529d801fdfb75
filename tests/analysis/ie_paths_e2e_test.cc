// IE as the source, through the exports: the IE-only path while IE visits
// have not reached THistory, and the normal path in IE mode once they
// have.

#include "intake/provider_host.h"

namespace corvane::testing {
namespace {

class IEPathsTest : public ProviderTest {};

TEST_F(IEPathsTest, IEOnlyPathSumsTheSnapshotUntilIEVisitsReachTheHistory) {
  UseIEOnly();
  IEVisit("http://three.com/", "2024-03-08 10:00:00.000", 1);
  IEVisit("http://two.com/", "2024-03-08 11:00:00.000", 1);
  // The first merge fills only the snapshot: the IE-only path, which has
  // no scored tables to count.
  ASSERT_EQ(Update(), S_OK);
  EXPECT_EQ(Config("IEHistoryAdded"), kAbsent);
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
  EXPECT_EQ(Config("H2") + " " + Config("H1"), "3 1");
}

TEST_F(IEPathsTest, IEOnlyPathSumsAURLOverThreeDatesAndAveragesPerDate) {
  UseIEOnly();
  // IE keeps one entry per address, so one page reaches three dates under
  // three spellings that share the fixed form "site.com".
  IEVisit("http://www.site.com/", "2024-03-10 09:00:00.000", 2, "Newest");
  IEVisit("http://site.com/", "2024-03-09 09:00:00.000", 1, "Middle");
  IEVisit("http://www.site.com", "2024-03-08 09:00:00.000", 3, "Oldest");
  // Two addresses of one host within a second: the older is no visit.
  IEVisit("http://other.com/a", "2024-03-10 10:00:00.500", 4);
  IEVisit("http://other.com/b", "2024-03-10 10:00:00.000", 4);
  ASSERT_EQ(Update(), S_OK);
  ASSERT_EQ(Scalar("select count(distinct VisitDate) from TIEHistory"), "3");
  // One row: the visits summed and averaged over the three dates, with the
  // newest spelling, title and time.
  EXPECT_EQ(Rows("select Name, URL, FixedURL, VisitCount, AvgVisitCount, Weight from TRecommendURL order by URL"),
            (std::vector<std::string>{"Page|http://other.com/a|other.com/a|4|4|0", "Newest|http://www.site.com/|site.com|6|2|0"}));
  EXPECT_EQ(Scalar("select LastVisitTime - (select max(VisitTimeLong) from TIEHistory where URL like '%site.com%') "
                   "from TRecommendURL where FixedURL = 'site.com'"),
            "0");
  EXPECT_EQ(Scalar("select count(*) from TPreparedURL"), "0");
}

TEST_F(IEPathsTest, IERowsOnTheNormalPathCountWithoutATitleAndAllPassTheOneSecondRule) {
  UseIEOnly();
  IEVisit("http://seed.com/", "2024-03-08 10:00:00.000", 1);
  ASSERT_EQ(Update(), S_OK);
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
  EXPECT_EQ(Rows("select URL, Name from TPreparedURL where DayIndex = 0 order by URL"),
            (std::vector<std::string>{"beat.com/a|Page", "beat.com/d|Page", "fast.com/page.html|Page", "untitled.com|"}));
}

}  // namespace
}  // namespace corvane::testing
