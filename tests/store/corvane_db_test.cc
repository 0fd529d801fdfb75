#include "store/corvane_db.h"

#include <gtest/gtest.h>

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
