// Day labels of the history listing.

#include "serving/date_groups.h"

#include <gtest/gtest.h>

namespace corvane {
namespace {

TEST(DayLabelTest, TodayYesterdayAndOtherDays) {
  EXPECT_EQ(FormatDayLabel(u"2014.03.05 3 10:00:00.000", 0), u"今天 2014年3月5日 星期三");
  EXPECT_EQ(FormatDayLabel(u"2014.03.04 2 10:00:00.000", -1), u"昨天 2014年3月4日 星期二");
  EXPECT_EQ(FormatDayLabel(u"2014.03.01 6 10:00:00.000", -4), u"2014年3月1日 星期六");
  // A day after today (a clock set back) gets the plain form.
  EXPECT_EQ(FormatDayLabel(u"2014.03.06 4 10:00:00.000", 1), u"2014年3月6日 星期四");
}

TEST(DayLabelTest, DamagedStamps) {
  EXPECT_EQ(FormatDayLabel(u"", 0), u"");
  EXPECT_EQ(FormatDayLabel(u"2014.03.05", 0), u"");
  EXPECT_EQ(FormatDayLabel(u"2014-03-05 3", 0), u"");
  // A weekday digit outside the table reads nothing beyond it.
  EXPECT_EQ(FormatDayLabel(u"2014.03.05 7 10:00:00.000", 5), u"2014年3月5日 星期");
  EXPECT_EQ(FormatDayLabel(u"2014.03.05 -1 10:00:00.000", 5), u"2014年3月5日 星期");
  EXPECT_EQ(FormatDayLabel(u"2014.03.05 32767 10:00:00.000", 5), u"2014年3月5日 星期");
}

}  // namespace
}  // namespace corvane
