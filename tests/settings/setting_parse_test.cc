#include "settings/setting_parse.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "common/utf.h"
#include "settings/settings_test_env.h"

namespace corvane {
namespace {

using Numbers = std::vector<int32_t>;
constexpr char16_t kRowA[] = u"{0,3,50,1,130,2.0,7,{10,2,7,7,1,15,15},{0,0,0,0,0,0,0,0}}";
constexpr char16_t kWorkScore[] = u"{0,10,60,2,150,1.0,3,{4,5,6},{0,0,0,0,0,0,0,0}}";
// A valid text of a set stored under its own name.
const std::u16string kWorkV5 =
    u"Name@Work|Default@false|Ver@5|Score@" + std::u16string(kWorkScore) + u"|Setting@{1,{2,9}}";

// A row whose first list holds the given numbers and claims the given count.
std::u16string RowWith(const std::u16string& count, const std::u16string& list) {
  return u"{0,3,50,1,130,2.0," + count + u",{" + list + u"},{0,0,0,0,0,0,0,0}}";
}

// A list of at most 259 characters holds at most 130 numbers. A count far
// above that once had its zeros allocated before the list was looked at, and
// the allocation failure took the host down.
TEST(ParseScoreRowTest, ParamCountMustMatchTheListAndStayWithin130) {
  std::u16string ones = u"1";
  for (int i = 1; i < 130; ++i) ones += u",1";
  const std::tuple<std::u16string, int32_t, Numbers> cases[] = {
      {RowWith(u"3", u"10,2,7,7,1,15,15"), E_FAIL, {}}, {RowWith(u"8", u"10,2,7,7,1,15,15"), E_FAIL, {}},
      {RowWith(u"0", u"10"), E_FAIL, {}},              {RowWith(u"-1", u"10"), E_FAIL, {}},
      {RowWith(u"1", u"10"), 0, {10}},                 {RowWith(u"130", ones), 0, Numbers(130, 1)},
      {RowWith(u"131", ones), E_FAIL, {}},             {RowWith(u"2147483647", u"1,1,1,1,1,1,1"), E_FAIL, {}},
      // Every comma starts a number; an empty piece or text reads as 0.
      {RowWith(u"3", u"4,,x"), 0, {4, 0, 0}},         {RowWith(u"2", u"4,5,"), E_FAIL, {}},
      // The second list needs eight numbers.
      {u"{0,3,50,1,130,2.0,1,{10},{1,2,3,4,5,6,7,8,9}}", 0, {10}},
      {u"{0,3,50,1,130,2.0,1,{10},{1,2,3,4,5,6,7}}", E_FAIL, {}},
      {u"{0,3,50,1,130,2.0,1,{10}}", E_FAIL, {}},     {u"", 1, {}},
  };
  for (const auto& [text, result, params] : cases) {
    ScoreRow row;
    EXPECT_EQ(CSettingParse::ParseScoreRow(text, &row), result) << ToUtf8(text.substr(0, 40));
    EXPECT_EQ(result == 0 ? row.Params : Numbers{}, params);
  }
}

class SettingParseFileTest : public test::SettingsTestBase {};

TEST_F(SettingParseFileTest, NamedSetIsSavedForANewerVersionOrByForceOverZeroAndDeletedByItsDeleteName) {
  std::u16string v0 = kWorkV5;
  v0.replace(v0.find(u"Ver@5"), 5, u"Ver@0");
  EXPECT_EQ(Save(v0, 0), S_FALSE);
  EXPECT_FALSE(Exists("Work"));
  EXPECT_EQ(Save(v0, 1), S_OK);
  EXPECT_EQ(Save(v0, 1), S_OK);
  // Blanks, tabs and line breaks anywhere in the text are dropped.
  EXPECT_EQ(Save(u" Name @ Wo\trk |\r\nDefault@false|Ver@ 5|\tScore@{0,10,60,2,150,1.0,3,{4, 5, 6},"
                 u"{0,0,0,0,0,0,0,0}}|Setting@{1, {2,9}}",
                 0),
            S_OK);
  EXPECT_FALSE(Exists());
  EXPECT_EQ(CSettingParse(u"Work").GetPath(), SettingsPath(u"Work"));
  EXPECT_EQ(CSettingParse(u"a.b").GetPath(), FromUtf8(m_dir.File("CorvaneApp/Settingsa.b")));  // has an extension
  std::stringstream content;
  content << std::ifstream(SettingsFile("Work")).rdbuf();
  EXPECT_EQ(FromUtf8(content.str()), u"[Settings]\nName=Work\nAnalyze=" + std::u16string(kWorkScore) +
                                         u"\nSetting={1,{2,9}}\nVersion=5\nDefault=false\n");
  EXPECT_EQ(Save(kWorkV5, 0), S_FALSE);
  EXPECT_EQ(Save(kWorkV5, 1), S_FALSE);
  EXPECT_EQ(Save(u"Name@Work-Delete|Default@false|Ver@1|Score@x|", 0), kSettingDeleted);
  EXPECT_FALSE(Exists("Work"));
  // The marker at the start is part of an ordinary name.
  EXPECT_EQ(Save(v0.replace(0, 9, u"Name@-Delete"), 1), S_OK);
  EXPECT_TRUE(Exists("-Delete"));
}

}  // namespace
}  // namespace corvane
