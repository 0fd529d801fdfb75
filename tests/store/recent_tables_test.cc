// The recent tables from j1: white-listed hosts and rule-matched hosts as
// named domains, the rest as recent pages.

#include "store/db_fixture.h"
#include "store/schema.h"

namespace corvane::testing {
namespace {

class RecentTablesTest : public DBTest {
 protected:
  RecentTablesTest() {
    m_db.RecreateTable(schema::kCreateHTableTemplate, schema::kJ1);
    Exec("create table TNames(Domain TEXT,Name TEXT);");
  }

  void J1Row(const std::string& url, const std::string& host, const std::string& mainDomain, int score) {
    Exec("insert into j1 values('N', '" + url + "', 'http://" + url + "/', '" + mainDomain + "', '" + host +
         "', 100, 1, 1, " + std::to_string(score) + ")");
  }

  // All six steps, with "blog.<main>" hosts matched by the rule.
  void Build() {
    SubDomainTest rule = [](std::u16string_view, std::u16string_view host) { return host.substr(0, 5) == u"blog."; };
    EXPECT_EQ(m_db.BuildRecentHistory(), S_OK);
    EXPECT_EQ(m_db.BuildRecentMatch(rule), S_OK);
    static_cast<void>(m_db.BuildRecentDomainTemp());
    static_cast<void>(m_db.BuildRecentDomains());
    static_cast<void>(m_db.MergeRecentDomains());
    static_cast<void>(m_db.RestoreRecentHistory());
  }
};

TEST_F(RecentTablesTest, WhiteListedAndRuleMatchedHostsBecomeNamedDomains) {
  // An empty j1 builds empty tables.
  Build();
  for (const char* table : {"TRecentDomain", "TRecentHistory", "TRecentHistory_Match"}) {
    EXPECT_EQ(Scalar(std::string("select count(*) from ") + table), "0") << table;
  }
  J1Row("w.com/a", "w.com", "w.com", 10);
  J1Row("w.com/b", "w.com", "w.com", 5);
  J1Row("blog.x.com/p", "blog.x.com", "x.com", 7);
  J1Row("blog.y.com/p", "blog.y.com", "y.com", 3);  // matched, but absent from TNames
  J1Row("plain.org/p", "plain.org", "plain.org", 1);
  J1Row("bad.net/p", "bad.net", "bad.net", 50);
  Exec("insert into TWhiteList values('W', 'w.com', 'w.com', 'W site');"
       "insert into TNames values('blog.x.com', 'X blog');"
       "insert into TBlackList values('B', 'bad.net', 'bad.net', 'B');");
  Build();
  EXPECT_EQ(Rows("select Domain, Score, Name from TRecentDomain order by Domain"),
            (std::vector<std::string>{"blog.x.com|7|X blog", "w.com|15|W site"}));
  // Pages of a rule-matched host stay among the recent pages; those of a
  // white-listed host are represented by it.
  EXPECT_EQ(Rows("select FixedURL from TRecentHistory order by FixedURL"),
            (std::vector<std::string>{"blog.x.com/p", "blog.y.com/p", "plain.org/p"}));
}

}  // namespace
}  // namespace corvane::testing
