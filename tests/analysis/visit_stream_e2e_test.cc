// The classification of the visit stream through the exports: its debug
// lines, the rule of one second on counted visits, hosts that differ only
// in case, and visit counts a browser should not deliver. "Now" is
// 2024-03-10 20:00.

#include <algorithm>

#include "analysis/analysis_host.h"

namespace corvane::testing {
namespace {

class VisitStreamTest : public AnalysisTest {
 protected:
  VisitStreamTest() : m_logPath(m_dir.File("debug.log")), m_debug("CORVANE_DEBUG", m_logPath.c_str()) {}

  std::vector<std::string> Lines() const { return ClassificationLines(m_logPath); }

  std::string m_logPath;
  test::ScopedEnv m_debug;
};

TEST_F(VisitStreamTest, DebugLinesTellEveryDecisionOfTheWalkExample) {
  Visit("http://a.example.com/page.html", "2024-03-10 10:00:03.000");
  Visit("http://a.example.com/dir/", "2024-03-10 10:00:02.000");
  Visit("http://b.other.org/x.html", "2024-03-10 10:00:01.000");
  Visit("http://b.other.org/", "2024-03-10 10:00:00.000");
  ASSERT_EQ(Update(), S_OK);
  std::vector<std::string> lines = Lines();
  ASSERT_EQ(lines.size(), 14u);
  EXPECT_EQ(lines[0].rfind("Settings:[", 0), 0u) << lines[0];
  EXPECT_EQ(lines[0].substr(lines[0].size() - 9), "][Chrome]");
  const std::vector<std::string> kRest = {
      "Deal Date 154566 URLs",
      "CurrentURL:[http://a.example.com/page.html]",
      "SetLastURL:[http://a.example.com/page.html]",
      "CurrentURL:[http://a.example.com/dir/]",
      "[S,F-P]Cur->Last[LastURL:a.example.com/page.html]",
      "SetLastURL:[http://a.example.com/dir/]",
      "CurrentURL:[http://b.other.org/x.html]",
      "[P-F] AddLastURL[LastURL:a.example.com/dir]",
      "AddURL(a.example.com/dir) AddOK 0",
      "SetLastURL:[http://b.other.org/x.html]",
      "CurrentURL:[http://b.other.org/]",
      "[S,F-P]Cur->Last[LastURL:b.other.org/x.html]",
      "SetLastURL:[http://b.other.org/]",
      // The end of the date adds the bare host without a line.
  };
  EXPECT_EQ(std::vector<std::string>(lines.begin() + 1, lines.end()), kRest);
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
  std::vector<std::string> lines = Lines();
  EXPECT_EQ(std::count(lines.begin(), lines.end(), "AddURL(a.com/d1) Ignore(1s) 0X80004004"), 1);
  EXPECT_EQ(std::count(lines.begin(), lines.end(), "AddURL(a.com/d3) AddOK 0"), 1);
}

TEST_F(VisitStreamTest, TwoURLsOfOneHostHalfASecondApartCountOnce) {
  Visit("http://a.com/", "2024-03-10 10:00:00.500");
  Visit("http://a.com/dir/", "2024-03-10 10:00:00.000");
  Visit("http://z.org/", "2024-03-10 09:00:00.000");
  ASSERT_EQ(Update(), S_OK);
  EXPECT_EQ(Rows("select URL from TPreparedURL order by URL"), (std::vector<std::string>{"a.com", "z.org"}));
  std::vector<std::string> lines = Lines();
  EXPECT_EQ(std::count(lines.begin(), lines.end(), "AddURL(a.com/dir) Ignore(1s) 0X80004004"), 1);
}

TEST_F(VisitStreamTest, HostsDifferingInCaseAreOneHostForPairsAndTwoForTheSecondRule) {
  // A file page, then (older) the other-case host's folder: S,F-P drops it.
  Visit("http://CASE.com/a.html", "2024-03-10 11:00:00.000");
  Visit("http://case.com/dir/", "2024-03-10 10:59:59.000");
  // Two folder pages 300 ms apart on hosts differing in case: one host for
  // the pair (S,P-P), two hosts for the rule, so both are counted.
  Visit("http://MIX.com/x/", "2024-03-10 10:00:00.300");
  Visit("http://mix.com/y/", "2024-03-10 10:00:00.000");
  Visit("http://z.org/", "2024-03-10 09:00:00.000");
  ASSERT_EQ(Update(), S_OK);
  EXPECT_EQ(Rows("select URL from TPreparedURL order by URL"),
            (std::vector<std::string>{"MIX.com/x", "case.com/dir", "mix.com/y", "z.org"}));
  std::vector<std::string> lines = Lines();
  EXPECT_EQ(std::count(lines.begin(), lines.end(), "[S,F-P]Cur->Last[LastURL:CASE.com/a.html]"), 1);
  EXPECT_EQ(std::count(lines.begin(), lines.end(), "[S,P-P] AddLastURL[LastURL:MIX.com/x]"), 1);
  EXPECT_EQ(std::count(lines.begin(), lines.end(), "AddURL(mix.com/y) AddOK 0"), 1);
}

TEST_F(VisitStreamTest, UntitledVisitsAreNeverCountedOnTheNormalPath) {
  // An untitled page is no Last: nothing is decided against the row after
  // it, and it is not added at the end of its date.
  Visit("http://titled.com/", "2024-03-10 10:00:02.000");
  Visit("http://untitled.com/", "2024-03-10 10:00:01.000", 1, "");
  Visit("http://other.com/", "2024-03-09 10:00:00.000", 1, "");
  ASSERT_EQ(Update(), S_OK);
  EXPECT_EQ(Rows("select URL from TPreparedURL"), std::vector<std::string>{"titled.com"});
}

TEST_F(VisitStreamTest, CountsBelowOneCountOnceAndHugeCountsWrapWithoutHarm) {
  Visit("http://zero.com/", "2024-03-10 10:00:00.000", 0);
  Visit("http://negative.com/", "2024-03-10 09:00:00.000", -5);
  // A hostile count on two days: the sums wrap as 32-bit integers do.
  Visit("http://huge.com/", "2024-03-09 10:00:00.000", 2147483647);
  Visit("http://huge.com/", "2024-03-08 10:00:00.000", 2147483647);
  ASSERT_EQ(Update(), S_OK);
  EXPECT_EQ(Rows("select URL, VisitCount from TPreparedURL where DayIndex = 0 order by URL"),
            (std::vector<std::string>{"negative.com|1", "zero.com|1"}));
  // A total below the minimum of recent visits leaves j1 for h2; the score
  // is (2 x 50 - 2) x 2.0.
  EXPECT_EQ(Scalar("select VisitCount || ' ' || Score from h2 where URL = 'huge.com'"), "-2 196");
  EXPECT_EQ(Rows("select URL from j1 order by URL"), (std::vector<std::string>{"negative.com", "zero.com"}));
}

}  // namespace
}  // namespace corvane::testing
