// The analysis through the exports: deliveries of the scripted extraction
// library, one forced update, and the tables it leaves. "Now" is
// 2024-03-10 20:00.

#include <algorithm>

#include "analysis/analysis_host.h"

namespace corvane::testing {
namespace {

TEST_F(AnalysisTest, WalkInsideASiteCountsOnlyItsEntryPage) {
  // Newest first: a file page and a folder page on one host, then a file
  // page and the bare address of a host under another main domain.
  Visit("http://a.example.com/page.html", "2024-03-10 10:00:03.000");
  Visit("http://a.example.com/dir/", "2024-03-10 10:00:02.000");
  Visit("http://b.other.org/x.html", "2024-03-10 10:00:01.000");
  Visit("http://b.other.org/", "2024-03-10 10:00:00.000");
  ASSERT_EQ(Update(), S_OK);
  EXPECT_EQ(Rows("select DayIndex, URL, OriginalURL from TPreparedURL"),
            (std::vector<std::string>{"0|a.example.com/dir|http://a.example.com/dir/", "0|b.other.org|http://b.other.org/"}));
}

// Each case is one date with two visits, Last five seconds after Cur; Cur
// is always counted at the end of its date. The line is the debug line of
// the decision, without its prefix.
struct PairCase {
  const char* last;
  const char* cur;
  bool lastCounted;
  const char* line;
};

// The fixed form of a URL as the tests spell them.
std::string Fixed(std::string url) {
  if (url.rfind("http://", 0) == 0) url = url.substr(7);
  if (url.back() == '/') url.pop_back();
  return url;
}

TEST_F(AnalysisTest, EveryRowOfThePairDecisionTable) {
  test::ScopedEnv debug("CORVANE_DEBUG", m_dir.File("debug.log").c_str());
  const PairCase kCases[] = {
      // same host, F-F, both dynamic
      {"http://s1.com/a?x", "http://s1.com/b?y", false, "[S,F-F,Dynamic(DD;NN)]Cur->Last[LastURL:s1.com/a?x]"},
      // same host, F-F, both plain
      {"http://s2.com/a.html", "http://s2.com/b.html", false, "[S,F-F,Dynamic(DD;NN)]Cur->Last[LastURL:s2.com/a.html]"},
      // same host, F-F, dynamic and plain
      {"http://s3.com/a?x", "http://s3.com/b.html", true, "[S,F-F,Dynamic(DN;ND)]Cur->Last[LastURL:s3.com/a?x]"},
      // same host, F-P
      {"http://s4.com/a.html", "http://s4.com/", false, "[S,F-P]Cur->Last[LastURL:s4.com/a.html]"},
      // same host, P-P
      {"http://s5.com/dir/", "http://s5.com/", true, "[S,P-P] AddLastURL[LastURL:s5.com/dir]"},
      // same host, P-F
      {"http://s6.com/", "http://s6.com/a.html", true, "[S,P-F] AddLastURL[LastURL:s6.com]"},
      // other host, P-P
      {"http://d1.com/", "http://d2.com/", true, "[P-P] AddLastURL[LastURL:d1.com]"},
      // other host, P-F
      {"http://d3.com/", "http://d4.com/a.html", true, "[P-F] AddLastURL[LastURL:d3.com]"},
      // F-P under one main domain
      {"http://www2.m1.com/a.html", "http://news.m1.com/", false,
       "[F-P,SameMainDomain]Cur->Last[LastURL:www2.m1.com/a.html]"},
      // F-P under two main domains
      {"http://x.m2.com/a.html", "http://y.m3.com/", true,
       "[F-P,NotSameMainDomain] AddLastURL[LastURL:x.m2.com/a.html]"},
      // other host, F-F
      {"http://d5.com/a.html", "http://d6.com/b.html", true, "[F-F] AddLastURL[LastURL:d5.com/a.html]"},
      // hosts differing in case are one host
      {"http://CASE.com/a.html", "http://case.com/", false, "[S,F-P]Cur->Last[LastURL:CASE.com/a.html]"},
      // an https bare host is a file page
      {"https://s7.com", "https://s7.com/b.html", false, "[S,F-F,Dynamic(DD;NN)]Cur->Last[LastURL:https://s7.com]"},
  };
  // One date per case, counting back from today across the end of February.
  int day = 10;
  auto nextDate = [&day]() {
    std::string date = day > 0 ? "2024-03-" + std::string(day < 10 ? "0" : "") + std::to_string(day)
                               : "2024-02-" + std::to_string(29 + day);
    --day;
    return date;
  };
  for (const PairCase& pair : kCases) {
    std::string date = nextDate();
    Visit(pair.last, date + " 10:00:05.000");
    Visit(pair.cur, date + " 10:00:00.000");
  }
  // One more date, where a URL is counted a second time: r.com is Last
  // twice, eight seconds apart, each time before another host's folder.
  std::string date = nextDate();
  Visit("http://r.com/", date + " 10:00:10.000");
  Visit("http://q.com/", date + " 10:00:05.000");
  Visit("http://r.com/", date + " 10:00:02.000");
  Visit("http://q2.com/", date + " 10:00:00.000");
  ASSERT_EQ(Update(), S_OK);

  std::vector<std::string> lines = ClassificationLines(m_dir.File("debug.log"));
  auto count = [&lines](const std::string& line) { return std::count(lines.begin(), lines.end(), line); };
  for (const PairCase& pair : kCases) {
    std::string last = Fixed(pair.last);
    EXPECT_EQ(count(pair.line), 1) << pair.last << " before " << pair.cur;
    EXPECT_EQ(count("AddURL(" + last + ") AddOK 0"), pair.lastCounted ? 1 : 0) << pair.last;
    EXPECT_EQ(Scalar("select count(*) from TPreparedURL where URL = '" + last + "'"), pair.lastCounted ? "1" : "0")
        << pair.last << " before " << pair.cur;
    EXPECT_EQ(Scalar("select count(*) from TPreparedURL where URL = '" + Fixed(pair.cur) + "'"), "1") << pair.cur;
  }
  EXPECT_EQ(count("[P-P] AddLastURL[LastURL:r.com]"), 2);
  EXPECT_EQ(count("AddURL(r.com) AddOK 0"), 1);
  EXPECT_EQ(count("AddURL(r.com) AddVisitCount 0X1"), 1);
  EXPECT_EQ(Scalar("select VisitCount from TPreparedURL where URL = 'r.com'"), "2");
  // Thirteen decisions and the three of the last date, nothing else.
  EXPECT_EQ(std::count_if(lines.begin(), lines.end(), [](const std::string& line) { return line.rfind("[", 0) == 0; }),
            16);
}

TEST_F(AnalysisTest, SameURLTwiceOnADateIsOneRowWithTheSumAndTheOlderStamp) {
  Visit("http://one.com/a.html", "2024-03-10 12:00:00.000", 2);
  Visit("http://other.net/", "2024-03-10 11:00:00.000");
  Visit("http://one.com/a.html", "2024-03-10 10:00:00.000", 3);
  Visit("http://third.org/", "2024-03-10 09:00:00.000");
  ASSERT_EQ(Update(), S_OK);
  EXPECT_EQ(Scalar("select VisitCount || ' ' || VisitTime from TPreparedURL where URL = 'one.com/a.html'"),
            "5 2024.03.10 0 10:00:00.000");
}

TEST_F(AnalysisTest, TodayWithoutVisitsStartsAtDayIndexOne) {
  Visit("http://a.com/", "2024-03-09 10:00:00.000");
  Visit("http://b.com/", "2024-03-08 10:00:00.000");
  ASSERT_EQ(Update(), S_OK);
  EXPECT_EQ(Rows("select DayIndex, URL from TPreparedURL order by DayIndex"),
            (std::vector<std::string>{"1|a.com", "2|b.com"}));
}

TEST_F(AnalysisTest, ScoresOfRecentAndLongStandingSites) {
  // 10 visits on 3 days, the newest with index 1: (150 + 10) x 2.0.
  Visit("http://recent.com/", "2024-03-09 10:00:00.000", 4, "Newest");
  Visit("http://recent.com/", "2024-03-08 10:00:00.000", 3, "Middle");
  Visit("http://recent.com/", "2024-03-07 10:00:00.000", 3, "Oldest");
  // The same as a favourite: x 1.3.
  Visit("http://liked.com/", "2024-03-09 11:00:00.000", 4);
  Visit("http://liked.com/", "2024-03-08 11:00:00.000", 3);
  Visit("http://liked.com/", "2024-03-07 11:00:00.000", 3);
  Favorite("http://liked.com/");
  // One visit on day index 9: (50 + 1) x 1.2, in h2. Day indexes count
  // dates with visits: five more dates lie between.
  for (int day = 2; day <= 6; ++day) Visit("http://filler.net/", "2024-03-0" + std::to_string(day) + " 10:00:00.000");
  Visit("http://old.com/", "2024-03-01 10:00:00.000");
  ASSERT_EQ(Update(), S_OK);
  EXPECT_EQ(Scalar("select Score || ' ' || VisitCount || ' ' || AvgVisitCount from j1 where URL = 'recent.com'"),
            "320 10 3");
  EXPECT_EQ(Scalar("select Score from j1 where URL = 'liked.com'"), "416");
  EXPECT_EQ(Scalar("select Score || ' ' || MainDomainName || ' ' || FullDomainName from h2 where URL = 'old.com'"),
            "61 old.com old.com");
  // Three days give one row, with the sum of the visits, the newest time
  // of the URL and the name of its newest day.
  EXPECT_EQ(Scalar("select count(*) from TPreparedURL where URL = 'recent.com'"), "3");
  EXPECT_EQ(Scalar("select count(*) from j1 where URL = 'recent.com'"), "1");
  EXPECT_EQ(Scalar("select j1.Name from j1 join TPreparedURL p on p.URL = j1.URL and p.DayIndex = 1 "
                   "and j1.LastVisitTime = p.VisitTimeLong where j1.URL = 'recent.com'"),
            "Newest");
  EXPECT_EQ(Scalar("select count(*) from TPreparedURL where URL = 'recent.com' and VisitTimeLong > "
                   "(select LastVisitTime from j1 where URL = 'recent.com')"),
            "0");
}

TEST_F(AnalysisTest, RecentOnlyUpToDayIndexSixLongStandingFromSeven) {
  // Day indexes count dates with visits; today has one.
  const char* kDates[] = {"2024-03-10", "2024-03-09", "2024-03-08", "2024-03-07",
                          "2024-03-06", "2024-03-05", "2024-03-04", "2024-03-03"};
  for (int i = 0; i < 8; ++i) Visit("http://filler" + std::to_string(i) + ".com/", std::string(kDates[i]) + " 08:00:00");
  Visit("http://six.com/", "2024-03-04 09:00:00.000");
  Visit("http://seven.com/", "2024-03-04 09:30:00.000");
  Visit("http://seven.com/", "2024-03-03 09:00:00.000");
  ASSERT_EQ(Update(), S_OK);
  EXPECT_EQ(Scalar("select DayIndex from TPreparedURL where URL = 'six.com'"), "6");
  EXPECT_EQ(Scalar("select count(*) from j1 where URL = 'six.com'"), "1");
  EXPECT_EQ(Scalar("select count(*) from h2 where URL = 'seven.com'"), "1");
  EXPECT_EQ(Scalar("select count(*) from j1 where URL = 'seven.com'"), "0");
  // (2 days x 50 + 2) x 1.5 for the band of index 6.
  EXPECT_EQ(Scalar("select Score from h2 where URL = 'seven.com'"), "153");
}

TEST_F(AnalysisTest, TheDayIndexPastTheSpanCountsInTheStatsOnly) {
  // Today has no visits and 21 dates have: the oldest gets day index 21,
  // one past the span of the scored tables.
  std::vector<std::string> dates;
  for (int day = 9; day >= 1; --day) dates.push_back("2024-03-0" + std::to_string(day));
  for (int day = 29; day >= 18; --day) dates.push_back("2024-02-" + std::to_string(day));
  for (const std::string& date : dates) Visit("http://filler.com/", date + " 08:00:00.000");
  Visit("http://both.com/", "2024-03-09 10:00:00.000");
  Visit("http://both.com/", "2024-02-18 10:00:00.000");
  Visit("http://edge.com/", "2024-02-18 11:00:00.000");
  ASSERT_EQ(Update(), S_OK);
  EXPECT_EQ(Scalar("select DayIndex from TPreparedURL where URL = 'edge.com'"), "21");
  EXPECT_EQ(Scalar("select count(*) from h2 where URL = 'edge.com'") + Scalar("select count(*) from j1 where URL = 'edge.com'"),
            "00");
  // Its visit on index 21 still makes both.com long-standing, with 2 days
  // and 2 visits in its score: (100 + 2) x 2.0.
  EXPECT_EQ(Scalar("select VisitCount || ' ' || AvgVisitCount || ' ' || Score from h2 where URL = 'both.com'"),
            "2 1 204");
}

TEST_F(AnalysisTest, FirstOpenedSitesSplitIntoRecentAndOlderAndFeedTheCounters) {
  // Nine dates with visits, today the newest: day indexes 0 to 8.
  for (int day = 2; day <= 10; ++day) {
    std::string date = "2024-03-" + std::string(day < 10 ? "0" : "") + std::to_string(day);
    Visit("http://first.com/", date + " 07:00:00.000");
    if (day >= 9) Visit("http://fresh.com/", date + " 07:30:00.000");
  }
  // One visit is below the least count of the e tables; it is still scored.
  Visit("http://once.com/", "2024-03-10 08:00:00.000");
  ASSERT_EQ(Update(), S_OK);
  EXPECT_EQ(Rows("select URL, VisitCount, Score from e3"), std::vector<std::string>{"first.com|9|0"});
  EXPECT_EQ(Rows("select URL, VisitCount from e2"), std::vector<std::string>{"fresh.com|2"});
  EXPECT_EQ(Rows("select URL from h2"), std::vector<std::string>{"first.com"});
  EXPECT_EQ(Rows("select URL from j1 order by URL"), (std::vector<std::string>{"fresh.com", "once.com"}));
  EXPECT_EQ(Config("H2") + " " + Config("E3inH2") + " " + Config("E3"), "1 1 1");
  EXPECT_EQ(Config("H1") + " " + Config("E2inH1") + " " + Config("E2"), "2 1 1");
}

TEST_F(AnalysisTest, AFavouriteWithAnApostropheIsStillAFavourite) {
  Visit("http://q.com/it's/", "2024-03-09 10:00:00.000");
  Visit("http://plain.com/", "2024-03-09 09:00:00.000");
  Favorite("http://q.com/it's/");
  ASSERT_EQ(Update(), S_OK);
  // (50 + 1) x 2.0 x 1.3 = 132.6
  EXPECT_EQ(Scalar("select Score from j1 where URL = 'q.com/it''s'"), "133");
  EXPECT_EQ(Scalar("select Score from j1 where URL = 'plain.com'"), "102");
}

TEST_F(AnalysisTest, WhiteListedHostsBecomeDomainsAndTheRestSinglePages) {
  WriteWhiteList(R"({"whitelist":[{"maindomain":"news.com","name":"News","domains":[{"domain":"www.news.com","name":"News home"}]}],
                     "blacklist":[{"maindomain":"bad.com","name":"Bad","domains":[{"domain":"bad.com","name":"Bad"}]}]})");
  for (int day = 1; day <= 9; ++day) {
    std::string date = "2024-03-0" + std::to_string(day);
    Visit("http://www.news.com/", date + " 09:00:00.000");
    Visit("http://blog.me.org/", date + " 10:00:00.000");
    Visit("http://bad.com/", date + " 11:00:00.000");
  }
  ASSERT_EQ(Update(), S_OK);
  // "www." goes in the fixed form, so the host is matched by the main
  // domain's own row of the white list.
  EXPECT_EQ(Scalar("select Domain || ' ' || MainDomain from TRecommendDomain"), "news.com news.com");
  EXPECT_EQ(Rows("select FixedURL from TRecommendURL"), std::vector<std::string>{"blog.me.org"});
  EXPECT_EQ(Scalar("select count(*) from TWhiteList"), "2");
}

}  // namespace
}  // namespace corvane::testing
