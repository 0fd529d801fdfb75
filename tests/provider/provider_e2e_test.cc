// The provider as a host sees it: loaded by path, created through the class
// object, with the data folder in a temporary place.

#include <filesystem>
#include <fstream>
#include <optional>

#include "common/utf.h"
#include "intake/provider_host.h"
#include "platform/ini_file.h"

namespace corvane::testing {
namespace {

// The stamp an update writes for the fixture's "now".
constexpr char kNowStamp[] = "2024.03.10 0 20:00:00.000";

// Settings() of the built-in set: its "Score" rows as Settings.ini stores them.
const std::u16string kDefaults =
    u"Default 0 {0,3,50,1,130,2.0,7,{10,2,7,7,1,15,15},{0,0,0,0,0,0,0,0}};"
    u"{3,7,50,1,130,1.5,7,{10,2,7,7,1,15,15},{0,0,0,0,0,0,0,0}};"
    u"{7,15,50,1,130,1.2,7,{10,2,7,7,1,15,15},{0,0,0,0,0,0,0,0}};"
    u"{15,21,50,1,130,1.0,7,{10,2,7,7,1,15,15},{0,0,0,0,0,0,0,0}};";

// One score row for days 0 to 30, with its day score and ParamCount.
std::u16string AnalyzeRow(std::u16string_view dayScore, std::u16string_view paramCount = u"7") {
  return u"{0,30," + std::u16string(dayScore) + u",1,130,2.0," + std::u16string(paramCount) +
         u",{10,2,7,7,1,15,15},{0,0,0,0,0,0,0,0}}";
}

// A settings text for the file in force whose one row gives each day the
// score number dayScore.
std::u16string InForceSet(std::u16string_view name, std::u16string_view version, std::u16string_view dayScore,
                          std::u16string_view paramCount = u"7") {
  return u"Name@" + std::u16string(name) + u"|Default@true|Ver@" + std::u16string(version) + u"|Score@" +
         AnalyzeRow(dayScore, paramCount) + u"|Setting@{7,{7,3}}";
}

class ProviderCycleTest : public ProviderTest {
 protected:
  // "Name Version Analyze" of Settings.ini.
  std::u16string Settings() const {
    std::u16string text;
    for (const char16_t* key : {u"Name", u"Version", u"Analyze"}) {
      text += (text.empty() ? u"" : u" ") + ReadProfileString(FromUtf8(DataFile("Settings.ini")), u"Settings", key, u"", 1020);
    }
    return text;
  }
  void WriteDataFile(const std::string& name, const std::string& content) {
    std::filesystem::create_directories(m_dir.Path() + "/CorvaneApp");
    std::ofstream(DataFile(name), std::ios::binary) << content;
  }
};

TEST_F(ProviderCycleTest, GateRunsOncePerDateAndForceAlwaysRuns) {
  ComPtr<ICorvaneDataProviderObject> first, again;
  ASSERT_EQ(Start(&first), S_OK);
  {
    // Later the same day, from a new object: the gate stays shut.
    test::ScopedEnv later("CORVANE_TEST_NOW", "2024-03-10 23:59:00");
    EXPECT_EQ(Start(&again), S_OK);
    EXPECT_EQ(Config("LastUpdate") + " " + Config("LastUpdateBK"), std::string(kNowStamp) + " " + kAbsent);
    // Forcing runs the cycle and keeps the stamp before it.
    EXPECT_EQ(again->ForceUpdateData(), S_OK);
    EXPECT_EQ(Config("LastUpdate") + " / " + Config("LastUpdateBK"), "2024.03.10 0 23:59:00.000 / " + std::string(kNowStamp));
  }
  // The clock set back a day opens the gate as well: inequality, not order.
  test::ScopedEnv back("CORVANE_TEST_NOW", "2024-03-09 10:00:00");
  EXPECT_EQ(first->Initialize(nullptr), S_OK);
  EXPECT_EQ(Config("LastUpdate") + " / " + Config("LastUpdateBK"), "2024.03.09 6 10:00:00.000 / 2024.03.10 0 23:59:00.000");
}

// Each case on a fresh data folder. "Settings" is handled first, whatever
// the order of the text; a set is saved when it is newer than the stored
// one, or forced over a stored version of 0. Each save, refused or not, is
// followed by a reload, which replaces a file damaged after the provider was
// made by the built-in set; had the reload come first, the rewritten version
// 0 would have let a set of version 1 in. Without a command (no text, an
// empty text) nothing reloads and the cycle runs alike. A ParamCount far
// beyond what a row's list can hold once had its zeros allocated first and
// ended the host: in a file it is replaced when the provider is made, in a
// command it is refused.
TEST_F(ProviderCycleTest, SettingsCommandsSaveAndReload) {
  const std::string damaged = "[Settings]\nName=Default\nVersion=9\nAnalyze={0,3,50}\nSetting={7,{7,3}}\nDefault=true\n";
  const std::string huge = "[Settings]\nName=Huge\nAnalyze={0,30,77,1,130,2.0,2147483647,{10,2},{0,0,0,0,0,0,0,0}}\n"
                           "Setting={7,{7,3}}\nVersion=5\nDefault=true\n";
  const std::u16string kDamaged = u"Default 9 {0,3,50}", kTuned = u"Tuned 1 " + AnalyzeRow(u"77");
  const struct {
    std::optional<std::u16string> param;
    std::string before, after;  // Settings.ini before and after the provider is made
    std::u16string settings;
  } cases[] = {
      {u"-ForceSettings=" + InForceSet(u"Forced", u"1", u"88") + u" -Settings=" + InForceSet(u"Tuned", u"1", u"77"), "",
       "", kTuned},
      {u"-Settings=" + InForceSet(u"Zero", u"0", u"66"), "", "", kDefaults},
      {u"-forcesettings=" + InForceSet(u"Zero", u"0", u"66"), "", "", u"Zero 0 " + AnalyzeRow(u"66")},
      {std::nullopt, "", damaged, kDamaged},
      {u"", "", damaged, kDamaged},
      {u"-Settings", "", damaged, kDefaults},
      {u"-Settings=" + InForceSet(u"Tuned", u"1", u"77"), "", damaged, kDefaults},
      {u"-ForceSettings=" + InForceSet(u"Huge", u"5", u"77", u"2147483647"), huge, "", kDefaults},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(::testing::Message() << "case " << (&c - cases));
    std::filesystem::remove_all(m_dir.Path() + "/CorvaneApp");
    if (!c.before.empty()) WriteDataFile("Settings.ini", c.before);
    ComPtr<ICorvaneDataProviderObject> provider = test::CreateProvider();
    ASSERT_TRUE(provider);
    if (!c.before.empty()) {
      EXPECT_EQ(Settings(), kDefaults);
    }
    if (!c.after.empty()) WriteDataFile("Settings.ini", c.after);
    test::Bstr param(c.param.value_or(u""));
    ASSERT_EQ(provider->Initialize(c.param ? param.Get() : nullptr), S_OK);
    EXPECT_EQ(Settings(), c.settings);
    EXPECT_EQ(Config("LastUpdate"), kNowStamp);
  }
}


}  // namespace
}  // namespace corvane::testing
