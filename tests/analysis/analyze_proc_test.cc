// The classification on a database of its own: rows whose day indexes and
// counts no browser writes.

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

}  // namespace
}  // namespace corvane::testing
