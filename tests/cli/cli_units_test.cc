// Unit tests of the host's pieces: ID and status text, UTF-8, tables, the
// report page and its chart, URL forms, the INI reader, and the scoring
// model that explain shows.

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>

#include "cli/com_ref.h"
#include "cli/data_folder.h"
#include "cli/explain_data.h"
#include "cli/host_text.h"
#include "cli/ini_read.h"
#include "cli/output.h"
#include "cli/report_html.h"
#include "cli/rule_match.h"
#include "cli/score_bands.h"
#include "support/test_host.h"

namespace corvane::cli {
namespace {

TEST(HostTextTest, DecimalIdsAreDigitsThatFitThirtyTwoBits) {
  EXPECT_TRUE(IsDecimalNumber("0"));
  EXPECT_TRUE(IsDecimalNumber("4294967295"));
  EXPECT_FALSE(IsDecimalNumber("4294967296"));
  EXPECT_FALSE(IsDecimalNumber(""));
  EXPECT_FALSE(IsDecimalNumber("-1"));
  EXPECT_FALSE(IsDecimalNumber("12a"));
  EXPECT_FALSE(IsDecimalNumber(" 1"));
  EXPECT_FALSE(IsDecimalNumber("1' or '1'='1"));
  EXPECT_EQ(HexStatus(E_FAIL), "0x80004005");
  EXPECT_EQ(HexStatus(S_FALSE), "0x00000001");
}

TEST(HostTextTest, ComponentStringsRoundTripThroughUtf8) {
  OwnedBstr text("今天 Zürich");
  EXPECT_EQ(SysStringLen(text.Get()), 9u);
  EXPECT_EQ(text.Utf8(), "今天 Zürich");
  EXPECT_EQ(FromBstr(nullptr), "");
  // A character beyond the first plane takes a surrogate pair.
  EXPECT_EQ(Utf8ToUtf16("a\xF0\x9F\x98\x80"), (std::u16string{u'a', 0xD83D, 0xDE00}));
  EXPECT_EQ(Utf16ToUtf8(std::u16string{0xD83D, 0xDE00}), "\xF0\x9F\x98\x80");
  EXPECT_EQ(Utf8ToWide("\xF0\x9F\x98\x80z"), (std::wstring{static_cast<wchar_t>(0x1F600), L'z'}));
}

TEST(HostTextTest, BrokenTextBecomesReplacementCharacters) {
  const std::u16string kOne{0xFFFD};
  EXPECT_EQ(Utf8ToUtf16("\xFF"), kOne);
  EXPECT_EQ(Utf8ToUtf16("\xF8\x88\x80\x80"), std::u16string(4, 0xFFFD));  // no five-byte forms
  EXPECT_EQ(Utf8ToUtf16("\xC0\xAF"), std::u16string(1, 0xFFFD) + std::u16string(1, 0xFFFD));  // overlong "/"
  EXPECT_EQ(Utf8ToUtf16("\xED\xA0\x80"), kOne);        // an encoded surrogate
  EXPECT_EQ(Utf8ToUtf16("\xE4\xBB"), kOne + kOne);       // cut short at the end
  EXPECT_EQ(Utf8ToUtf16("\xE4" "a"), kOne + u"a");       // the next character survives
  EXPECT_EQ(Utf16ToUtf8(std::u16string{0xDC00, u'x'}), "\xEF\xBF\xBDx");  // a lone low surrogate
  EXPECT_EQ(Utf16ToUtf8(std::u16string{0xD800}), "\xEF\xBF\xBD");        // a high one at the end
}

TEST(RuleMatchTest, RulesMatchTheWholeHostAndABrokenRuleMatchesNothing) {
  EXPECT_TRUE(MatchesRule("alice.github.io", "[a-z0-9-]+\\.github\\.io"));
  EXPECT_FALSE(MatchesRule("alice.github.io.evil.example", "[a-z0-9-]+\\.github\\.io"));
  EXPECT_FALSE(MatchesRule("a.b.github.io", "[a-z0-9-]+\\.github\\.io"));
  EXPECT_FALSE(MatchesRule("alice.github.io", "([unclosed"));
  // The polynomial matcher knows no back-references; such a rule matches nothing.
  EXPECT_FALSE(MatchesRule("aa.example.com", "(a)\\1\\.example\\.com"));
}

TEST(RuleMatchTest, RulesTooLongOrTooDeepAreRefusedBeforeCompiling) {
  std::string deep = std::string(50000, '(') + "a" + std::string(50000, ')');
  EXPECT_FALSE(IsRuleCompilable(deep));
  EXPECT_FALSE(MatchesRule("a", deep));  // compiling it would overflow the stack
  std::string nested32 = std::string(32, '(') + "a" + std::string(32, ')');
  EXPECT_TRUE(IsRuleCompilable(nested32));
  EXPECT_TRUE(MatchesRule("a", nested32));
  EXPECT_FALSE(IsRuleCompilable("(" + nested32 + ")"));
  // Brackets inside a class and escaped ones do not nest.
  EXPECT_TRUE(IsRuleCompilable(std::string(40, '\\') + "[" + std::string(40, '(') + "]" + "x"));
  EXPECT_TRUE(IsRuleCompilable("[(]" + std::string(40, 'x')));
  std::string longRule = std::string(kMaxRuleChars - 4, 'a') + "\\.io";
  EXPECT_TRUE(MatchesRule(longRule.substr(0, kMaxRuleChars - 4) + ".io", longRule));
  EXPECT_FALSE(MatchesRule(longRule.substr(0, kMaxRuleChars - 4) + "a.io", "a" + longRule));
  // The limit counts characters, not bytes.
  std::string wide;
  for (size_t i = 0; i < kMaxRuleChars; ++i) wide += "\xE4\xBB\x8A";  // 512 characters of 3 bytes
  EXPECT_TRUE(IsRuleCompilable(wide));
  EXPECT_FALSE(IsRuleCompilable(wide + "a"));
}

TEST(RuleMatchTest, AmbiguousRuleRunsInPolynomialTime) {
  // With a backtracking matcher this pair takes 2^40 steps.
  std::string host(40, 'a');
  auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(MatchesRule(host, "(a|a)*b\\.a\\.com"));
  EXPECT_TRUE(MatchesRule(host + "b.a.com", "(a|a)*b\\.a\\.com"));
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
}

TEST(TextTableTest, ColumnsAlignByCharactersNotBytes) {
  EXPECT_EQ(DisplayWidth("今天"), 2u);
  TextTable table({"A", "B"});
  table.AddRow({"今天", "x"});
  table.AddRow({"abcd", "y"});
  table.AddRow({"z"});  // a short row is padded with empty cells
  std::string path = ::testing::TempDir() + "/table.txt";
  std::FILE* out = std::fopen(path.c_str(), "w");
  ASSERT_NE(out, nullptr);
  table.Print(out);
  std::fclose(out);
  std::ifstream in(path);
  std::string line;
  std::vector<std::string> lines;
  while (std::getline(in, line)) lines.push_back(line);
  ASSERT_EQ(lines.size(), 4u);
  EXPECT_EQ(lines[0], "A     B");
  EXPECT_EQ(lines[1], "今天    x");
  EXPECT_EQ(lines[2], "abcd  y");
  EXPECT_EQ(lines[3], "z");
}

TEST(ReportHtmlTest, BrowserTextIsEscapedAndOnlyWebLinksAreLinked) {
  EXPECT_EQ(EscapeHtml("<b a=\"1\">&'"), "&lt;b a=&quot;1&quot;&gt;&amp;&#39;");
  EXPECT_EQ(LinkTarget("www.example.com"), "http://www.example.com");
  EXPECT_EQ(LinkTarget("https://example.com/a"), "https://example.com/a");
  EXPECT_EQ(LinkTarget("javascript:alert(1)"), "#");
  EXPECT_EQ(LinkTarget("file:///etc/passwd"), "#");
  EXPECT_EQ(LinkTarget(""), "#");
  // The component restores a fixed "https://" URL with "http://" in front.
  EXPECT_EQ(LinkTarget("http://https://example.com/"), "https://example.com/");

  ReportData data;
  data.generated = "2024.03.07 4 12:00:00.000";
  SiteRecord site;
  site.name = "<script>alert(1)</script>";
  site.url = "javascript:alert(2)";
  site.weight = 12;
  data.sites.push_back(site);
  data.visitsPerDay = {{"day one", 10}, {"day two", 0}, {"day three", 5}};
  std::string html = BuildReportHtml(data);
  EXPECT_EQ(html.find("<script"), std::string::npos);
  EXPECT_EQ(html.find("javascript:"), std::string::npos);
  EXPECT_NE(html.find("&lt;script&gt;"), std::string::npos);
  EXPECT_NE(html.find("height=\"160\""), std::string::npos);  // the busiest day is the full bar
  EXPECT_NE(html.find("height=\"80\""), std::string::npos);   // half as many visits, half as high
  EXPECT_EQ(html.find("http"), std::string::npos);
}

TEST(ReportHtmlTest, ChartHasADayForEveryDateOfTheSpanWithZeroForDaysWithoutVisits) {
  auto visit = [](const char* stamp) {
    UrlRecord record;
    record.lastVisit = stamp;
    return record;
  };
  // Newest first, as the history listing gives them; the 4th and the 5th
  // of March have no visits, and the month ends in between.
  std::vector<DayGroup> days = {
      {"today", {visit("2024.03.07 4 10:00:00.000"), visit("2024.03.07 4 09:00:00.000")}},
      {"earlier", {visit("2024.03.06 3 10:00:00.000"), visit("2024.03.03 0 10:00:00.000")}},
      {"older", {visit("2024.02.28 3 10:00:00.000"), visit("garbage")}},
  };
  std::vector<std::pair<std::string, int>> bars = VisitsPerDay(days, 21);
  ASSERT_EQ(bars.size(), 9u);  // 28 Feb (a leap year) to 7 Mar
  EXPECT_EQ(bars.front(), (std::pair<std::string, int>{"2024-02-28", 1}));
  EXPECT_EQ(bars[1], (std::pair<std::string, int>{"2024-02-29", 0}));
  EXPECT_EQ(bars[4], (std::pair<std::string, int>{"2024-03-03", 1}));
  EXPECT_EQ(bars[5], (std::pair<std::string, int>{"2024-03-04", 0}));
  EXPECT_EQ(bars[6], (std::pair<std::string, int>{"2024-03-05", 0}));
  EXPECT_EQ(bars.back(), (std::pair<std::string, int>{"2024-03-07", 2}));
  // A span of three days with visits starts at the third newest of them.
  bars = VisitsPerDay(days, 3);
  ASSERT_EQ(bars.size(), 5u);
  EXPECT_EQ(bars.front().first, "2024-03-03");
  EXPECT_TRUE(VisitsPerDay({}, 21).empty());
  // Two visits years apart make no chart of thousands of bars.
  days.push_back({"long ago", {visit("2019.01.01 2 10:00:00.000")}});
  EXPECT_EQ(VisitsPerDay(days, 0).size(), static_cast<size_t>(kMaxChartDays));
}

TEST(ExplainFormsTest, FixedUrlAndHostAreTheStoredForms) {
  EXPECT_EQ(FixedUrlOf("http://www.example.com/"), "example.com");
  EXPECT_EQ(FixedUrlOf("http://example.com/a/"), "example.com/a");
  EXPECT_EQ(FixedUrlOf("www.example.com"), "example.com");
  EXPECT_EQ(FixedUrlOf("https://www.example.com/"), "https://www.example.com");  // https stays
  EXPECT_EQ(HostOf("https://Mail.Example.com:8080/inbox?x=1"), "Mail.Example.com");
  EXPECT_EQ(HostOf("example.com./path"), "example.com");
  EXPECT_EQ(HostOf("example.com"), "example.com");
  EXPECT_EQ(HostOf("a.com/go?to=http://b.com"), "a.com");  // a scheme only at the front
  EXPECT_EQ(HostOf("file:///etc/passwd"), "");
}

TEST(DataFolderTest, FolderFollowsTheComponentsOrderOfVariables) {
  test::ScopedEnv appData("CORVANE_APPDATA", "/a");
  test::ScopedEnv dataHome("XDG_DATA_HOME", "/x");
  test::ScopedEnv home("HOME", "/h");
  EXPECT_EQ(DataFolderPath(), "/a/CorvaneApp");
  {
    test::ScopedEnv empty("CORVANE_APPDATA", "");
    EXPECT_EQ(DataFolderPath(), "/x/CorvaneApp");
    test::ScopedEnv noDataHome("XDG_DATA_HOME", nullptr);
    EXPECT_EQ(DataFolderPath(), "/h/.local/share/CorvaneApp");
    test::ScopedEnv noHome("HOME", nullptr);
    EXPECT_EQ(DataFolderPath(), "");
    std::string error;
    EXPECT_FALSE(PrepareDataFolder(&error));
    EXPECT_EQ(error, "no data folder: set HOME, XDG_DATA_HOME or --data-dir");
  }
}

TEST(DataFolderTest, PrepareMakesTheFolderAndLeavesNoProbeBehind) {
  test::TempDir dir;
  test::ScopedEnv appData("CORVANE_APPDATA", dir.File("deep/er").c_str());
  std::string error;
  ASSERT_TRUE(PrepareDataFolder(&error)) << error;
  EXPECT_TRUE(std::filesystem::is_directory(dir.File("deep/er/CorvaneApp")));
  EXPECT_TRUE(std::filesystem::is_empty(dir.File("deep/er/CorvaneApp")));
  // A database that cannot be opened for writing is named.
  std::filesystem::create_directory(dir.File("deep/er/CorvaneApp/CorvaneAppDB.db"));
  EXPECT_FALSE(PrepareDataFolder(&error));
  EXPECT_EQ(error, "cannot write " + dir.File("deep/er/CorvaneApp/CorvaneAppDB.db") + ": Is a directory");
}

TEST(IniReadTest, SectionsAndKeysIgnoreCaseAndValuesLoseBlanksAndQuotes) {
  test::TempDir dir;
  {
    std::ofstream ini(dir.File("a.ini"));
    ini << "Key=outside\n[Other]\nKey=other\n[ settings ]\r\n  KEY = \"quoted value\" \r\nnoise line\n"
           "Empty=\nKey=second\n";
  }
  std::string value;
  ASSERT_TRUE(ReadIniValue(dir.File("a.ini"), "Settings", "key", &value));
  EXPECT_EQ(value, "quoted value");
  ASSERT_TRUE(ReadIniValue(dir.File("a.ini"), "Settings", "Empty", &value));
  EXPECT_EQ(value, "");
  EXPECT_FALSE(ReadIniValue(dir.File("a.ini"), "Settings", "Missing", &value));
  EXPECT_FALSE(ReadIniValue(dir.File("a.ini"), "Nowhere", "Key", &value));
  EXPECT_FALSE(ReadIniValue(dir.File("missing.ini"), "Settings", "Key", &value));
}

// The component writes its default settings when it is created; the host
// reads back the rows it scores with.
TEST(ScoreModelTest, DefaultRowsThatTheComponentWritesGiveTheWorkedScores) {
  test::TempDir dir;
  {
    test::ScopedEnv appData("CORVANE_APPDATA", dir.Path().c_str());
    ComRef<IClassFactory> factory;
    ASSERT_EQ(DllGetClassObject(CLSID_CorvaneDataProviderObject, IID_IClassFactory,
                                reinterpret_cast<void**>(factory.Put())),
              S_OK);
    ComRef<ICorvaneDataProviderObject> provider;
    ASSERT_EQ(factory->CreateInstance(nullptr, IID_ICorvaneDataProviderObject,
                                      reinterpret_cast<void**>(provider.Put())),
              S_OK);
  }
  ScoreModel model = LoadScoreModel(dir.File("CorvaneApp"));
  EXPECT_EQ(model.source, "Settings.ini");
  ASSERT_EQ(model.rows.size(), 4u);
  EXPECT_EQ(model.MaxDays(), 21u);
  EXPECT_EQ(model.Score(3, 10, 1, false), 320u);
  EXPECT_EQ(model.Score(3, 10, 1, true), 416u);
  EXPECT_EQ(model.Score(1, 1, 9, false), 61u);
  EXPECT_EQ(model.Score(1, 1, 21, false), 0u);  // beyond the last band
  ASSERT_NE(model.RowFor(6), nullptr);
  EXPECT_FLOAT_EQ(model.RowFor(6)->recencyWeight, 1.5f);
  EXPECT_EQ(model.RowFor(21), nullptr);
}

TEST(ScoreModelTest, RowsReadWithBlanksAndABrokenOrMissingFileGivesNone) {
  test::TempDir dir;
  {
    std::ofstream ini(dir.File("Settings.ini"));
    ini << "[Settings]\nAnalyze={0, 10,20,2,150,3.0,7,{10,2,7,7,1,15,15},{0,0,0,0,0,0,0,0}};"
           "{10,12,1,1,100,0.5,1,{1},{0,0,0,0,0,0,0,0}}\n";
  }
  ScoreModel mine = LoadScoreModel(dir.Path());
  EXPECT_EQ(mine.source, "Settings.ini");
  ASSERT_EQ(mine.rows.size(), 2u);
  EXPECT_EQ(mine.MaxDays(), 12u);
  EXPECT_EQ(mine.Score(2, 5, 3, false), 150u);  // (40 + 10) x 3.0
  EXPECT_EQ(mine.Score(2, 5, 11, false), 25u);  // the second row's weight, the first row's points
  {
    std::ofstream ini(dir.File("Settings.ini"));
    ini << "[Settings]\nAnalyze={0,10,20,2,150,3.0,7,{1},{0}};{0,10,twenty}\n";
  }
  ScoreModel broken = LoadScoreModel(dir.Path());
  EXPECT_EQ(broken.source, "");
  EXPECT_TRUE(broken.rows.empty());
  EXPECT_EQ(broken.Score(2, 5, 3, false), 0u);
  EXPECT_TRUE(LoadScoreModel(dir.File("nowhere")).rows.empty());
}

}  // namespace
}  // namespace corvane::cli
