// The database object's own steps: opening an existing file and the nesting
// transaction pair.

#include <functional>

#include "store/db_fixture.h"
#include "store/schema.h"

namespace corvane::testing {
namespace {

class CorvaneDBTest : public DBTest {
 protected:
  bool InTransaction() { return sqlite3_get_autocommit(m_db.Handle()) == 0; }
  // With the nesting count at 0, a pair issues its own begin and commit and
  // leaves no transaction open.
  void ExpectPairBeginsAndCommits();
};

// Counts the "begin" and "commit" statements that reach the connection.
struct StatementCounter {
  explicit StatementCounter(sqlite3* handle) : db(handle) { sqlite3_trace_v2(db, SQLITE_TRACE_STMT, &Trace, this); }
  ~StatementCounter() { sqlite3_trace_v2(db, 0, nullptr, nullptr); }
  static int Trace(unsigned, void* self, void*, void* sql) {
    const std::string text = static_cast<const char*>(sql);
    static_cast<StatementCounter*>(self)->begins += text == "begin";
    static_cast<StatementCounter*>(self)->commits += text == "commit";
    return 0;
  }
  sqlite3* db;
  int begins = 0;
  int commits = 0;
};

void CorvaneDBTest::ExpectPairBeginsAndCommits() {
  StatementCounter counter(m_db.Handle());
  EXPECT_TRUE(m_db.BeginTransaction() && InTransaction());
  EXPECT_TRUE(m_db.EndTransaction() && !InTransaction());
  EXPECT_EQ(std::to_string(counter.begins) + std::to_string(counter.commits), "11");
}

TEST_F(CorvaneDBTest, NestingPairIssuesOneBeginAndCommitsAtTheLastEnd) {
  {
    StatementCounter counter(m_db.Handle());
    EXPECT_TRUE(m_db.BeginTransaction() && m_db.BeginTransaction() && m_db.EndTransaction() && InTransaction());
    EXPECT_TRUE(m_db.EndTransaction() && !InTransaction());
    EXPECT_EQ(std::to_string(counter.begins) + std::to_string(counter.commits), "11");
  }
  // A plain Commit inside the pair ends the transaction; the last End then
  // fails to commit, which is only reported.
  EXPECT_TRUE(m_db.BeginTransaction() && m_db.Commit());
  EXPECT_FALSE(m_db.EndTransaction());
  ExpectPairBeginsAndCommits();
  // A plain transaction is open, so the pair's "begin" fails; the nesting
  // count stays at 0.
  ASSERT_TRUE(m_db.Begin());
  EXPECT_FALSE(m_db.BeginTransaction());
  ASSERT_TRUE(m_db.Commit());
  ExpectPairBeginsAndCommits();
}

// These writers ended a pair whose begin had failed, which took the count to
// -1 for good: no later pair began or committed again.
TEST_F(CorvaneDBTest, WritersWhoseBeginFailedDoNotEndThePair) {
  ASSERT_TRUE(m_db.Exec(schema::kCreateRecommendURL));
  const HideMap marks = {{u"example.com", 1}};
  PreparedMap prepared;
  prepared[u"example.com/"].Name = u"Example";
  prepared[u"example.com/"].VisitTime = u"2024.03.05 2 09:00:00.000";
  const std::function<void()> writers[] = {
      [&] { static_cast<void>(m_db.ReapplyHiddenRecommendDomains(marks)); },
      [&] { static_cast<void>(m_db.ReapplyHiddenSubDomains(marks)); },
      [&] { static_cast<void>(m_db.ReapplyHiddenRecommendURLs(marks, 0.7f)); },
      [&] { static_cast<void>(m_db.BuildRecommendURLsFromMap(prepared)); },
  };
  for (size_t i = 0; i < std::size(writers); ++i) {
    SCOPED_TRACE(i);
    ASSERT_TRUE(m_db.Begin());
    writers[i]();
    ASSERT_TRUE(m_db.Commit());
    ExpectPairBeginsAndCommits();
  }
  // The table was still built without a transaction of its own.
  EXPECT_EQ(Scalar("select count(*) from TRecommendURL"), "1");
}

TEST_F(CorvaneDBTest, OpeningAnExistingFileChangesNoData) {
  Exec("insert into TFocusURL(Name, URL) values('a', 'http://a/');"
       "insert into THistory values(null, 'n', 'http://h/', 3, '2024.03.05 2 09:00:00.000', 154561, 1, 2)");
  auto snapshot = [this] {
    std::vector<std::string> rows;
    for (const char* sql : {"select * from TFocusURL", "select * from THistory", "select name, sql from sqlite_master"}) {
      for (const std::string& row : Rows(std::string(sql) + " order by 1")) rows.push_back(row);
    }
    return rows;
  };
  const std::vector<std::string> before = snapshot();
  ASSERT_EQ(before.size(), 2u + Rows("select 1 from sqlite_master").size());
  ASSERT_EQ(m_db.Close(), S_OK);
  ASSERT_EQ(m_db.Open(FromUtf8(m_dir.File("db.sqlite")), false), S_OK);
  EXPECT_EQ(snapshot(), before);
}

}  // namespace
}  // namespace corvane::testing
