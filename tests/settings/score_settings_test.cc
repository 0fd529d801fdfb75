#include "settings/score_settings.h"

#include <gtest/gtest.h>

#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "settings/setting_parse.h"
#include "settings/settings_test_env.h"

namespace corvane {
namespace {

using Numbers = std::vector<int64_t>;
constexpr char16_t kSetting[] = u"{1,{2,4}}";
constexpr char16_t kAnalyze[] = u"{0,5,70,3,110,1.5,2,{9,8},{0,0,0,0,0,0,0,0}}";

class ScoreSettingsTest : public test::SettingsTestBase {
 protected:
  // Writes the values into Settings.ini; a null value leaves the key out.
  void WriteFile(const char16_t* analyze, const char16_t* setting, const char16_t* version = u"0") const {
    WriteKey(u"Version", version);
    WriteKey(u"Analyze", analyze);
    WriteKey(u"Setting", setting);
  }
  // The three numbers of "Setting" and the days the rows cover.
  static Numbers SettingAndDays(const CScoreSettings& s) {
    return {s.GetSettingFirst(), s.GetSettingSecond(), s.GetIEMinRecentVisits(), s.GetMaxDays()};
  }
  // Expects the built-in defaults in the model, which has read them back from
  // Settings.ini.
  void ExpectDefaults(const CScoreSettings& settings) const {
    EXPECT_EQ(settings.GetName() + u"|" + settings.GetVersion(), u"Default|0");
    EXPECT_EQ(SettingAndDays(settings), (Numbers{7, 7, 3, 21}));
    EXPECT_FLOAT_EQ(settings.GetRecencyWeight(8), 1.2f);
  }
};

TEST_F(ScoreSettingsTest, RowsAreHalfOpenCompareUnsignedAndTheEarlierRowWins) {
  const std::u16string tail = u",0,0,1.0,1,{1},{0,0,0,0,0,0,0,0}}";
  WriteFile((u"{5,10,1" + tail + u";{0,3,2" + tail + u";{2,20,3" + tail).c_str(), kSetting);
  CScoreSettings overlapping;
  for (const auto& [day, score] : {std::pair<uint32_t, int32_t>{2, 2}, {3, 3}, {5, 1}, {10, 3}, {20, 0}}) {
    EXPECT_EQ(overlapping.GetDayScore(day), score) << day;
  }
  EXPECT_EQ(overlapping.GetMaxDays(), 20u);
  WriteFile((u"{-5,-1,4" + tail).c_str(), kSetting);
  CScoreSettings negative;
  EXPECT_EQ((Numbers{negative.GetDayScore(0), negative.GetDayScore(0xFFFFFFFBu), negative.GetMaxDays()}),
            (Numbers{0, 4, 0xFFFFFFFF}));
}

TEST_F(ScoreSettingsTest, ValidFileIsLoadedAsItStandsAndGetParamPastParamCountGivesTheFirstEntry) {
  WriteFile(kAnalyze, kSetting, u"9");
  WriteKey(u"Name", u"Mine");
  CScoreSettings settings;
  EXPECT_EQ(settings.GetName() + u"|" + settings.GetVersion(), u"Mine|9");
  EXPECT_EQ(SettingAndDays(settings), (Numbers{1, 2, 4, 5}));
  EXPECT_EQ((Numbers{settings.GetDayScore(4), settings.GetVisitScore(4), settings.GetFavoritePercent(4)}),
            (Numbers{70, 3, 110}));
  EXPECT_FLOAT_EQ(settings.GetRecencyWeight(4), 1.5f);
  EXPECT_EQ(ReadKey(u"Analyze"), kAnalyze);
  for (const auto& [index, value] : {std::pair<int32_t, int32_t>{0, 9}, {1, 8}, {2, 9}, {6, 9}, {-1, 9}}) {
    EXPECT_EQ(settings.GetParam(0, index), value) << index;
  }
  EXPECT_EQ(settings.GetParam(5, 0), 0);
}

TEST_F(ScoreSettingsTest, IEModeReplacesIndexFourEvenWithoutARowAndOutlivesAReload) {
  CScoreSettings settings;
  EXPECT_EQ((Numbers{settings.GetParam(0, 4), settings.GetParam(100, 4)}), (Numbers{1, 0}));
  settings.SetIEMode(true);
  EXPECT_EQ((Numbers{settings.GetParam(0, 4), settings.GetParam(100, 4)}), (Numbers{3, 3}));
  EXPECT_EQ((Numbers{settings.GetParam(0, 6), settings.GetParam(100, 6)}), (Numbers{15, 0}));
  // A saved set is read at the next reload only.
  ASSERT_EQ(Save(u"Name@Work|Default@true|Ver@2|Score@" + std::u16string(kAnalyze) + u"|Setting@{1,{1,6}}", 0),
            kSettingInForce);
  EXPECT_EQ(settings.GetMaxDays(), 21u);
  settings.Reload();
  EXPECT_EQ(settings.GetName(), u"Work");
  EXPECT_EQ(SettingAndDays(settings), (Numbers{1, 1, 6, 5}));
  EXPECT_EQ(settings.GetParam(100, 4), 6);
  settings.Clear();
  EXPECT_EQ(settings.GetMaxDays(), 0u);
}

TEST_F(ScoreSettingsTest, MissingOrDamagedFileIsReplacedByTheDefaults) {
  const std::pair<const char16_t*, const char16_t*> cases[] = {
      {u"{0,3,50}", kSetting},                                               // a row that does not parse
      {u"{0,5,70,3,110,1.5,3,{9,8},{0,0,0,0,0,0,0,0}}", kSetting},           // wrong ParamCount
      {u"{0,5,70,3,110,1.5,2147483647,{9,8},{0,0,0,0,0,0,0,0}}", kSetting},  // ParamCount no list can hold
      {kAnalyze, u"{7,{7}}"},                                                // Setting with two numbers
      {nullptr, kSetting},                                                   // Analyze missing
      {kAnalyze, nullptr},                                                   // Setting missing
  };
  // No file at all: the first start.
  ExpectDefaults(CScoreSettings());
  EXPECT_FALSE(Exists("Default"));
  for (size_t i = 0; i < std::size(cases); ++i) {
    SCOPED_TRACE(i);
    WriteFile(cases[i].first, cases[i].second);
    ExpectDefaults(CScoreSettings());
  }
}

TEST_F(ScoreSettingsTest, StoredVersionWithoutAnalyzeIsDeletedAndRewritten) {
  CScoreSettings model;
  WriteRawFile("[Settings]\nName=Mine\nSetting={1,{2,4}}\nVersion=4\n");
  // The defaults (version 0) are refused over version 4, so the file still
  // has no Analyze afterwards and the load fails.
  EXPECT_EQ(CSettingParse(nullptr).LoadSettings(&model), E_FAIL);
  EXPECT_EQ(ReadKey(u"Analyze") + ReadKey(u"Version"), u"<missing>4");
  ExpectDefaults(CScoreSettings());
}

// Without an application-data folder there is no settings file: a save
// fails, and the model stays empty behind the one error message.
TEST_F(ScoreSettingsTest, WithoutAFolderTheMessageIsShownAndTheModelIsEmpty) {
  test::ScopedEnv appData("CORVANE_APPDATA", nullptr);
  test::ScopedEnv dataHome("XDG_DATA_HOME", nullptr);
  test::ScopedEnv home("HOME", nullptr);
  EXPECT_EQ(CSettingParse(nullptr).SaveSetting(kDefaultSettingText, 1), E_FAIL);
  ::testing::internal::CaptureStderr();
  CScoreSettings settings;
  const std::string shown = ::testing::internal::GetCapturedStderr();
  EXPECT_NE(shown.find("加载配置参数出错！！！"), std::string::npos);
  EXPECT_NE(shown.find("上网-错误提示"), std::string::npos);
  EXPECT_EQ(SettingAndDays(settings), (Numbers{0, 0, 0, 0}));
  EXPECT_EQ(settings.GetParam(0, 0), 0);
}

}  // namespace
}  // namespace corvane
