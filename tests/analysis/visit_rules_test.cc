// The rule of one second and the merging of a counted visit.

#include <gtest/gtest.h>

#include "analysis/update_driver.h"

namespace corvane {
namespace {

TEST(VisitRulesTest, VisitsFourHundredMillisecondsApartKeepEveryThird) {
  HostTimeMap hosts;
  std::vector<bool> repeats;
  const char16_t* kStamps[] = {u"2024.03.10 0 10:00:02.400", u"2024.03.10 0 10:00:02.000", u"2024.03.10 0 10:00:01.600",
                               u"2024.03.10 0 10:00:01.200", u"2024.03.10 0 10:00:00.800", u"2024.03.10 0 10:00:00.400",
                               u"2024.03.10 0 10:00:00.000"};
  for (const char16_t* stamp : kStamps) repeats.push_back(CUpdateDriver::IsRepeatVisit(stamp, u"a.com/x", &hosts));
  EXPECT_EQ(repeats, (std::vector<bool>{false, true, true, false, true, true, false}));
}

TEST(VisitRulesTest, HostsDifferingInCaseAndUnreadableStampsAreNoRepeats) {
  HostTimeMap hosts;
  EXPECT_FALSE(CUpdateDriver::IsRepeatVisit(u"2024.03.10 0 10:00:00.000", u"A.com/x", &hosts));
  EXPECT_FALSE(CUpdateDriver::IsRepeatVisit(u"2024.03.10 0 10:00:00.100", u"a.com/y", &hosts));
  EXPECT_TRUE(CUpdateDriver::IsRepeatVisit(u"2024.03.10 0 10:00:00.200", u"a.com/z", &hosts));
  EXPECT_FALSE(CUpdateDriver::IsRepeatVisit(u"garbage", u"a.com/z", &hosts));
  EXPECT_EQ(hosts.size(), 2u);
}

TEST(VisitRulesTest, AddLastURLAddsMergesAndIgnoresRepeats) {
  PreparedMap map;
  HostTimeMap hosts;
  CPreparedURL last;
  last.Name = u"Page";
  last.fixedURL = u"a.com/p";
  last.VisitTime = u"2024.03.10 0 10:00:05.000";
  last.rowVisitCount = last.VisitCount = 2;
  EXPECT_EQ(CUpdateDriver::AddLastURL(0, last, &map, &hosts), 0);
  last.VisitTime = u"2024.03.10 0 10:00:04.500";
  last.fixedURL = u"a.com/q";
  EXPECT_EQ(CUpdateDriver::AddLastURL(0, last, &map, &hosts), E_ABORT);
  last.fixedURL = u"a.com/p";
  last.VisitTime = u"2024.03.10 0 10:00:00.000";
  last.rowVisitCount = 3;
  EXPECT_EQ(CUpdateDriver::AddLastURL(0, last, &map, &hosts), 1);
  const CPreparedURL& record = map.at(u"a.com/p");
  EXPECT_EQ(record.VisitCount, 5);
  EXPECT_EQ(record.mergedRows, 1);
  EXPECT_EQ(record.dayCount, 1);
  EXPECT_EQ(record.VisitTime, u"2024.03.10 0 10:00:00.000");
}

}  // namespace
}  // namespace corvane
