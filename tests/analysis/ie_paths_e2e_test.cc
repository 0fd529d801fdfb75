// IE as the source, through the exports: the IE-only path sums the snapshot
// while IE visits have not reached THistory.

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

}  // namespace
}  // namespace corvane::testing
