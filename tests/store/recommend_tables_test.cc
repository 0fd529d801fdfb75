// The recommendation tables from h2 and z: domains, the outstanding-host
// flag, the sub-sites of a flagged main domain, and the host's hide marks
// across a rebuild.

#include <gtest/gtest.h>

#include "analysis/update_driver.h"
#include "common/utf.h"
#include "settings/score_settings.h"
#include "store/corvane_db.h"
#include "store/schema.h"
#include "support/test_host.h"

namespace corvane {
namespace {

class RecommendTablesTest : public ::testing::Test {
 protected:
  RecommendTablesTest() : m_appData("CORVANE_APPDATA", m_dir.Path().c_str()) {
    EXPECT_EQ(m_db.Open(FromUtf8(m_dir.File("db.sqlite")), false), S_OK);
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
  void Exec(const std::string& sql) { ASSERT_TRUE(m_db.ExecUtf8(sql)) << sql; }

  std::vector<std::string> Rows(const std::string& sql) {
    std::vector<std::string> rows;
    StatementPtr stmt = m_db.Prepare(FromUtf8(sql));
    while (stmt && stmt->Step()) rows.push_back(ToUtf8(stmt->ColumnText16(0)));
    return rows;
  }

  // The rebuild of the update cycle, as the driver runs it.
  void Rebuild() {
    CUpdateDriver driver(&m_db, &m_settings);
    ASSERT_EQ(driver.BuildRecommendTables(), S_OK);
  }

  // White-listed hosts of their own main domain, with these scores.
  void Domains(const std::vector<int>& scores) {
    for (size_t i = 0; i < scores.size(); ++i) {
      std::string host = "s" + std::to_string(i) + ".com";
      H2Row(host, host, host, scores[i]);
      WhiteListed(host, host);
    }
  }

  test::TempDir m_dir;
  test::ScopedEnv m_appData;
  CCorvaneDB m_db;
  CScoreSettings m_settings;
};

TEST_F(RecommendTablesTest, OutstandingHostIsFlaggedAboveMeanPlusTwoAndAHalfDeviations) {
  for (int i = 0; i < 9; ++i) {
    std::string host = "h" + std::to_string(i) + ".com";
    H2Row(host, host, host, 10);
    WhiteListed(host, host);
  }
  H2Row("big.com", "big.com", "big.com", 1000);
  WhiteListed("big.com", "big.com");
  Rebuild();
  EXPECT_EQ(Rows("select Domain from TRecommendDomain where T2Flag = 1"), std::vector<std::string>{"big.com"});
  // Pages of white-listed hosts leave the single pages.
  EXPECT_TRUE(Rows("select URL from TRecommendURL").empty());
}

TEST_F(RecommendTablesTest, FlagLimitUsesThePopulationDeviationAroundTheTruncatedMean) {
  // Mean 4/7 cut to 0, population deviation 1.195: limit 2.99, cut to 2.
  // A sample deviation (limit 3.2) or the exact mean (limit 3.19) would
  // flag nothing, and neither would a limit rounded to 3.
  Domains({0, 0, 0, 0, 0, 1, 3});
  Rebuild();
  EXPECT_EQ(Rows("select Domain from TRecommendDomain where T2Flag = 1"), std::vector<std::string>{"s6.com"});
}

TEST_F(RecommendTablesTest, SingleDomainFlagsNothingAndNoDomainIsAFailure) {
  Domains({500});
  Rebuild();
  EXPECT_EQ(Rows("select Domain || ':' || T2Flag from TRecommendDomain"), std::vector<std::string>{"s0.com:0"});
  Exec("delete from TRecommendDomain");
  EXPECT_EQ(m_db.MarkTopDomains(), E_FAIL);
}

TEST_F(RecommendTablesTest, EqualScoresFlagNothingAndBlackListWins) {
  for (const char* host : {"a.com", "b.com", "c.com"}) {
    H2Row(host, host, host, 40);
    WhiteListed(host, host);
  }
  Exec("insert into TBlackList values('B', 'c.com', 'c.com', 'B')");
  H2Row("page.org/x", "page.org", "page.org", 7, 5);
  H2Row("page.org/y", "page.org", "page.org", 3, 1);
  Rebuild();
  EXPECT_TRUE(Rows("select Domain from TRecommendDomain where T2Flag = 1").empty());
  EXPECT_EQ(Rows("select Domain from TRecommendDomain order by Domain"), (std::vector<std::string>{"a.com", "b.com"}));
  EXPECT_TRUE(Rows("select Domain from TZS").empty());
  // Only the page above the truncated average visit count is marked.
  EXPECT_EQ(Rows("select FixedURL || ':' || AvgVisitCount from TRecommendURL order by FixedURL"),
            (std::vector<std::string>{"page.org/x:1", "page.org/y:0"}));
}

TEST_F(RecommendTablesTest, VisitCountEqualToTheTruncatedAverageIsNotMarked) {
  // Average 2: the page at 2 stays unmarked.
  H2Row("a.org/1", "a.org", "a.org", 1, 1);
  H2Row("a.org/2", "a.org", "a.org", 1, 2);
  H2Row("a.org/3", "a.org", "a.org", 1, 3);
  Rebuild();
  EXPECT_EQ(Rows("select FixedURL || ':' || AvgVisitCount from TRecommendURL order by FixedURL"),
            (std::vector<std::string>{"a.org/1:0", "a.org/2:0", "a.org/3:1"}));
  // Counts that wrapped below zero: -5 / 2 is cut to -2, which -2 doesn't
  // exceed, though it lies above the exact average of -2.5.
  Exec("delete from h2");
  H2Row("b.org/1", "b.org", "b.org", 1, -2);
  H2Row("b.org/2", "b.org", "b.org", 1, -3);
  Rebuild();
  EXPECT_EQ(Rows("select FixedURL || ':' || AvgVisitCount from TRecommendURL order by FixedURL"),
            (std::vector<std::string>{"b.org/1:0", "b.org/2:0"}));
}

TEST_F(RecommendTablesTest, HiddenPageOfAHostThatJoinedTheWhiteListUpdatesNoRow) {
  H2Row("page.org/x", "page.org", "page.org", 10);
  H2Row("other.net/y", "other.net", "other.net", 4);
  Rebuild();
  Exec("update TRecommendURL set Hide = 2 where FixedURL = 'page.org/x'");
  // The host joins the white list: its page leaves the single pages
  // before the marks are written back, so the mark finds no row and the
  // host's score is the page's weight as it was built.
  WhiteListed("page.org", "page.org");
  Rebuild();
  EXPECT_EQ(Rows("select FixedURL || ':' || Hide || ':' || Weight from TRecommendURL"),
            std::vector<std::string>{"other.net/y:0:4"});
  EXPECT_EQ(Rows("select Domain || ':' || Hide || ':' || Score from TRecommendDomain"),
            std::vector<std::string>{"page.org:0:10"});
}

TEST_F(RecommendTablesTest, HideMarksSurviveTheRebuildFromTheIEOnlyMap) {
  PreparedMap map;
  auto add = [&map](const std::u16string& fixedURL, int32_t visits) {
    CPreparedURL record;
    record.Name = u"N";
    record.VisitTime = u"2024.03.10 0 09:00:00.000";
    record.hadWww = 1;
    record.hadSlash = 1;
    record.VisitCount = visits;
    map.emplace(fixedURL, record);
  };
  add(u"keep.com", 3);
  add(u"later.com", 2);
  add(u"gone.com", 1);
  ASSERT_EQ(m_db.BuildRecommendURLsFromMap(map), S_OK);
  Exec("update TRecommendURL set Hide = 1 where FixedURL = 'keep.com'");
  Exec("update TRecommendURL set Hide = 2 where FixedURL = 'later.com'");
  Exec("update TRecommendURL set Hide = 2 where FixedURL = 'gone.com'");
  map.erase(u"gone.com");
  ASSERT_EQ(m_db.BuildRecommendURLsFromMap(map), S_OK);
  // The marks are saved before the table is emptied and written back by
  // URL: for good stays 1, until-rebuild becomes -1, a URL no longer in
  // the map has no row to carry it.
  EXPECT_EQ(Rows("select URL || ':' || Hide || ':' || VisitCount from TRecommendURL order by URL"),
            (std::vector<std::string>{"http://www.keep.com/:1:3", "http://www.later.com/:-1:2"}));
}

TEST_F(RecommendTablesTest, SubSitesOfAFlaggedMainDomainGoToTZS) {
  for (int i = 0; i < 9; ++i) {
    std::string host = "h" + std::to_string(i) + ".net";
    H2Row(host, host, host, 10);
    WhiteListed(host, host);
  }
  H2Row("news.com", "news.com", "news.com", 2000);
  H2Row("sport.news.com", "sport.news.com", "news.com", 30);
  H2Row("mail.news.com", "mail.news.com", "news.com", 20);
  for (const char* host : {"news.com", "sport.news.com", "mail.news.com"}) WhiteListed(host, "news.com");
  Exec("insert into z select * from h2 where FullDomainName = 'sport.news.com'");
  Rebuild();
  EXPECT_EQ(Rows("select Domain from TZS"), (std::vector<std::string>{"sport.news.com", "mail.news.com"}));
  EXPECT_EQ(Rows("select Domain || ':' || Score from TSubDomain"), std::vector<std::string>{"sport.news.com:30"});
}

TEST_F(RecommendTablesTest, HideMarksSurviveARebuild) {
  for (const char* host : {"a.com", "b.com", "c.com"}) {
    H2Row(host, host, host, 5);
    WhiteListed(host, host);
  }
  H2Row("page.org/x", "page.org", "page.org", 10);
  Rebuild();
  // For good, until the rebuild, and the until-rebuild state after one.
  Exec("update TRecommendDomain set Hide = 1 where Domain = 'a.com'");
  Exec("update TRecommendDomain set Hide = 2, Score = 4 where Domain = 'b.com'");
  Exec("update TRecommendURL set Hide = 2, Weight = 7 where FixedURL = 'page.org/x'");
  Rebuild();
  EXPECT_EQ(Rows("select Domain || ':' || Hide || ':' || Score from TRecommendDomain order by Domain"),
            (std::vector<std::string>{"a.com:1:5", "b.com:-1:3.5", "c.com:0:5"}));
  EXPECT_EQ(Rows("select Hide || ':' || Weight from TRecommendURL"), std::vector<std::string>{"-1:7"});
  // A second rebuild lowers the fresh score once more, not the lowered one.
  Rebuild();
  EXPECT_EQ(Rows("select Hide || ':' || Score from TRecommendDomain where Domain = 'b.com'"),
            std::vector<std::string>{"-1:3.5"});
}

}  // namespace
}  // namespace corvane
