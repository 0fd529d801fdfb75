// The recommendation tables from h2 and z: domains, the outstanding-host
// flag, the sub-sites of a flagged main domain, and the hide marks across a
// rebuild.

#include "analysis/update_driver.h"
#include "settings/score_settings.h"
#include "store/db_fixture.h"
#include "store/schema.h"

namespace corvane::testing {
namespace {

class RecommendTablesTest : public DBTest {
 protected:
  RecommendTablesTest() {
    m_db.RecreateTable(schema::kCreateHTableTemplate, schema::kH2);
    m_db.RecreateTable(schema::kCreateHTableTemplate, schema::kZ);
  }

  void H2Row(const std::string& url, const std::string& host, const std::string& mainDomain, int score,
             int visits = 1) {
    Exec("insert into h2 values('N', '" + url + "', 'http://" + url + "/', '" + mainDomain + "', '" + host +
         "', 100, " + std::to_string(visits) + ", 1, " + std::to_string(score) + ")");
  }
  void WhiteListed(const std::string& host, const std::string& mainDomain) {
    Exec("insert into TWhiteList values('G', '" + mainDomain + "', '" + host + "', 'Sub')");
  }
  // White-listed hosts of their own main domain, with these scores.
  void Domains(const std::string& prefix, const std::vector<int>& scores) {
    for (size_t i = 0; i < scores.size(); ++i) {
      std::string host = prefix + std::to_string(i) + ".com";
      H2Row(host, host, host, scores[i]);
      WhiteListed(host, host);
    }
  }
  // The rebuild of the update cycle, as the driver runs it.
  void Rebuild() {
    CUpdateDriver driver(&m_db, &m_settings);
    ASSERT_EQ(driver.BuildRecommendTables(), S_OK);
  }

