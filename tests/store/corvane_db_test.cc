#include "store/corvane_db.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>

#include "common/utf.h"
#include "store/schema.h"
#include "support/test_host.h"

namespace corvane {
namespace {

class CorvaneDBTest : public ::testing::Test {
 protected:
  CorvaneDBTest() : m_appData("CORVANE_APPDATA", m_dir.Path().c_str()) {
    EXPECT_EQ(m_db.Open(FromUtf8(m_dir.File("db.sqlite")), false), S_OK);
  }
  bool InTransaction() { return sqlite3_get_autocommit(m_db.Handle()) == 0; }
  int32_t Count(const char16_t* sql) {
    StatementPtr stmt = m_db.Prepare(sql);
    return stmt && stmt->Step() ? stmt->ColumnInt(0) : -1;
  }

  test::TempDir m_dir;
  test::ScopedEnv m_appData;
  CCorvaneDB m_db;
};

TEST_F(CorvaneDBTest, OpenTwiceReportsAlreadyOpenAndReopenEmptiesShownDomains) {
  m_db.m_mapShownDomains[u"example.com"] = 1;
  EXPECT_EQ(m_db.Open(FromUtf8(m_dir.File("db.sqlite")), false), S_FALSE);
  EXPECT_EQ(m_db.m_mapShownDomains.size(), 1u);
  EXPECT_EQ(m_db.Open(FromUtf8(m_dir.File("db.sqlite")), true), S_OK);
  EXPECT_TRUE(m_db.m_mapShownDomains.empty());
  EXPECT_EQ(m_db.Close(), S_OK);
  EXPECT_EQ(m_db.Close(), S_FALSE);
}

TEST_F(CorvaneDBTest, NestingPairIssuesOneBeginAndCommitsAtTheLastEnd) {
  EXPECT_TRUE(m_db.BeginTransaction());
  EXPECT_TRUE(InTransaction());
  EXPECT_TRUE(m_db.BeginTransaction());
  EXPECT_TRUE(m_db.EndTransaction());
  EXPECT_TRUE(InTransaction());
  EXPECT_TRUE(m_db.EndTransaction());
  EXPECT_FALSE(InTransaction());
  // A plain Commit inside the pair ends the transaction; the last End then
  // fails to commit, which is only reported.
  EXPECT_TRUE(m_db.BeginTransaction());
  EXPECT_TRUE(m_db.Commit());
  EXPECT_FALSE(m_db.EndTransaction());
  EXPECT_TRUE(m_db.BeginTransaction());
  EXPECT_TRUE(m_db.EndTransaction());
}

// Counts the "begin" and "commit" statements that reach the connection.
class StatementCounter {
 public:
  explicit StatementCounter(sqlite3* db) : m_db(db) { sqlite3_trace_v2(db, SQLITE_TRACE_STMT, &Trace, this); }
  ~StatementCounter() { sqlite3_trace_v2(m_db, 0, nullptr, nullptr); }
  StatementCounter(const StatementCounter&) = delete;
  StatementCounter& operator=(const StatementCounter&) = delete;
  int begins = 0;
  int commits = 0;

