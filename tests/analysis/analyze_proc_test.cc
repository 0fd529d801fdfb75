// The classification and the IE-only path on a database of their own: an
// empty or missing history, damaged rows, and the IE snapshot summed across
// dates.

#include "analysis/often_table_builder.h"
#include "analysis/update_driver.h"
#include "settings/score_settings.h"
#include "settings/setting_parse.h"
#include "store/db_fixture.h"

namespace corvane::testing {
namespace {

class AnalyzeProcTest : public DBTest {
 protected:
  std::string ScoredTableCounts() {
    std::string counts;
    for (const char* table : {"e2", "e3", "j1", "h2", "z"}) counts += Scalar(std::string("select count(*) from ") + table);
    return counts;
  }

  CScoreSettings m_settings;
  CUpdateDriver m_driver{&m_db, &m_settings};
};

// An empty history still builds every scored table, empty; a huge span in
// the settings costs nothing without visits.
TEST_F(AnalyzeProcTest, EmptyHistoryBuildsEveryScoredTableEmptyWhateverTheSpan) {
  CSettingParse saver(nullptr);
  ASSERT_GE(saver.SaveSetting(u"Name@Wide|Default@true|Ver@1|Score@"
                              u"{0,2000000000,50,1,130,2.0,7,{10,2,7,7,1,15,15},{0,0,0,0,0,0,0,0}};"
                              u"|Setting@{7,{7,3}}",
                              1),
            kSettingInForce);
  m_settings.Reload();
  ASSERT_EQ(m_settings.GetMaxDays(), 2000000000u);
  Exec("create table j1(x); insert into j1 values(1);");
  EXPECT_EQ(m_driver.AnalyzeProc(2), S_OK);
  EXPECT_EQ(Scalar("select count(*) from TPreparedURL") + ScoredTableCounts(), "000000");
  // Recreated with the columns of the scored tables.
  EXPECT_EQ(Scalar("select count(*) from pragma_table_info('j1') where name = 'Score'"), "1");
  // With one visit the span is that of the rows: one day.
  Exec("insert into THistory values(null, 'N', 'http://a.com/', 2, '2024.03.10 0 10:00:00.000', 154566, 0, 2);");
  EXPECT_EQ(m_driver.AnalyzeProc(2), S_OK);
  EXPECT_EQ(Scalar("select URL, Score from j1") + " " + Scalar("select URL, VisitCount from e2"), "a.com|104 a.com|2");
}

TEST_F(AnalyzeProcTest, HostileDayIndexesAndCountsBuildNothingAndNeverOverflow) {
  Exec("insert into TPreparedURL values(2147483647, 'N', 'a.com', 'http://a.com/', 2147483647, "
       "  '2024.03.10 0 10:00:00.000', 1), (-5, 'N', 'a.com', 'http://a.com/', 2147483647, "
       "  '2024.03.10 0 10:00:00.000', 1), (3, 'N', '', 'http://a.com/', 1, 'x', 1);");
  COftenTableBuilder builder(&m_db, &m_settings);
  builder.LoadParameters();
  URLDayStatMap map;
  builder.CollectDayStats(&m_db, u"TPreparedURL", &map);
  ASSERT_EQ(map.stats.size(), 1u);
  EXPECT_EQ(map.stats.at(u"a.com").Total(), -2);
  builder.BuildOftenTables();
  EXPECT_EQ(ScoredTableCounts(), "00000");
}

TEST_F(AnalyzeProcTest, WithoutAHistoryTableOnlyThePreparedRowsAreGone) {
  Exec("insert into TPreparedURL values(0, 'N', 'a.com', 'http://a.com/', 1, '2024.03.10 0 10:00:00.000', 1);"
       "drop table THistory;");
  EXPECT_EQ(m_driver.AnalyzeProc(2), E_FAIL);
  EXPECT_EQ(Scalar("select count(*) from TPreparedURL") + Scalar("select count(*) from sqlite_master where name = 'h2'"),
            "00");
}

TEST_F(AnalyzeProcTest, IEOnlyPathWithAnEmptySnapshotKeepsTheOldRecommendations) {
  Exec("create table TRecommendURL(Name TEXT,URL TEXT,FixedURL TEXT,LastVisitTime INTEGER,Domain TEXT,"
       "  MainDomain TEXT,Weight INTEGER,Hide INTEGER,VisitCount INTEGER,AvgVisitCount INTEGER);"
       "insert into TRecommendURL values('Old','http://old/','old',0,'old','old',5,0,1,0);");
  EXPECT_EQ(m_driver.AnalyzeIEOnly(), S_FALSE);
  EXPECT_EQ(Rows("select Name from TRecommendURL"), std::vector<std::string>{"Old"});
  Exec("drop table TIEHistory;");
  EXPECT_EQ(m_driver.AnalyzeIEOnly(), E_FAIL);
}

TEST_F(AnalyzeProcTest, IEOnlyPathCountsTwoVisitsOfADateAsOneDayAndWrapsHugeCounts) {
  Exec("insert into TIEHistory values(null, 'T', 'http://twice.com/', 3, '2024.03.09 6 12:00:00.000', 154565, 0, 0),"
       "  (null, 'T', 'http://twice.com/', 4, '2024.03.09 6 10:00:00.000', 154565, 0, 0),"
       "  (null, 'T', 'http://huge.com/', 2147483647, '2024.03.09 6 09:00:00.000', 154565, 0, 0),"
       "  (null, 'T', 'http://huge.com/', 2147483647, '2024.03.08 5 09:00:00.000', 154564, 0, 0)");
  ASSERT_EQ(m_driver.AnalyzeIEOnly(), S_OK);
  EXPECT_EQ(Rows("select FixedURL, VisitCount, AvgVisitCount from TRecommendURL order by FixedURL"),
            (std::vector<std::string>{"huge.com|-2|-1", "twice.com|7|7"}));
}

}  // namespace
}  // namespace corvane::testing
