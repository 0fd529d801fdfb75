// The IE-only path: TIEHistory summed across dates into TRecommendURL.

#include <gtest/gtest.h>

#include "analysis/update_driver.h"
#include "common/utf.h"
#include "settings/score_settings.h"
#include "store/corvane_db.h"
#include "support/test_host.h"

namespace corvane {
namespace {

class IEOnlyTest : public ::testing::Test {
 protected:
  IEOnlyTest()
      : m_appData("CORVANE_APPDATA", m_dir.Path().c_str()), m_now("CORVANE_TEST_NOW", "2024-03-10 20:00:00") {
    EXPECT_EQ(m_db.Open(FromUtf8(m_dir.File("db.sqlite")), false), S_OK);
  }

  void IERow(const std::u16string& url, const std::u16string& stamp, uint32_t day, int count) {
    StatementPtr insert = m_db.Prepare(u"insert into TIEHistory values(null, 'T', ?, ?, ?, ?, 0, 0)");
    ASSERT_TRUE(insert && insert->BindText16(0, url) && insert->BindInt(1, count) && insert->BindText16(2, stamp) &&
                insert->BindInt64(3, day) && insert->Execute());
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

TEST_F(IEOnlyTest, EmptySnapshotKeepsTheOldRecommendations) {
  ASSERT_TRUE(m_db.Exec(u"create table TRecommendURL(Name TEXT,URL TEXT,FixedURL TEXT,LastVisitTime INTEGER,Domain "
                        u"TEXT,MainDomain TEXT,Weight INTEGER,Hide INTEGER,VisitCount INTEGER,AvgVisitCount INTEGER);"
                        u"insert into TRecommendURL values('Old','http://old/','old',0,'old','old',5,0,1,0);"));
  CUpdateDriver driver(&m_db, &m_settings);
  EXPECT_EQ(driver.AnalyzeIEOnly(), S_FALSE);
  EXPECT_EQ(Scalar(u"select group_concat(Name) from TRecommendURL"), u"Old");
}

TEST_F(IEOnlyTest, VisitsOfOneURLAddUpAcrossDates) {
  IERow(u"http://www.site.com/", u"2024.03.10 0 09:00:00.000", 154566, 2);
  IERow(u"http://www.site.com/", u"2024.03.09 6 09:00:00.000", 154565, 1);
  IERow(u"http://www.site.com/", u"2024.03.08 5 09:00:00.000", 154564, 3);
  // Twice within a second on one host: the second is no visit.
  IERow(u"http://other.com/a", u"2024.03.10 0 10:00:00.500", 154566, 4);
  IERow(u"http://other.com/b", u"2024.03.10 0 10:00:00.000", 154566, 4);
  CUpdateDriver driver(&m_db, &m_settings);
  ASSERT_EQ(driver.AnalyzeIEOnly(), S_OK);
  EXPECT_EQ(Scalar(u"select URL || ' ' || VisitCount || ' ' || AvgVisitCount || ' ' || Weight || ' ' || Domain "
                   u"from TRecommendURL where FixedURL = 'site.com'"),
            u"http://www.site.com/ 6 2 0 site.com");
  // The newest visit's stamp stays the record's.
  EXPECT_EQ(Scalar(u"select LastVisitTime from TRecommendURL where FixedURL = 'site.com'"),
            FromUtf8(std::to_string(154566ULL * 864000000000ULL + 9ULL * 36000000000ULL)));
  EXPECT_EQ(Scalar(u"select count(*) from TRecommendURL where Domain = 'other.com'"), u"1");
}

TEST_F(IEOnlyTest, TwoVisitsOfADateAreOneDayAndHugeCountsWrap) {
  IERow(u"http://twice.com/", u"2024.03.09 6 12:00:00.000", 154565, 3);
  IERow(u"http://twice.com/", u"2024.03.09 6 10:00:00.000", 154565, 4);
  IERow(u"http://huge.com/", u"2024.03.09 6 09:00:00.000", 154565, 2147483647);
  IERow(u"http://huge.com/", u"2024.03.08 5 09:00:00.000", 154564, 2147483647);
  CUpdateDriver driver(&m_db, &m_settings);
  ASSERT_EQ(driver.AnalyzeIEOnly(), S_OK);
  EXPECT_EQ(Scalar(u"select VisitCount || ' ' || AvgVisitCount from TRecommendURL where FixedURL = 'twice.com'"),
            u"7 7");
  EXPECT_EQ(Scalar(u"select VisitCount || ' ' || AvgVisitCount from TRecommendURL where FixedURL = 'huge.com'"),
            u"-2 -1");
}

TEST_F(IEOnlyTest, WithoutTheSnapshotTableTheDatesCannotBeRead) {
  ASSERT_TRUE(m_db.Exec(u"drop table TIEHistory;"));
  CUpdateDriver driver(&m_db, &m_settings);
  EXPECT_EQ(driver.AnalyzeIEOnly(), E_FAIL);
}

}  // namespace
}  // namespace corvane
