// The recommendation tables from h2 and z: domains, the outstanding-host
// flag, the sub-sites of a flagged main domain, and the host's hide marks
// across a rebuild.

#include <gtest/gtest.h>

#include "common/utf.h"
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

  void Rebuild() {
    HideMap urls;
    HRESULT saved = m_db.GetHiddenRecommendURLs(&urls);
    ASSERT_EQ(m_db.BuildRecommendURLs(), S_OK);
    ASSERT_EQ(m_db.BuildRecommendDomains(), S_OK);
    if (saved == 0) m_db.ReapplyHiddenRecommendURLs(urls, kHideFactor);
    static_cast<void>(m_db.MarkTopDomains());
    ASSERT_EQ(m_db.BuildZSTable(), S_OK);
    ASSERT_EQ(m_db.BuildSubDomains(), S_OK);
  }

  test::TempDir m_dir;
  test::ScopedEnv m_appData;
  CCorvaneDB m_db;
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