 private:
  static int Trace(unsigned, void* context, void*, void* sql) {
    auto* self = static_cast<StatementCounter*>(context);
    std::string text = static_cast<const char*>(sql);
    if (text == "begin") ++self->begins;
    if (text == "commit") ++self->commits;
    return 0;
  }
  sqlite3* m_db;
};

// Whether the nesting count is 0: a pair then issues its own begin and
// commit, and leaves no transaction open.
void ExpectPairBeginsAndCommits(CCorvaneDB* db) {
  StatementCounter counter(db->Handle());
  EXPECT_TRUE(db->BeginTransaction());
  EXPECT_EQ(sqlite3_get_autocommit(db->Handle()), 0);
  EXPECT_TRUE(db->EndTransaction());
  EXPECT_EQ(sqlite3_get_autocommit(db->Handle()), 1);
  EXPECT_EQ(counter.begins, 1);
  EXPECT_EQ(counter.commits, 1);
}

TEST_F(CorvaneDBTest, FailedBeginLeavesTheNestingCountAtZero) {
  // A plain transaction is open, so the pair's "begin" fails.
  ASSERT_TRUE(m_db.Begin());
  EXPECT_FALSE(m_db.BeginTransaction());
  ASSERT_TRUE(m_db.Commit());
  ExpectPairBeginsAndCommits(&m_db);
}

// These writers ended a pair whose begin had failed, which took the count to
// -1 for good: no later pair began or committed again.
TEST_F(CorvaneDBTest, WritersWhoseBeginFailedDoNotEndThePair) {
  ASSERT_TRUE(m_db.Exec(schema::kCreateRecommendURL));
  const HideMap marks = {{u"example.com", 1}};
  PreparedMap prepared;
  prepared[u"example.com/"].Name = u"Example";
  prepared[u"example.com/"].VisitTime = u"2024.03.05 2 09:00:00.000";
  const std::pair<const char*, std::function<void()>> writers[] = {
      {"ReapplyHiddenRecommendDomains", [&] { static_cast<void>(m_db.ReapplyHiddenRecommendDomains(marks)); }},
      {"ReapplyHiddenSubDomains", [&] { static_cast<void>(m_db.ReapplyHiddenSubDomains(marks)); }},
      {"ReapplyHiddenRecommendURLs", [&] { static_cast<void>(m_db.ReapplyHiddenRecommendURLs(marks, 0.7f)); }},
      {"BuildRecommendURLsFromMap", [&] { static_cast<void>(m_db.BuildRecommendURLsFromMap(prepared)); }},
  };
  for (const auto& [name, write] : writers) {
    SCOPED_TRACE(name);
    ASSERT_TRUE(m_db.Begin());
    write();
    ASSERT_TRUE(m_db.Commit());
    ExpectPairBeginsAndCommits(&m_db);
  }
  // The table was still built without a transaction of its own.
  EXPECT_EQ(Count(u"select count(*) from TRecommendURL"), 1);
}

TEST_F(CorvaneDBTest, OpeningAnExistingFileChangesNoData) {
  ASSERT_TRUE(m_db.Exec(u"insert into TFocusURL(Name, URL) values('a', 'http://a/')"));
  ASSERT_TRUE(m_db.Exec(u"insert into THistory values(null, 'n', 'http://h/', 3, '2024.03.05 2 09:00:00.000', 154561, 1, 2)"));
  auto snapshot = [this] {
    std::u16string rows;
    for (const char16_t* sql : {u"select ID || Name || URL from TFocusURL",
                                u"select HID || Name || URL || VisitCount || VisitTime || VisitDate || HideDate || Browser "
                                u"from THistory",
                                u"select group_concat(name || sql) from (select * from sqlite_master order by name)"}) {
      StatementPtr stmt = m_db.Prepare(sql);
      while (stmt && stmt->Step()) rows += stmt->ColumnText16(0) + u"\n";
    }
    return rows;
  };
  const std::u16string before = snapshot();
  ASSERT_EQ(m_db.Close(), S_OK);
  ASSERT_EQ(m_db.Open(FromUtf8(m_dir.File("db.sqlite")), false), S_OK);
  EXPECT_EQ(snapshot(), before);
  EXPECT_EQ(Count(u"select count(*) from THistory"), 1);
}

TEST_F(CorvaneDBTest, CreateIndexOfThreeColumnsListsThemInOrder) {
  ASSERT_TRUE(m_db.Exec(u"drop index if exists TFavorite_URL_Name_Path"));
  ASSERT_EQ(m_db.CreateIndex(u"TFavorite", u"URL", u"Name", u"Path"), S_OK);
  StatementPtr stmt = m_db.Prepare(u"select name from pragma_index_info('TFavorite_URL_Name_Path') order by seqno");
  std::u16string columns;
  while (stmt && stmt->Step()) columns += (columns.empty() ? u"" : u",") + stmt->ColumnText16(0);
  EXPECT_EQ(columns, u"URL,Name,Path");
  // The second column alone, with the third left out.
  ASSERT_EQ(m_db.CreateIndex(u"TFavorite", u"Name", u"Path"), S_OK);
  stmt = m_db.Prepare(u"select name from pragma_index_info('TFavorite_Name_Path') order by seqno");
  columns.clear();
  while (stmt && stmt->Step()) columns += (columns.empty() ? u"" : u",") + stmt->ColumnText16(0);
  EXPECT_EQ(columns, u"Name,Path");
}

TEST_F(CorvaneDBTest, ExecuteOfSelectWithoutRowFailsWithDone) {
  StatementPtr select = m_db.Prepare(u"select URL from THistory");
  ASSERT_TRUE(select);
  EXPECT_FALSE(select->Execute());
  EXPECT_EQ(LastSqliteError().Code(), SQLITE_DONE);
  // An insert whose quoted value holds the word is taken for a select too.
  StatementPtr insert = m_db.Prepare(u"insert into TFocusURL(Name, URL) values('Select', 'x')");
  ASSERT_TRUE(insert);
  EXPECT_FALSE(insert->Execute());
  EXPECT_EQ(Count(u"select count(*) from TFocusURL"), 1);
}

TEST_F(CorvaneDBTest, PrepareOfNothingKeepsTheLastErrorAndStepResetsAtTheEnd) {
  EXPECT_FALSE(m_db.Prepare(u"select * from NoSuchTable"));
  int32_t code = LastSqliteError().Code();
  EXPECT_NE(code, 0);
  EXPECT_FALSE(m_db.Prepare(u""));
  EXPECT_EQ(LastSqliteError().Code(), code);

  ASSERT_TRUE(m_db.Exec(u"insert into TFocusURL(Name, URL) values('a', 'b')"));
  StatementPtr stmt = m_db.Prepare(u"select Name, URL, ID from TFocusURL");
  ASSERT_TRUE(stmt);
  EXPECT_TRUE(stmt->Step());
  EXPECT_FALSE(stmt->Step());
  EXPECT_TRUE(stmt->Step());  // reset by the end of the rows
  EXPECT_FALSE(stmt->BindInt(5, 1));
}

TEST_F(CorvaneDBTest, ClearTableRestartsNumberingAndFailsOnMissingTable) {
  ASSERT_TRUE(m_db.Exec(u"insert into TFocusURL(Name, URL) values('a', 'b')"));
  ASSERT_TRUE(m_db.Exec(u"insert into TFocusURL(Name, URL) values('c', 'd')"));
  EXPECT_EQ(m_db.ClearTable(schema::kFocusURL), S_OK);
  ASSERT_TRUE(m_db.Exec(u"insert into TFocusURL(Name, URL) values('e', 'f')"));
  EXPECT_EQ(Count(u"select ID from TFocusURL"), 1);
  EXPECT_EQ(m_db.ClearTable(u"NoSuchTable"), E_FAIL);
}

TEST_F(CorvaneDBTest, TableStepsAndCounts) {
  EXPECT_EQ(m_db.TableExists(u"TRecommendURL"), S_FALSE);
  EXPECT_EQ(m_db.CreateTableIfMissing(u"TRecommendURL", schema::kCreateRecommendURL), S_OK);
  EXPECT_EQ(m_db.TableExists(u"TRecommendURL"), S_OK);
  EXPECT_EQ(m_db.DropTable(nullptr), E_INVALIDARG);
  EXPECT_EQ(m_db.CreateIndex(nullptr, u"URL"), E_INVALIDARG);
  EXPECT_EQ(m_db.CreateIndex(u"THistory", u"URL"), E_FAIL);  // exists since Open

  m_db.RecreateTable(schema::kCreateETableTemplate, u"[e2]");
  m_db.RecreateTable(schema::kCreateETableTemplate, u"[e3]");
  ASSERT_TRUE(m_db.Exec(u"insert into e2(URL) values('a'),('b'),('b'),('c')"));
  ASSERT_TRUE(m_db.Exec(u"insert into e3(URL) values('b'),('d')"));
  int32_t count = 0, overlap = 0;
  EXPECT_EQ(m_db.CountDistinctURLs(u"[e2]", &count), S_OK);
  EXPECT_EQ(count, 3);
  EXPECT_EQ(m_db.CountURLsIn(u"[e3]", u"[e2]", &overlap, &count), 3);
  EXPECT_EQ(overlap, 1);
  EXPECT_EQ(count, 3);
  // Without the container only the total works; without either, nothing.
  EXPECT_EQ(m_db.CountURLsIn(u"H1", u"[e2]", &overlap, &count), 1);
  EXPECT_EQ(overlap, 0);
  EXPECT_EQ(m_db.CountURLsIn(u"H1", u"H1", &overlap, &count), E_FAIL);
}

TEST_F(CorvaneDBTest, ConfigKeys) {
  std::u16string value;
  EXPECT_EQ(m_db.GetConfig(u"Missing", &value, u""), E_FAIL);
  EXPECT_EQ(value, u"");
  EXPECT_EQ(m_db.GetConfig(u"Missing", &value, u"dflt"), S_OK);
  EXPECT_EQ(value, u"dflt");
  EXPECT_EQ(m_db.SetConfigInt(u"H2", -1), S_OK);
  EXPECT_EQ(m_db.GetConfig(u"H2", &value, u""), S_OK);
  EXPECT_EQ(value, u"-1");
  EXPECT_EQ(m_db.SetConfig(u"H2", nullptr), S_OK);
  EXPECT_EQ(m_db.GetConfig(u"H2", &value, u""), E_FAIL);
  EXPECT_EQ(m_db.SetConfig(u"Long", std::u16string(300, u'7')), S_OK);
  EXPECT_EQ(m_db.GetConfig(u"Long", &value, u""), S_OK);
  EXPECT_EQ(value.size(), 259u);
}

TEST(SqlTextTest, QuotingAndIds) {
  EXPECT_EQ(SqlQuote(u"it's"), u"'it''s'");
  EXPECT_EQ(FillTemplate(u"drop table %s; -- %s", u"[e2]"), u"drop table [e2]; -- [e2]");
  EXPECT_TRUE(IsDecimalId(u"42"));
  EXPECT_FALSE(IsDecimalId(u""));
  EXPECT_FALSE(IsDecimalId(u"4 2"));
  EXPECT_FALSE(IsDecimalId(u"1;drop"));
  EXPECT_FALSE(IsDecimalId(std::u16string(30, u'9')));
}

}  // namespace
}  // namespace corvane
