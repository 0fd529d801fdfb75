#include "settings/score_settings.h"

#include <gtest/gtest.h>

#include <string>

#include "settings/setting_parse.h"
#include "settings/settings_test_env.h"

namespace corvane {
namespace {

class ScoreSettingsTest : public test::SettingsTestBase {
 protected:
  // Expects the model to hold exactly the built-in defaults.
  static void ExpectDefaults(const CScoreSettings& settings) {
    EXPECT_EQ(settings.GetMaxDays(), 21u);
    EXPECT_EQ(settings.GetName(), u"Default");
    EXPECT_EQ(settings.GetVersion(), u"0");
    EXPECT_EQ(settings.GetSettingFirst(), 7);
    EXPECT_EQ(settings.GetSettingSecond(), 7);
    EXPECT_EQ(settings.GetIEMinRecentVisits(), 3);
    EXPECT_FLOAT_EQ(settings.GetRecencyWeight(8), 1.2f);
  }

  void ExpectDefaultFileWritten() const {
    EXPECT_EQ(ReadKey(u"Name"), u"Default");
    EXPECT_EQ(ReadKey(u"Setting"), u"{7,{7,3}}");
    EXPECT_EQ(ReadKey(u"Version"), u"0");
  }

  const std::u16string kValidSetting = u"{1,{2,4}}";
  const std::u16string kValidAnalyze = u"{0,5,70,3,110,1.5,2,{9,8},{0,0,0,0,0,0,0,0}}";
};

TEST_F(ScoreSettingsTest, FirstStartWritesAndLoadsTheDefaults) {
  CScoreSettings settings;
  ExpectDefaults(settings);
  ExpectDefaultFileWritten();
  EXPECT_FALSE(Exists("Default"));
}

TEST_F(ScoreSettingsTest, DefaultWeightsByDayIndex) {
  CScoreSettings settings;
  EXPECT_FLOAT_EQ(settings.GetRecencyWeight(0), 2.0f);
  EXPECT_FLOAT_EQ(settings.GetRecencyWeight(2), 2.0f);
  EXPECT_FLOAT_EQ(settings.GetRecencyWeight(3), 1.5f);
  EXPECT_FLOAT_EQ(settings.GetRecencyWeight(15), 1.0f);
  EXPECT_FLOAT_EQ(settings.GetRecencyWeight(20), 1.0f);
  EXPECT_EQ(settings.GetRecencyWeight(21), 0.0f);
  EXPECT_EQ(settings.GetMaxDays(), 21u);
  EXPECT_EQ(settings.GetDayScore(0), 50);
  EXPECT_EQ(settings.GetVisitScore(0), 1);
  EXPECT_EQ(settings.GetFavoritePercent(0), 130);
  EXPECT_EQ(settings.GetDayScore(21), 0);
  EXPECT_FLOAT_EQ(settings.GetHideFactor(), 0.7f);
}

TEST_F(ScoreSettingsTest, RowsAreHalfOpenAndTheEarlierRowWinsAnOverlap) {
  std::u16string analyze =
      u"{5,10,1,0,0,1.0,1,{1},{0,0,0,0,0,0,0,0}};{0,3,2,0,0,2.0,1,{2},{0,0,0,0,0,0,0,0}};"
      u"{2,20,3,0,0,3.0,1,{3},{0,0,0,0,0,0,0,0}}";
  WriteKey(u"Analyze", &analyze);
  WriteKey(u"Setting", &kValidSetting);
  CScoreSettings settings;
  EXPECT_EQ(settings.GetDayScore(2), 2);
  EXPECT_EQ(settings.GetDayScore(3), 3);
  EXPECT_EQ(settings.GetDayScore(5), 1);
  EXPECT_EQ(settings.GetDayScore(10), 3);
  EXPECT_EQ(settings.GetDayScore(20), 0);
  EXPECT_EQ(settings.GetMaxDays(), 20u);
}

TEST_F(ScoreSettingsTest, DayBoundsCompareUnsigned) {
  std::u16string analyze = u"{-5,-1,4,0,0,1.0,1,{1},{0,0,0,0,0,0,0,0}}";
  WriteKey(u"Analyze", &analyze);
  WriteKey(u"Setting", &kValidSetting);
  CScoreSettings settings;
  EXPECT_EQ(settings.GetDayScore(0), 0);
  EXPECT_EQ(settings.GetDayScore(0xFFFFFFFBu), 4);
  EXPECT_EQ(settings.GetMaxDays(), 0xFFFFFFFFu);
}

TEST_F(ScoreSettingsTest, GetParamPastParamCountGivesTheFirstEntry) {
  WriteKey(u"Analyze", &kValidAnalyze);
  WriteKey(u"Setting", &kValidSetting);
  CScoreSettings settings;
  EXPECT_EQ(settings.GetParam(0, 0), 9);
  EXPECT_EQ(settings.GetParam(0, 1), 8);
  EXPECT_EQ(settings.GetParam(0, 2), 9);
  EXPECT_EQ(settings.GetParam(0, 6), 9);
  EXPECT_EQ(settings.GetParam(0, -1), 9);
  EXPECT_EQ(settings.GetParam(5, 0), 0);
}

TEST_F(ScoreSettingsTest, IEModeReplacesIndexFourEvenWithoutARow) {
  CScoreSettings settings;
  EXPECT_FALSE(settings.IsIEMode());
  EXPECT_EQ(settings.GetParam(0, 4), 1);
  EXPECT_EQ(settings.GetParam(100, 4), 0);
  settings.SetIEMode(true);
  EXPECT_TRUE(settings.IsIEMode());
  EXPECT_EQ(settings.GetParam(0, 4), 3);
  EXPECT_EQ(settings.GetParam(100, 4), 3);
  EXPECT_EQ(settings.GetParam(0, 6), 15);
  EXPECT_EQ(settings.GetParam(100, 6), 0);
}

TEST_F(ScoreSettingsTest, DamagedFileIsReplacedByTheDefaults) {
  struct Damage {
    const char* what;
    std::u16string analyze;
    std::u16string setting;
  };
  const Damage cases[] = {
      {"row that does not parse", u"{0,3,50}", kValidSetting},
      {"wrong ParamCount", u"{0,5,70,3,110,1.5,3,{9,8},{0,0,0,0,0,0,0,0}}", kValidSetting},
      {"ParamCount no list can hold", u"{0,5,70,3,110,1.5,2147483647,{9,8},{0,0,0,0,0,0,0,0}}", kValidSetting},
      {"Setting with two numbers", kValidAnalyze, u"{7,{7}}"},
      {"Analyze missing", u"", kValidSetting},
      {"Setting missing", kValidAnalyze, u""},
  };
  for (const Damage& damage : cases) {
    SCOPED_TRACE(damage.what);
    std::u16string zero = u"0";
    WriteKey(u"Version", &zero);
    WriteKey(u"Analyze", damage.analyze.empty() ? nullptr : &damage.analyze);
    WriteKey(u"Setting", damage.setting.empty() ? nullptr : &damage.setting);
    CScoreSettings settings;
    ExpectDefaults(settings);
    ExpectDefaultFileWritten();
  }
}

TEST_F(ScoreSettingsTest, StoredVersionWithoutAnalyzeIsDeletedAndRewritten) {
  CScoreSettings model;
  WriteRawFile("[Settings]\nName=Mine\nSetting={1,{2,4}}\nVersion=4\n");
  // The defaults (version 0) are refused over version 4, so the file still
  // has no Analyze afterwards and the load fails.
  CSettingParse parse(nullptr);
  EXPECT_EQ(parse.LoadSettings(&model), E_FAIL);
  EXPECT_EQ(ReadKey(u"Analyze"), u"<missing>");
  EXPECT_EQ(ReadKey(u"Version"), u"4");

  CScoreSettings settings;
  ExpectDefaults(settings);
  ExpectDefaultFileWritten();
}

TEST_F(ScoreSettingsTest, ValidFileIsLoadedAsItStands) {
  std::u16string name = u"Mine", version = u"9";
  WriteKey(u"Name", &name);
  WriteKey(u"Analyze", &kValidAnalyze);
  WriteKey(u"Setting", &kValidSetting);
  WriteKey(u"Version", &version);
  CScoreSettings settings;
  EXPECT_EQ(settings.GetName(), u"Mine");
  EXPECT_EQ(settings.GetVersion(), u"9");
  EXPECT_EQ(settings.GetSettingFirst(), 1);
  EXPECT_EQ(settings.GetSettingSecond(), 2);
  EXPECT_EQ(settings.GetIEMinRecentVisits(), 4);
  EXPECT_EQ(settings.GetMaxDays(), 5u);
  EXPECT_EQ(settings.GetDayScore(4), 70);
  EXPECT_EQ(ReadKey(u"Analyze"), kValidAnalyze);
}

TEST_F(ScoreSettingsTest, ReloadPicksUpASavedDefaultSet) {
  CScoreSettings settings;
  ASSERT_EQ(settings.GetMaxDays(), 21u);
  std::u16string text = u"Name@Work|Default@true|Ver@2|Score@" + kValidAnalyze + u"|Setting@{1,{1,6}}";
  ASSERT_EQ(CSettingParse(nullptr).SaveSetting(text.c_str(), 0), kSettingInForce);
  EXPECT_EQ(settings.GetMaxDays(), 21u);
  settings.SetIEMode(true);
  settings.Reload();
  EXPECT_EQ(settings.GetMaxDays(), 5u);
  EXPECT_EQ(settings.GetName(), u"Work");
  EXPECT_TRUE(settings.IsIEMode());
  EXPECT_EQ(settings.GetParam(0, 4), 6);
  settings.Clear();
  EXPECT_EQ(settings.GetMaxDays(), 0u);
  EXPECT_EQ(settings.GetRecencyWeight(0), 0.0f);
}

TEST_F(ScoreSettingsTest, NamedLoadReadsTheNamedFile) {
  ASSERT_EQ(CSettingParse(nullptr).SaveSetting(
                (u"Name@Work|Default@false|Ver@1|Score@" + kValidAnalyze + u"|Setting@{1,{1,1}}").c_str(), 0),
            S_OK);
  CScoreSettings settings;
  settings.Load(u"Work");
  EXPECT_EQ(settings.GetMaxDays(), 5u);
  EXPECT_EQ(settings.GetName(), u"Work");
}

TEST_F(ScoreSettingsTest, WithoutAFolderTheMessageIsShownAndTheModelIsEmpty) {
  test::ScopedEnv appData("CORVANE_APPDATA", nullptr);
  test::ScopedEnv dataHome("XDG_DATA_HOME", nullptr);
  test::ScopedEnv home("HOME", nullptr);
  ::testing::internal::CaptureStderr();
  CScoreSettings settings;
  std::string shown = ::testing::internal::GetCapturedStderr();
  EXPECT_NE(shown.find("加载配置参数出错！！！"), std::string::npos);
  EXPECT_NE(shown.find("上网-错误提示"), std::string::npos);
  EXPECT_EQ(settings.GetMaxDays(), 0u);
  EXPECT_EQ(settings.GetParam(0, 0), 0);
  EXPECT_EQ(settings.GetIEMinRecentVisits(), 0);
  EXPECT_EQ(settings.GetRecencyWeight(0), 0.0f);
}

}  // namespace
}  // namespace corvane
