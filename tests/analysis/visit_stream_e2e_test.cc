// The classification of the visit stream through the exports: the pair
// decisions and the rule of one second on counted visits. Hosts that differ
// only in case are one host for the pair decisions (a row of the table
// below) and two for the rule of one second (visit_rules_test.cc).

#include <algorithm>

#include "intake/provider_host.h"

namespace corvane::testing {
namespace {

class VisitStreamTest : public ProviderTest {
 protected:
  int64_t LineCount(const std::string& line) const {
    std::vector<std::string> lines = ClassificationLines();
    return std::count(lines.begin(), lines.end(), line);
  }
};

// Each case is one date with two visits, Last five seconds after Cur; Cur
// is always counted at the end of its date. The line is the debug line of
// the decision, without its prefix.
struct PairCase {
  std::string last;
  std::string cur;
  bool lastCounted;
  std::string line;
};

// The fixed form of a URL as the cases spell them.
std::string Fixed(std::string url) {
  if (url.rfind("http://", 0) == 0) url = url.substr(7);
  return url.back() == '/' ? url.substr(0, url.size() - 1) : url;
}

TEST_F(VisitStreamTest, EveryRowOfThePairDecisionTable) {
  const PairCase kCases[] = {
      // same host, F-F: both dynamic, both plain, dynamic and plain
      {"http://s1.com/a?x", "http://s1.com/b?y", false, "[S,F-F,Dynamic(DD;NN)]Cur->Last[LastURL:s1.com/a?x]"},
      {"http://s2.com/a.html", "http://s2.com/b.html", false, "[S,F-F,Dynamic(DD;NN)]Cur->Last[LastURL:s2.com/a.html]"},
      {"http://s3.com/a?x", "http://s3.com/b.html", true, "[S,F-F,Dynamic(DN;ND)]Cur->Last[LastURL:s3.com/a?x]"},
      // same host, F-P, P-P, P-F
      {"http://s4.com/a.html", "http://s4.com/", false, "[S,F-P]Cur->Last[LastURL:s4.com/a.html]"},
      {"http://s5.com/dir/", "http://s5.com/", true, "[S,P-P] AddLastURL[LastURL:s5.com/dir]"},
      {"http://s6.com/", "http://s6.com/a.html", true, "[S,P-F] AddLastURL[LastURL:s6.com]"},
      // other hosts: P-P, P-F, F-P under one and under two main domains, F-F
      {"http://d1.com/", "http://d2.com/", true, "[P-P] AddLastURL[LastURL:d1.com]"},
      {"http://d3.com/", "http://d4.com/a.html", true, "[P-F] AddLastURL[LastURL:d3.com]"},
      {"http://www2.m1.com/a.html", "http://news.m1.com/", false, "[F-P,SameMainDomain]Cur->Last[LastURL:www2.m1.com/a.html]"},
      {"http://x.m2.com/a.html", "http://y.m3.com/", true, "[F-P,NotSameMainDomain] AddLastURL[LastURL:x.m2.com/a.html]"},
      {"http://d5.com/a.html", "http://d6.com/b.html", true, "[F-F] AddLastURL[LastURL:d5.com/a.html]"},
      // hosts differing in case are one host; an https bare host is a file page
      {"http://CASE.com/a.html", "http://case.com/", false, "[S,F-P]Cur->Last[LastURL:CASE.com/a.html]"},
      {"https://s7.com", "https://s7.com/b.html", false, "[S,F-F,Dynamic(DD;NN)]Cur->Last[LastURL:https://s7.com]"},
  };
  // One date per case, counting back from today across the end of February.
  int day = 10;
  for (const PairCase& pair : kCases) {
    Visit(pair.last, March(day) + " 10:00:05.000");
    Visit(pair.cur, March(day--) + " 10:00:00.000");
  }
  // One more date, where a URL is counted a second time: r.com is Last
  // twice, eight seconds apart, each time before another host's folder.
  Visit("http://r.com/", March(day) + " 10:00:10.000");
  Visit("http://q.com/", March(day) + " 10:00:05.000");
  Visit("http://r.com/", March(day) + " 10:00:02.000");
  Visit("http://q2.com/", March(day) + " 10:00:00.000");
  ASSERT_EQ(Update(), S_OK);
  for (const PairCase& pair : kCases) {
    SCOPED_TRACE(pair.last + " before " + pair.cur);
    EXPECT_EQ(LineCount(pair.line), 1);
    EXPECT_EQ(LineCount("AddURL(" + Fixed(pair.last) + ") AddOK 0"), pair.lastCounted ? 1 : 0);
    EXPECT_EQ(Scalar("select count(*) from TPreparedURL where URL = '" + Fixed(pair.last) + "'"),
              pair.lastCounted ? "1" : "0");
    EXPECT_EQ(Scalar("select count(*) from TPreparedURL where URL = '" + Fixed(pair.cur) + "'"), "1");
  }
  EXPECT_EQ(LineCount("[P-P] AddLastURL[LastURL:r.com]"), 2);
  EXPECT_EQ(LineCount("AddURL(r.com) AddOK 0"), 1);
  EXPECT_EQ(LineCount("AddURL(r.com) AddVisitCount 0X1"), 1);
  EXPECT_EQ(Scalar("select VisitCount from TPreparedURL where URL = 'r.com'"), "2");
  // Thirteen decisions and the three of the last date, nothing else.
  std::vector<std::string> lines = ClassificationLines();
  EXPECT_EQ(std::count_if(lines.begin(), lines.end(), [](const std::string& line) { return line[0] == '['; }), 16);
}

TEST_F(VisitStreamTest, CountedVisitsFourHundredMillisecondsApartKeepEveryThird) {
  // Folder pages of one host: each pair is S,P-P, so every visit reaches
  // the rule of one second. The reference time stands until a visit lies a
  // full second from it.
  const char* kTimes[] = {"02.400", "02.000", "01.600", "01.200", "00.800", "00.400", "00.000"};
  for (int i = 0; i < 7; ++i) Visit("http://a.com/d" + std::to_string(i) + "/", std::string("2024-03-10 10:00:") + kTimes[i]);
  ASSERT_EQ(Update(), S_OK);
  EXPECT_EQ(Rows("select URL from TPreparedURL order by URL"),
            (std::vector<std::string>{"a.com/d0", "a.com/d3", "a.com/d6"}));
  EXPECT_EQ(LineCount("AddURL(a.com/d1) Ignore(1s) 0X80004004"), 1);
  EXPECT_EQ(LineCount("AddURL(a.com/d3) AddOK 0"), 1);
}

}  // namespace
}  // namespace corvane::testing
