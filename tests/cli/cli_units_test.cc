// Unit tests of the host's pieces: ID and status text, tables, the report
// page, and the scoring model that explain shows.

#include <gtest/gtest.h>

#include <fstream>

#include "cli/host_text.h"
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
}

TEST(RuleMatchTest, RulesMatchTheWholeHostAndABrokenRuleMatchesNothing) {
  EXPECT_TRUE(MatchesRule("alice.github.io", "[a-z0-9-]+\\.github\\.io"));
  EXPECT_FALSE(MatchesRule("alice.github.io.evil.example", "[a-z0-9-]+\\.github\\.io"));
  EXPECT_FALSE(MatchesRule("a.b.github.io", "[a-z0-9-]+\\.github\\.io"));
  EXPECT_FALSE(MatchesRule("alice.github.io", "([unclosed"));
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

TEST(ScoreModelTest, DefaultRowsGiveTheWorkedScores) {
  test::TempDir dir;
  ScoreModel model = LoadScoreModel(dir.Path());
  EXPECT_EQ(model.source, "built-in default");
  ASSERT_EQ(model.rows.size(), 4u);
  EXPECT_EQ(model.MaxDays(), 21u);
  EXPECT_EQ(model.Score(3, 10, 1, false), 320u);
  EXPECT_EQ(model.Score(3, 10, 1, true), 416u);
  EXPECT_EQ(model.Score(1, 1, 9, false), 61u);
  EXPECT_EQ(model.Score(1, 1, 21, false), 0u);  // beyond the last band
  ASSERT_NE(model.RowFor(6), nullptr);
  EXPECT_FLOAT_EQ(model.RowFor(6)->RecencyWeight, 1.5f);
  EXPECT_EQ(model.RowFor(21), nullptr);
}

TEST(ScoreModelTest, SettingsFileRowsWinAndABrokenOneFallsBackToTheDefault) {
  test::TempDir dir;
  {
    std::ofstream ini(dir.File("Settings.ini"));
    ini << "[Settings]\nAnalyze={0,10,20,2,150,3.0,7,{10,2,7,7,1,15,15},{0,0,0,0,0,0,0,0}};\n";
  }
  ScoreModel mine = LoadScoreModel(dir.Path());
  EXPECT_EQ(mine.source, "Settings.ini");
  EXPECT_EQ(mine.MaxDays(), 10u);
  EXPECT_EQ(mine.Score(2, 5, 3, false), 150u);  // (40 + 10) x 3.0
  {
    std::ofstream ini(dir.File("Settings.ini"));
    ini << "[Settings]\nAnalyze={0,10,twenty}\n";
  }
  EXPECT_EQ(LoadScoreModel(dir.Path()).source, "built-in default");
}

}  // namespace
}  // namespace corvane::cli
