// Unit tests of the host's pieces: ID and status text, UTF-8, the report
// page and its chart, the data folder, ISO times and row IDs, and the guards
// of white-list rules.

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>

#include "cli/cli_runner.h"
#include "cli/data_folder.h"
#include "cli/host_text.h"
#include "cli/report_html.h"
#include "cli/row_ids.h"
#include "cli/rule_match.h"
#include "cli/time_text.h"
#include "support/test_host.h"

namespace corvane::cli {
namespace {

TEST(HostTextTest, DecimalIdsAreDigitsThatFitThirtyTwoBits) {
  EXPECT_TRUE(IsDecimalNumber("0") && IsDecimalNumber("4294967295"));
  for (const char* bad : {"4294967296", "00000000001", "", "-1", "12a", " 1", "1' or '1'='1"}) {
    EXPECT_FALSE(IsDecimalNumber(bad)) << bad;
  }
  EXPECT_EQ(HexStatus(E_FAIL), "0x80004005");
  EXPECT_EQ(HexStatus(S_FALSE), "0x00000001");
}

// A character beyond the first plane takes a surrogate pair; broken text
// becomes replacement characters and the next character survives.
TEST(HostTextTest, ComponentStringsRoundTripThroughUtf8AndBrokenTextIsReplaced) {
  OwnedBstr text("今天 Zürich");
  EXPECT_EQ(SysStringLen(text.Get()), 9u);
  EXPECT_EQ(text.Utf8(), "今天 Zürich");
  EXPECT_EQ(FromBstr(nullptr), "");
  EXPECT_EQ(Utf8ToWide("\xF0\x9F\x98\x80z"), (std::wstring{static_cast<wchar_t>(0x1F600), L'z'}));
  const char16_t kBad = 0xFFFD;
  const std::pair<std::string, std::u16string> kToUtf16[] = {
      {"a\xF0\x9F\x98\x80", {u'a', 0xD83D, 0xDE00}},
      {"\xFF", {kBad}},
      {"\xF8\x88\x80\x80", {kBad, kBad, kBad, kBad}},  // no five-byte forms
      {"\xC0\xAF", {kBad, kBad}},                      // an overlong "/"
      {"\xE0\x80\xAF", {kBad}},                       // the same in three bytes
      {"\xED\xA0\x80", {kBad}},                        // an encoded surrogate
      {"\xE4\xBB", {kBad, kBad}},                      // cut short at the end
      {"\xE4" "a", {kBad, u'a'}}};
  for (const auto& [utf8, utf16] : kToUtf16) EXPECT_EQ(Utf8ToUtf16(utf8), utf16) << utf8;
  EXPECT_EQ(Utf16ToUtf8(std::u16string{0xD83D, 0xDE00}), "\xF0\x9F\x98\x80");
  EXPECT_EQ(Utf16ToUtf8(std::u16string{0xDC00, u'x'}), "\xEF\xBF\xBDx");  // a lone low surrogate
  EXPECT_EQ(Utf16ToUtf8(std::u16string{0xD800}), "\xEF\xBF\xBD");        // a high one at the end
}

TEST(RuleMatchTest, RulesTooLongOrTooDeepAreRefusedBeforeCompiling) {
  std::string deep = std::string(50000, '(') + "a" + std::string(50000, ')');
  EXPECT_FALSE(IsRuleCompilable(deep));
  EXPECT_FALSE(MatchesRule("a", deep));  // compiling it would overflow the stack
  std::string nested32 = std::string(32, '(') + "a" + std::string(32, ')');
  EXPECT_TRUE(IsRuleCompilable(nested32) && MatchesRule("a", nested32));
  EXPECT_FALSE(IsRuleCompilable("(" + nested32 + ")"));
  // Brackets inside a class and escaped ones do not nest.
  EXPECT_TRUE(IsRuleCompilable(std::string(40, '\\') + "[" + std::string(40, '(') + "]" + "x"));
  EXPECT_TRUE(IsRuleCompilable("[(]" + std::string(40, 'x')));
  std::string longRule = std::string(kMaxRuleChars - 4, 'a') + "\\.io";
  EXPECT_TRUE(MatchesRule(longRule.substr(0, kMaxRuleChars - 4) + ".io", longRule));
  EXPECT_FALSE(MatchesRule(longRule.substr(0, kMaxRuleChars - 4) + "a.io", "a" + longRule));
  // The limit counts characters, not bytes.
  std::string wide;
  for (size_t i = 0; i < kMaxRuleChars; ++i) wide += "\xE4\xBB\x8A";
  EXPECT_TRUE(IsRuleCompilable(wide));
  EXPECT_FALSE(IsRuleCompilable(wide + "a"));
}

TEST(ReportHtmlTest, BrowserTextIsEscapedAndOnlyWebLinksAreLinked) {
  EXPECT_EQ(EscapeHtml("<b a=\"1\">&'"), "&lt;b a=&quot;1&quot;&gt;&amp;&#39;");
  // The component restores a fixed "https://" URL with "http://" in front.
  const std::pair<const char*, const char*> kLinks[] = {
      {"www.example.com", "http://www.example.com"}, {"https://example.com/a", "https://example.com/a"},
      {"javascript:alert(1)", "#"}, {"file:///etc/passwd", "#"}, {"", "#"},
      {"http://https://example.com/", "https://example.com/"}};
  for (const auto& [url, link] : kLinks) EXPECT_EQ(LinkTarget(url), link) << url;
  ReportData data;
  data.generated = "2024.03.07 4 12:00:00.000";
  SiteRecord site;
  site.name = "<script>alert(1)</script>";
  site.url = "javascript:alert(2)";
  site.weight = 12;
  data.sites.push_back(site);
  data.visitsPerDay = {{"day one", 10}, {"day two", 0}, {"day three", 5}};
  std::string html = BuildReportHtml(data);
  for (const char* absent : {"<script", "javascript:", "http"}) EXPECT_EQ(html.find(absent), std::string::npos) << absent;
  EXPECT_NE(html.find("&lt;script&gt;"), std::string::npos);
  EXPECT_NE(html.find("height=\"160\""), std::string::npos);  // the busiest day is the full bar
  EXPECT_NE(html.find("height=\"80\""), std::string::npos);   // half as many visits, half as high
}

// Newest first, as the history listing gives them; the 4th and the 5th of
// March have no visits, and the month ends in between.
TEST(ReportHtmlTest, ChartHasADayForEveryDateOfTheSpanWithZeroForDaysWithoutVisits) {
  auto visit = [](const char* stamp) {
    UrlRecord record;
    record.lastVisit = stamp;
    return record;
  };
  std::vector<DayGroup> days = {
      {"today", {visit("2024.03.07 4 10:00:00.000"), visit("2024.03.07 4 09:00:00.000")}},
      {"earlier", {visit("2024.03.06 3 10:00:00.000"), visit("2024.03.03 0 10:00:00.000")}},
      {"older", {visit("2024.02.28 3 10:00:00.000"), visit("garbage")}},
  };
  using Bars = std::vector<std::pair<std::string, int>>;
  EXPECT_EQ(VisitsPerDay(days, 21), (Bars{{"2024-02-28", 1}, {"2024-02-29", 0}, {"2024-03-01", 0}, {"2024-03-02", 0},
                                          {"2024-03-03", 1}, {"2024-03-04", 0}, {"2024-03-05", 0}, {"2024-03-06", 1},
                                          {"2024-03-07", 2}}));
  // A span of three days with visits starts at the third newest of them.
  Bars bars = VisitsPerDay(days, 3);
  ASSERT_EQ(bars.size(), 5u);
  EXPECT_EQ(bars.front().first, "2024-03-03");
  EXPECT_TRUE(VisitsPerDay({}, 21).empty());
  // Two visits years apart make no chart of thousands of bars.
  days.push_back({"long ago", {visit("2019.01.01 2 10:00:00.000")}});
  EXPECT_EQ(VisitsPerDay(days, 0).size(), static_cast<size_t>(kMaxChartDays));
}

TEST(DataFolderTest, FolderFollowsTheComponentsOrderOfVariablesAndIsMadeWithoutAProbe) {
  test::ScopedEnv appData("CORVANE_APPDATA", "/a"), dataHome("XDG_DATA_HOME", "/x"), home("HOME", "/h");
  EXPECT_EQ(DataFolderPath(), "/a/CorvaneApp");
  {
    test::ScopedEnv empty("CORVANE_APPDATA", "");
    EXPECT_EQ(DataFolderPath(), "/x/CorvaneApp");
    test::ScopedEnv noDataHome("XDG_DATA_HOME", nullptr);
    EXPECT_EQ(DataFolderPath(), "/h/.local/share/CorvaneApp");
    test::ScopedEnv noHome("HOME", nullptr);
    EXPECT_EQ(DataFolderPath(), "");
    std::string error;
    bool open = false;
    EXPECT_FALSE(PrepareDataFolder(&error, &open));
    EXPECT_EQ(error, "no data folder: set HOME, XDG_DATA_HOME or --data-dir");
  }
  test::TempDir dir;
  test::ScopedEnv deep("CORVANE_APPDATA", dir.File("deep/er").c_str());
  std::string error, folder = dir.File("deep/er/CorvaneApp");
  bool open = true;
  ASSERT_TRUE(PrepareDataFolder(&error, &open)) << error;
  EXPECT_TRUE(std::filesystem::is_directory(folder) && std::filesystem::is_empty(folder) && !open);
  // A database that cannot be opened for writing is named.
  std::filesystem::create_directory(folder + "/CorvaneAppDB.db");
  EXPECT_FALSE(PrepareDataFolder(&error, &open));
  EXPECT_EQ(error, "cannot write " + folder + "/CorvaneAppDB.db: Is a directory");
}

// Local stamps keep their wall-clock time and get the offset of that
// instant: winter and summer time differ.
TEST(TimeTextTest, StampsBecomeIsoTimesWithTheOffsetOfTheirInstant) {
  test::ScopedEnv zone("TZ", "Europe/Berlin");
  tzset();
  EXPECT_EQ(StampToIso("2024.03.05 2 09:07:03.041"), "2024-03-05T09:07:03.041+01:00");
  EXPECT_EQ(StampToIso("2024.07.05 5 23:59:59.999"), "2024-07-05T23:59:59.999+02:00");
  for (const char* bad : {"", "2024.13.05 2 09:07:03.041", "2024.03.05 2 09:07:03", "2024.03.05 2 09:07:03.041x"}) {
    EXPECT_EQ(StampToIso(bad), "") << bad;
  }
  EXPECT_TRUE(IsIsoDate("2024-02-29") && !IsIsoDate("2023-02-29") && !IsIsoDate("2024-2-01"));
  RowKind kind = RowKind::kUrl;
  uint32_t number = 0;
  ASSERT_TRUE(ParseRowId("s4294967295", &kind, &number));
  EXPECT_EQ(RowId(kind, number), "s4294967295");
  for (const char* bad : {"S12", "s", "s-1", "s4294967296", "q1", "12", "s1 "}) EXPECT_FALSE(ParseRowId(bad, &kind, &number)) << bad;
}

}  // namespace
}  // namespace corvane::cli