  CScoreSettings m_settings;
};

TEST_F(RecommendTablesTest, OutstandingHostsAreFlaggedAboveMeanPlusTwoAndAHalfDeviations) {
  const struct {
    std::vector<int> scores;
    std::vector<std::string> flagged;
  } kCases[] = {
      // Mean 109, population deviation 297: limit 851.
      {{10, 10, 10, 10, 10, 10, 10, 10, 10, 1000}, {"s9.com"}},
      // Mean 4/7 cut to 0, population deviation 1.195: limit 2.99, cut to 2.
      // A sample deviation (limit 3.2) or the exact mean (limit 3.19) would
      // flag nothing, and neither would a limit rounded to 3.
      {{0, 0, 0, 0, 0, 1, 3}, {"s6.com"}},
      // Mean 16, deviation 37.3: limit 109 keeps 100 unflagged, as two
      // deviations (limit 90) would not.
      {{0, 0, 0, 0, 0, 100}, {}},
      {{40, 40, 40}, {}},
      {{500}, {}},
  };
  for (const auto& run : kCases) {
    SCOPED_TRACE(run.scores.size());
    Exec("delete from h2; delete from TWhiteList");
    Domains("s", run.scores);
    Rebuild();
    EXPECT_EQ(Scalar("select count(*) from TRecommendDomain"), std::to_string(run.scores.size()));
    EXPECT_EQ(Rows("select Domain from TRecommendDomain where T2Flag = 1"), run.flagged);
    // Pages of white-listed hosts leave the single pages.
    EXPECT_EQ(Scalar("select count(*) from TRecommendURL"), "0");
  }
  Exec("delete from TRecommendDomain");
  EXPECT_EQ(m_db.MarkTopDomains(), E_FAIL);
}

TEST_F(RecommendTablesTest, BlackListWinsAndOnlyPagesAboveTheTruncatedAverageAreMarked) {
  Domains("w", {5, 5, 5});
  Exec("insert into TBlackList values('B', 'w2.com', 'w2.com', 'B')");
  H2Row("page.org/x", "page.org", "page.org", 7, 5);
  H2Row("page.org/y", "page.org", "page.org", 3, 1);
  // Average 2: the page at 2 stays unmarked.
  for (int visits = 1; visits <= 3; ++visits) H2Row("a.org/" + std::to_string(visits), "a.org", "a.org", 1, visits);
  Rebuild();
  EXPECT_EQ(Rows("select Domain from TRecommendDomain order by Domain"), (std::vector<std::string>{"w0.com", "w1.com"}));
  EXPECT_EQ(Rows("select FixedURL, AvgVisitCount from TRecommendURL order by FixedURL"),
            (std::vector<std::string>{"a.org/1|0", "a.org/2|0", "a.org/3|1", "page.org/x|1", "page.org/y|0"}));
  // Counts that wrapped below zero: -5 / 2 is cut to -2, which -2 doesn't
  // exceed, though it lies above the exact average of -2.5.
  Exec("delete from h2");
  H2Row("b.org/1", "b.org", "b.org", 1, -2);
  H2Row("b.org/2", "b.org", "b.org", 1, -3);
  Rebuild();
  EXPECT_EQ(Rows("select FixedURL, AvgVisitCount from TRecommendURL order by FixedURL"),
            (std::vector<std::string>{"b.org/1|0", "b.org/2|0"}));
}

TEST_F(RecommendTablesTest, SubSitesOfAFlaggedMainDomainGoToTZS) {
  Domains("h", {10, 10, 10, 10, 10, 10, 10, 10, 10});
  for (const auto& [host, score] : {std::pair{"news.com", 2000}, {"sport.news.com", 30}, {"mail.news.com", 20}}) {
    H2Row(host, host, "news.com", score);
    WhiteListed(host, "news.com");
  }
  Exec("insert into z select * from h2 where FullDomainName = 'sport.news.com'");
  Rebuild();
  EXPECT_EQ(Rows("select Domain from TRecommendDomain where T2Flag = 1"), std::vector<std::string>{"news.com"});
  EXPECT_EQ(Rows("select Domain from TZS"), (std::vector<std::string>{"sport.news.com", "mail.news.com"}));
  EXPECT_EQ(Rows("select Domain, Score from TSubDomain"), std::vector<std::string>{"sport.news.com|30"});
}

TEST_F(RecommendTablesTest, HideMarksSurviveARebuild) {
  Domains("a", {5, 5, 5});
  H2Row("page.org/x", "page.org", "page.org", 10);
  H2Row("other.net/y", "other.net", "other.net", 4);
  Rebuild();
  // For good, until the rebuild, and the until-rebuild state after one.
  Exec("update TRecommendDomain set Hide = 1 where Domain = 'a0.com';"
       "update TRecommendDomain set Hide = 2, Score = 4 where Domain = 'a1.com';"
       "update TRecommendURL set Hide = 2, Weight = 7 where FixedURL = 'page.org/x'");
  Rebuild();
  EXPECT_EQ(Rows("select Domain, Hide, Score from TRecommendDomain order by Domain"),
            (std::vector<std::string>{"a0.com|1|5", "a1.com|-1|3.5", "a2.com|0|5"}));
  EXPECT_EQ(Rows("select FixedURL, Hide, Weight from TRecommendURL order by FixedURL"),
            (std::vector<std::string>{"other.net/y|0|4", "page.org/x|-1|7"}));
  // A second rebuild lowers the fresh score once more, not the lowered one.
  Rebuild();
  EXPECT_EQ(Scalar("select Hide || ':' || Score from TRecommendDomain where Domain = 'a1.com'"), "-1:3.5");
  // The host of a hidden page joins the white list: its page leaves the
  // single pages before the marks are written back, so the mark finds no
  // row and the host's score is the page's weight as it was built.
  Exec("update TRecommendURL set Hide = 2 where FixedURL = 'page.org/x'");
  WhiteListed("page.org", "page.org");
  Rebuild();
  EXPECT_EQ(Rows("select FixedURL, Hide, Weight from TRecommendURL"), std::vector<std::string>{"other.net/y|0|4"});
  EXPECT_EQ(Scalar("select Hide || ':' || Score from TRecommendDomain where Domain = 'page.org'"), "0:10");
}

}  // namespace
}  // namespace corvane::testing
