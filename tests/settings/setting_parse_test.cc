#include "settings/setting_parse.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

#include "common/utf.h"
#include "settings/settings_test_env.h"

namespace corvane {
namespace {

constexpr char16_t kRowA[] = u"{0,3,50,1,130,2.0,7,{10,2,7,7,1,15,15},{0,0,0,0,0,0,0,0}}";
constexpr char16_t kRowB[] = u"{3,9,40,2,120,1.5,3,{5,6,7},{1,2,3,4,5,6,7,8}}";

// A valid text of a set stored under its own name.
constexpr char16_t kWorkV5[] =
    u"Name@Work|Default@false|Ver@5|Score@{0,10,60,2,150,1.0,3,{4,5,6},{0,0,0,0,0,0,0,0}}|Setting@{1,{2,9}}";

TEST(ParseScoreRowsTest, TrailingSemicolonGivesOneAndTheSameRows) {
  std::vector<ScoreRow> rows;
  EXPECT_EQ(CSettingParse::ParseScoreRows(std::u16string(kRowA) + u";" + kRowB, &rows), 0);
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(rows[1].DayTo, 9u);
  EXPECT_EQ(rows[1].Params, (std::vector<int32_t>{5, 6, 7}));
  EXPECT_EQ(rows[1].Reserved[7], 8);

  EXPECT_EQ(CSettingParse::ParseScoreRows(std::u16string(kRowA) + u";" + kRowB + u";", &rows), 1);
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(rows[0].Params, (std::vector<int32_t>{10, 2, 7, 7, 1, 15, 15}));
  EXPECT_FLOAT_EQ(rows[0].RecencyWeight, 2.0f);
}

TEST(ParseScoreRowsTest, EmptyPieceEndsTheListAndDropsLaterRows) {
  std::vector<ScoreRow> rows;
  EXPECT_EQ(CSettingParse::ParseScoreRows(std::u16string(kRowA) + u";;" + kRowB, &rows), 1);
  EXPECT_EQ(rows.size(), 1u);
  EXPECT_EQ(CSettingParse::ParseScoreRows(u"", &rows), 1);
  EXPECT_TRUE(rows.empty());
}

TEST(ParseScoreRowsTest, BlanksAndLineBreaksAreIgnoredAndOldRowsDropped) {
  std::vector<ScoreRow> rows(3);
  EXPECT_EQ(CSettingParse::ParseScoreRows(u" {3, 9,40,2,\t120,1.5,3,\r\n{5,6, 7},{1,2,3,4,5,6,7,8}} ", &rows), 0);
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_EQ(rows[0].Params[2], 7);
}

TEST(ParseScoreRowsTest, BadRowEndsTheParseWithItsError) {
  std::vector<ScoreRow> rows;
  EXPECT_EQ(CSettingParse::ParseScoreRows(std::u16string(kRowA) + u";{1,2};" + kRowB, &rows), E_FAIL);
  EXPECT_EQ(rows.size(), 1u);
}

TEST(ParseScoreRowTest, ParamCountMustMatchTheFirstList) {
  ScoreRow row;
  EXPECT_EQ(CSettingParse::ParseScoreRow(u"{0,3,50,1,130,2.0,3,{10,2,7,7,1,15,15},{0,0,0,0,0,0,0,0}}", &row), E_FAIL);
  EXPECT_EQ(CSettingParse::ParseScoreRow(u"{0,3,50,1,130,2.0,8,{10,2,7,7,1,15,15},{0,0,0,0,0,0,0,0}}", &row), E_FAIL);
  EXPECT_EQ(CSettingParse::ParseScoreRow(u"{0,3,50,1,130,2.0,0,{10},{0,0,0,0,0,0,0,0}}", &row), E_FAIL);
  EXPECT_EQ(CSettingParse::ParseScoreRow(u"{0,3,50,1,130,2.0,-1,{10},{0,0,0,0,0,0,0,0}}", &row), E_FAIL);
  EXPECT_EQ(CSettingParse::ParseScoreRow(u"{0,3,50,1,130,2.0,1,{10},{0,0,0,0,0,0,0,0}}", &row), 0);
  EXPECT_EQ(row.Params, std::vector<int32_t>{10});
}

// A list of at most 259 characters holds at most 130 numbers. A count far
// above that once had its zeros allocated before the list was looked at, and
// the allocation failure took the host down.
TEST(ParseScoreRowTest, ParamCountThatNoListCanHoldIsRefusedBeforeAllocating) {
  auto rowWith = [](const std::string& count, size_t numbers) {
    std::u16string list;
    for (size_t i = 0; i < numbers; ++i) list += i == 0 ? u"1" : u",1";
    return u"{0,3,50,1,130,2.0," + FromUtf8(count) + u",{" + list + u"},{0,0,0,0,0,0,0,0}}";
  };
  ScoreRow row;
  EXPECT_EQ(CSettingParse::ParseScoreRow(rowWith("130", 130), &row), 0);
  EXPECT_EQ(row.Params.size(), 130u);
  EXPECT_EQ(CSettingParse::ParseScoreRow(rowWith("131", 130), &row), E_FAIL);
  EXPECT_EQ(CSettingParse::ParseScoreRow(rowWith("2147483647", 7), &row), E_FAIL);
  std::vector<ScoreRow> rows;
  EXPECT_EQ(CSettingParse::ParseScoreRows(std::u16string(kRowA) + u";" + rowWith("2147483647", 1), &rows), E_FAIL);
  EXPECT_EQ(rows.size(), 1u);
}

TEST(ParseScoreRowTest, EveryCommaOfTheListStartsANumber) {
  ScoreRow row;
  // An empty piece counts as a number and reads as 0; text reads as 0 too.
  EXPECT_EQ(CSettingParse::ParseScoreRow(u"{0,3,50,1,130,2.0,3,{4,,x},{0,0,0,0,0,0,0,0}}", &row), 0);
  EXPECT_EQ(row.Params, (std::vector<int32_t>{4, 0, 0}));
  EXPECT_EQ(CSettingParse::ParseScoreRow(u"{0,3,50,1,130,2.0,2,{4,5,},{0,0,0,0,0,0,0,0}}", &row), E_FAIL);
}

TEST(ParseScoreRowTest, SecondListNeedsEightNumbers) {
  ScoreRow row;
  EXPECT_EQ(CSettingParse::ParseScoreRow(u"{0,3,50,1,130,2.0,1,{10},{1,2,3,4,5,6,7,8,9}}", &row), 0);
  EXPECT_EQ(row.Reserved[0], 1);
  EXPECT_EQ(CSettingParse::ParseScoreRow(u"{0,3,50,1,130,2.0,1,{10},{1,2,3,4,5,6,7}}", &row), E_FAIL);
  EXPECT_EQ(CSettingParse::ParseScoreRow(u"{0,3,50,1,130,2.0,1,{10}}", &row), E_FAIL);
  EXPECT_EQ(CSettingParse::ParseScoreRow(u"", &row), 1);
}

TEST(GetFieldValueTest, ValueRunsToTheNextBar) {
  std::u16string value;
  std::u16string_view text = u"a@1|B@two|c@3";
  EXPECT_EQ(CSettingParse::GetFieldValue(text, 0, u"b", &value), 10u);
  EXPECT_EQ(value, u"two");
  // The last field is stored but gives nothing back.
  EXPECT_EQ(CSettingParse::GetFieldValue(text, 0, u"C", &value), std::u16string_view::npos);
  EXPECT_EQ(value, u"3");
  EXPECT_EQ(CSettingParse::GetFieldValue(text, 4, u"a", &value), std::u16string_view::npos);
  EXPECT_EQ(value, u"");
}

TEST(SplitSettingTextTest, OrderAndBarsThatAreRequired) {
  std::u16string n, d, s, t, v;
  EXPECT_EQ(CSettingParse::SplitSettingText(nullptr, &n, &d, &s, &t, &v), E_INVALIDARG);
  // Name and Default may stand anywhere, but each needs a bar behind it.
  EXPECT_EQ(CSettingParse::SplitSettingText(u"Ver@1|Score@x|Default@no|Name@n|", &n, &d, &s, &t, &v), S_OK);
  EXPECT_EQ(CSettingParse::SplitSettingText(u"Default@no|Ver@1|Score@x|Name@n", &n, &d, &s, &t, &v), E_FAIL);
  // Score before Ver is not found behind it.
  EXPECT_EQ(CSettingParse::SplitSettingText(u"Name@n|Default@no|Score@x|Ver@1|", &n, &d, &s, &t, &v), E_FAIL);
  // Score as the last field gives nothing back.
  EXPECT_EQ(CSettingParse::SplitSettingText(u"Name@n|Default@no|Ver@1|Score@x", &n, &d, &s, &t, &v), E_FAIL);
  // Setting may be missing.
  EXPECT_EQ(CSettingParse::SplitSettingText(u"Name@n|Default@no|Ver@1|Score@x|", &n, &d, &s, &t, &v), S_OK);
  EXPECT_EQ(t, u"");
}

TEST(SplitSettingTextTest, KeysAreFoundWithoutCaseInsideLongerWords) {
  std::u16string n, d, s, t, v;
  EXPECT_EQ(CSettingParse::SplitSettingText(u"NAME@n|default@TRUE|OldVer@7|score@x|SETTING@y", &n, &d, &s, &t, &v),
            S_OK);
  EXPECT_EQ(v, u"7");
  EXPECT_EQ(s, u"x");
  EXPECT_EQ(t, u"y");
}

class SettingParseFileTest : public test::SettingsTestBase {};

TEST_F(SettingParseFileTest, PathIsSettingsPlusNameInTheDataFolder) {
  EXPECT_EQ(CSettingParse(nullptr).GetPath(), SettingsPath());
  EXPECT_EQ(CSettingParse(u"").GetPath(), SettingsPath());
  EXPECT_EQ(CSettingParse(u"Work").GetPath(), SettingsPath(u"Work"));
  // A name with a dot already has an extension.
  EXPECT_EQ(CSettingParse(u"a.b").GetPath(), FromUtf8(m_dir.File("CorvaneApp/Settingsa.b")));
}

TEST_F(SettingParseFileTest, NoApplicationDataFolderLeavesThePathEmpty) {
  test::ScopedEnv appData("CORVANE_APPDATA", nullptr);
  test::ScopedEnv dataHome("XDG_DATA_HOME", nullptr);
  test::ScopedEnv home("HOME", nullptr);
  CSettingParse parse(nullptr);
  EXPECT_TRUE(parse.GetPath().empty());
  EXPECT_EQ(parse.SaveSetting(kDefaultSettingText, 1), E_FAIL);
  std::u16string text;
  EXPECT_EQ(parse.GetAnalyze(&text), E_FAIL);
}

TEST_F(SettingParseFileTest, NamedSetIsSavedOnceForAVersion) {
  CSettingParse parse(nullptr);
  EXPECT_EQ(parse.SaveSetting(kWorkV5, 0), S_OK);
  EXPECT_FALSE(Exists());
  ASSERT_TRUE(Exists("Work"));
  EXPECT_EQ(ReadKey(u"Name", u"Work"), u"Work");
  EXPECT_EQ(ReadKey(u"Analyze", u"Work"), u"{0,10,60,2,150,1.0,3,{4,5,6},{0,0,0,0,0,0,0,0}}");
  EXPECT_EQ(ReadKey(u"Setting", u"Work"), u"{1,{2,9}}");
  EXPECT_EQ(ReadKey(u"Version", u"Work"), u"5");
  EXPECT_EQ(ReadKey(u"Default", u"Work"), u"false");
  EXPECT_EQ(CSettingParse(nullptr).SaveSetting(kWorkV5, 0), S_FALSE);
  // Force only helps over version 0.
  EXPECT_EQ(CSettingParse(nullptr).SaveSetting(kWorkV5, 1), S_FALSE);
}

TEST_F(SettingParseFileTest, KeysAreWrittenInTheirOrder) {
  CSettingParse parse(nullptr);
  ASSERT_EQ(parse.SaveSetting(kWorkV5, 0), S_OK);
  std::ifstream in(SettingsFile("Work"));
  std::string line, keys;
  while (std::getline(in, line)) keys += line.substr(0, line.find('=')) + ";";
  EXPECT_EQ(keys, "[Settings];Name;Analyze;Setting;Version;Default;");
}

TEST_F(SettingParseFileTest, NewerVersionReplacesAndForcePassesVersionZero) {
  std::u16string v0 = kWorkV5;
  v0.replace(v0.find(u"Ver@5"), 5, u"Ver@0");
  EXPECT_EQ(CSettingParse(nullptr).SaveSetting(v0.c_str(), 0), S_FALSE);
  EXPECT_FALSE(Exists("Work"));
  EXPECT_EQ(CSettingParse(nullptr).SaveSetting(v0.c_str(), 1), S_OK);
  EXPECT_EQ(CSettingParse(nullptr).SaveSetting(v0.c_str(), 1), S_OK);
  EXPECT_EQ(CSettingParse(nullptr).SaveSetting(kWorkV5, 0), S_OK);
  EXPECT_EQ(ReadKey(u"Version", u"Work"), u"5");
}

TEST_F(SettingParseFileTest, DeleteSuffixRemovesTheNamedSet) {
  ASSERT_EQ(CSettingParse(nullptr).SaveSetting(kWorkV5, 0), S_OK);
  ASSERT_TRUE(Exists("Work"));
  CSettingParse parse(nullptr);
  EXPECT_EQ(parse.SaveSetting(u"Name@Work-Delete|Default@false|Ver@1|Score@x|", 0), kSettingDeleted);
  EXPECT_FALSE(Exists("Work"));
  std::u16string name;
  EXPECT_EQ(parse.GetSettingName(&name), 1);
  EXPECT_EQ(name, u"Work");
}

TEST_F(SettingParseFileTest, DeleteSuffixAtTheStartIsAnOrdinaryName) {
  CSettingParse parse(nullptr);
  EXPECT_EQ(parse.SaveSetting(u"Name@-Delete|Default@false|Ver@1|Score@{0,1,1,1,1,1.0,1,{1},{0,0,0,0,0,0,0,0}}|"
                              u"Setting@{1,{1,1}}",
                              0),
            S_OK);
  EXPECT_TRUE(Exists("-Delete"));
}

TEST_F(SettingParseFileTest, DefaultSetGoesIntoTheFileInForce) {
  std::u16string stale = u"stale";
  WriteKey(u"Name", &stale, u"Default");
  CSettingParse parse(nullptr);
  EXPECT_EQ(parse.SaveSetting(kDefaultSettingText, 1), kSettingInForce);
  EXPECT_FALSE(Exists("Default"));
  EXPECT_EQ(ReadKey(u"Name"), u"Default");
  EXPECT_EQ(ReadKey(u"Default"), u"true");

  std::u16string work = kWorkV5;
  work.replace(work.find(u"Default@false"), 13, u"Default@TRUE");
  EXPECT_EQ(CSettingParse(nullptr).SaveSetting(work.c_str(), 0), kSettingInForce);
  EXPECT_FALSE(Exists("Work"));
  EXPECT_EQ(ReadKey(u"Name"), u"Work");
  EXPECT_EQ(ReadKey(u"Version"), u"5");
}

TEST_F(SettingParseFileTest, RefusedDefaultStillDeletesTheNamedCopy) {
  std::u16string five = u"5";
  WriteKey(u"Version", &five);
  WriteKey(u"Version", &five, u"Default");
  EXPECT_EQ(CSettingParse(nullptr).SaveSetting(kDefaultSettingText, 1), S_FALSE);
  EXPECT_FALSE(Exists("Default"));
  EXPECT_EQ(ReadKey(u"Analyze"), u"<missing>");
}

TEST_F(SettingParseFileTest, TextThatDoesNotParseIsRefused) {
  CSettingParse parse(nullptr);
  EXPECT_EQ(parse.SaveSetting(nullptr, 0), E_INVALIDARG);
  EXPECT_EQ(parse.SaveSetting(u"Name@Work|Default@false|Ver@5|Score@{0,1}|Setting@{1,{1,1}}", 0), E_INVALIDARG);
  EXPECT_EQ(parse.SaveSetting(u"Name@Work|Default@false|Ver@5|Score@{0,1,1,1,1,1.0,1,{1},{0,0,0,0,0,0,0,0}}|", 0),
            E_INVALIDARG);
  EXPECT_EQ(parse.SaveSetting(u"Name@Work|Default@false|Ver@5|Score@{0,1,1,1,1,1.0,1,{1},{0,0,0,0,0,0,0,0}}|"
                              u"Setting@{1,{1}}",
                              0),
            E_INVALIDARG);
  EXPECT_EQ(parse.SaveSetting(u"Name@Work|Ver@5|Score@x|", 0), E_FAIL);
  EXPECT_FALSE(Exists("Work"));
}

TEST_F(SettingParseFileTest, BlanksInTheTextAreRemovedBeforeSaving) {
  EXPECT_EQ(CSettingParse(nullptr).SaveSetting(u" Name @ Work |\r\nDefault@false|Ver@ 5|\tScore@{0,10,60,2,150,1.0,3,"
                                               u"{4, 5, 6},{0,0,0,0,0,0,0,0}}|Setting@{1, {2,9}}",
                                               0),
            S_OK);
  EXPECT_EQ(ReadKey(u"Analyze", u"Work"), u"{0,10,60,2,150,1.0,3,{4,5,6},{0,0,0,0,0,0,0,0}}");
  EXPECT_EQ(ReadKey(u"Setting", u"Work"), u"{1,{2,9}}");
}

TEST_F(SettingParseFileTest, ReadsAreCappedAtTheirBuffers) {
  std::u16string longValue(2000, u'7');
  WriteKey(u"Analyze", &longValue);
  WriteKey(u"Name", &longValue);
  WriteKey(u"Version", &longValue);
  CSettingParse parse(nullptr);
  std::u16string text;
  ASSERT_EQ(parse.GetAnalyze(&text), S_OK);
  EXPECT_EQ(text.size(), 1019u);
  EXPECT_EQ(parse.GetSettingName(&text), 1);
  EXPECT_EQ(text.size(), 127u);
  static_cast<void>(parse.GetVersion(&text, nullptr));
  EXPECT_EQ(text.size(), 31u);
  EXPECT_EQ(parse.GetSetting(&text), E_FAIL);
}

TEST_F(SettingParseFileTest, MissingVersionReadsAsZero) {
  CSettingParse parse(nullptr);
  std::u16string text;
  EXPECT_EQ(parse.GetVersion(&text, nullptr), 0);
  EXPECT_EQ(text, u"0");
  std::u16string twelve = u"12";
  WriteKey(u"Version", &twelve, u"Work");
  std::u16string workPath = SettingsPath(u"Work");
  EXPECT_EQ(parse.GetVersion(nullptr, workPath.c_str()), 12);
}

}  // namespace
}  // namespace corvane
