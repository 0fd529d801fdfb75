// The rule of one second and the merging of a counted visit.

#include <gtest/gtest.h>

#include "analysis/update_driver.h"

namespace corvane {
namespace {

TEST(VisitRulesTest, RepeatsWithinASecondOfTheReferenceVisitOfTheSameHost) {
  // Visits 400 ms apart keep every third; hosts differing in case are two
  // hosts; an unreadable stamp is no repeat.
  const std::pair<const char16_t*, const char16_t*> kVisits[] = {
      {u"2024.03.10 0 10:00:02.400", u"a.com/x"}, {u"2024.03.10 0 10:00:02.000", u"a.com/x"},
      {u"2024.03.10 0 10:00:01.600", u"a.com/y"}, {u"2024.03.10 0 10:00:01.200", u"a.com/x"},
      {u"2024.03.10 0 10:00:00.800", u"a.com/x"}, {u"2024.03.10 0 10:00:00.400", u"a.com/x"},
      {u"2024.03.10 0 10:00:00.000", u"a.com/x"}, {u"2024.03.10 0 10:00:00.000", u"A.com/x"},
      {u"garbage", u"A.com/x"},
  };
  HostTimeMap hosts;
  std::vector<bool> repeats;
  for (const auto& [stamp, url] : kVisits) repeats.push_back(CUpdateDriver::IsRepeatVisit(stamp, url, &hosts));
  EXPECT_EQ(repeats, (std::vector<bool>{false, true, true, false, true, true, false, false, false}));
  EXPECT_EQ(hosts.size(), 2u);
}

}  // namespace
}  // namespace corvane
