// The classification on a database of its own: what it does with an empty
// or a missing history.

#include <gtest/gtest.h>

#include "analysis/often_table_builder.h"
#include "analysis/update_driver.h"
#include "common/utf.h"
#include "settings/score_settings.h"
#include "settings/setting_parse.h"
#include "store/corvane_db.h"
#include "support/test_host.h"

namespace corvane {
namespace {

class AnalyzeProcTest : public ::testing::Test {
 protected:
  AnalyzeProcTest()
      : m_appData("CORVANE_APPDATA", m_dir.Path().c_str()), m_now("CORVANE_TEST_NOW", "2024-03-10 20:00:00") {
    EXPECT_EQ(m_db.Open(FromUtf8(m_dir.File("db.sqlite")), false), S_OK);
  }

  std::u16string Scalar(const char16_t* sql) {
    StatementPtr stmt = m_db.Prepare(sql);
    return stmt && stmt->Step() ? stmt->ColumnText16(0) : u"<none>";
  }

  test::TempDir m_dir;
  test::ScopedEnv m_appData;
  test::ScopedEnv m_now;
  CCorvaneDB m_db;
  CScoreSettings m_settings;
};

TEST_F(AnalyzeProcTest, EmptyHistoryStillBuildsEveryScoredTableEmpty) {
  ASSERT_TRUE(m_db.Exec(u"create table j1(x); insert into j1 values(1);"));
  CUpdateDriver driver(&m_db, &m_settings);
  EXPECT_EQ(driver.AnalyzeProc(2), S_OK);
  EXPECT_EQ(Scalar(u"select count(*) from TPreparedURL"), u"0");
  for (const char16_t* table : {u"e2", u"e3", u"j1", u"h2", u"z"}) {
    EXPECT_EQ(Scalar((u"select count(*) from " + std::u16string(table)).c_str()), u"0") << ToUtf8(table);
  }
  // Recreated with the columns of the scored tables.
  EXPECT_EQ(Scalar(u"select count(*) from pragma_table_info('j1') where name = 'Score'"), u"1");
}

TEST_F(AnalyzeProcTest, AHugeSpanInTheSettingsCostsNothingWithoutVisits) {
  CSettingParse saver(nullptr);
  ASSERT_GE(saver.SaveSetting(u"Name@Wide|Default@true|Ver@1|Score@"
                              u"{0,2000000000,50,1,130,2.0,7,{10,2,7,7,1,15,15},{0,0,0,0,0,0,0,0}};"
                              u"|Setting@{7,{7,3}}",
                              1),
            kSettingInForce);
  m_settings.Reload();
  ASSERT_EQ(m_settings.GetMaxDays(), 2000000000u);
  CUpdateDriver driver(&m_db, &m_settings);
  EXPECT_EQ(driver.AnalyzeProc(2), S_OK);
  EXPECT_EQ(Scalar(u"select count(*) from e3"), u"0");
  // With one visit the span is that of the rows: one day.
  ASSERT_TRUE(m_db.Exec(u"insert into THistory values(null, 'N', 'http://a.com/', 2, "
                        u"'2024.03.10 0 10:00:00.000', 154566, 0, 2);"));
  EXPECT_EQ(driver.AnalyzeProc(2), S_OK);
  EXPECT_EQ(Scalar(u"select URL || ' ' || Score from j1"), u"a.com 104");
  EXPECT_EQ(Scalar(u"select URL || ' ' || VisitCount from e2"), u"a.com 2");
}

TEST_F(AnalyzeProcTest, DamagedPreparedRowsBuildNothingAndNeverOverflow) {
  ASSERT_TRUE(m_db.Exec(u"insert into TPreparedURL values(2147483647, 'N', 'a.com', 'http://a.com/', 2147483647, "
                        u"'2024.03.10 0 10:00:00.000', 1);"
                        u"insert into TPreparedURL values(-5, 'N', 'a.com', 'http://a.com/', 2147483647, "
                        u"'2024.03.10 0 10:00:00.000', 1);"
                        u"insert into TPreparedURL values(3, 'N', '', 'http://a.com/', 1, 'x', 1);"));
  COftenTableBuilder builder(&m_db, &m_settings);
  builder.LoadParameters();
  URLDayStatMap map;
  builder.CollectDayStats(&m_db, u"TPreparedURL", &map);
  ASSERT_EQ(map.stats.size(), 1u);
  EXPECT_EQ(map.stats.at(u"a.com").Total(), -2);
  builder.BuildOftenTables();
  for (const char16_t* table : {u"e2", u"e3", u"j1", u"h2", u"z"}) {
    EXPECT_EQ(Scalar((u"select count(*) from " + std::u16string(table)).c_str()), u"0") << ToUtf8(table);
  }
}

TEST_F(AnalyzeProcTest, WithoutAHistoryTableOnlyThePreparedRowsAreGone) {
  ASSERT_TRUE(m_db.Exec(u"insert into TPreparedURL values(0, 'N', 'a.com', 'http://a.com/', 1, "
                        u"'2024.03.10 0 10:00:00.000', 1);"
                        u"drop table THistory;"));
  CUpdateDriver driver(&m_db, &m_settings);
  EXPECT_EQ(driver.AnalyzeProc(2), E_FAIL);
  EXPECT_EQ(Scalar(u"select count(*) from TPreparedURL"), u"0");
  EXPECT_EQ(Scalar(u"select count(*) from sqlite_master where name = 'h2'"), u"0");
}

}  // namespace
}  // namespace corvane
