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

}  // namespace
}  // namespace corvane
