// The provider as a host sees it: loaded by path, created through the class
// object, with the data folder in a temporary place.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <optional>

#include "platform/ini_file.h"
#include "support/test_host.h"

namespace corvane::test {
namespace {

// "Now", and the stamp an update writes for it.
constexpr char kNow[] = "2024-03-05 09:07:03.041";
constexpr char16_t kNowStamp[] = u"2024.03.05 2 09:07:03.041";

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

std::u16string U16(const std::string& text) { return std::u16string(text.begin(), text.end()); }

class ProviderTest : public ::testing::Test {
 protected:
  ProviderTest() : m_appData("CORVANE_APPDATA", m_dir.Path().c_str()), m_now("CORVANE_TEST_NOW", kNow) {}

  std::string DataFile(const std::string& name) const { return m_dir.Path() + "/CorvaneApp/" + name; }
  std::u16string Config(std::u16string_view key, std::u16string_view missing = u"") const {
    return ReadProfileString(U16(DataFile("DBConfig.ini")), u"DBConfig", key, missing, 260);
  }
  std::u16string SettingsKey(std::u16string_view key) const {
    return ReadProfileString(U16(DataFile("Settings.ini")), u"Settings", key, u"", 1020);
  }
  // "Name Version Analyze" of Settings.ini.
  std::u16string Settings() const {
    return SettingsKey(u"Name") + u" " + SettingsKey(u"Version") + u" " + SettingsKey(u"Analyze");
  }
  void WriteDataFile(const std::string& name, const std::string& content) {
    std::filesystem::create_directories(m_dir.Path() + "/CorvaneApp");
    std::ofstream(DataFile(name), std::ios::binary) << content;
  }
  // Initializes m_provider, made anew unless kept, with the text (null
  // without).
  HRESULT Initialize(const std::u16string* param = nullptr, bool keep = false) {
    if (!keep) m_provider = CreateProvider();
    if (!m_provider) return E_FAIL;
    if (param == nullptr) return m_provider->Initialize(nullptr);
    Bstr text(*param);
    return m_provider->Initialize(text.Get());
  }

  TempDir m_dir;
  ScopedEnv m_appData;
  ScopedEnv m_now;
  ComPtr<ICorvaneDataProviderObject> m_provider;
};

TEST_F(ProviderTest, GateRunsOncePerDateAndForceAlwaysRuns) {
  ASSERT_EQ(Initialize(), S_OK);
  ComPtr<ICorvaneDataProviderObject> first = std::move(m_provider);
  {
    // Later the same day, from a new object: the gate stays shut.
    ScopedEnv later("CORVANE_TEST_NOW", "2024-03-05 23:59:00");
    EXPECT_EQ(Initialize(), S_OK);
    EXPECT_EQ(Config(u"LastUpdate"), kNowStamp);
    EXPECT_EQ(Config(u"LastUpdateBK", u"<absent>"), u"<absent>");
    // Forcing runs the cycle and keeps the stamp before it.
    EXPECT_EQ(m_provider->ForceUpdateData(), S_OK);
    EXPECT_EQ(Config(u"LastUpdate"), u"2024.03.05 2 23:59:00.000");
    EXPECT_EQ(Config(u"LastUpdateBK"), kNowStamp);
  }
  // The clock set back a day opens the gate as well: inequality, not order.
  ScopedEnv back("CORVANE_TEST_NOW", "2024-03-04 10:00:00");
  EXPECT_EQ(first->Initialize(nullptr), S_OK);
  EXPECT_EQ(Config(u"LastUpdate"), u"2024.03.04 1 10:00:00.000");
  EXPECT_EQ(Config(u"LastUpdateBK"), u"2024.03.05 2 23:59:00.000");
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
TEST_F(ProviderTest, SettingsCommandsSaveAndReload) {
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
    SCOPED_TRACE(testing::Message() << "case " << (&c - cases));
    m_provider.Reset();
    std::filesystem::remove_all(m_dir.Path() + "/CorvaneApp");
    if (!c.before.empty()) WriteDataFile("Settings.ini", c.before);
    m_provider = CreateProvider();
    ASSERT_TRUE(m_provider);
    if (!c.before.empty()) {
      EXPECT_EQ(Settings(), kDefaults);
    }
    if (!c.after.empty()) WriteDataFile("Settings.ini", c.after);
    ASSERT_EQ(Initialize(c.param ? &*c.param : nullptr, true), S_OK);
    EXPECT_EQ(Settings(), c.settings);
    EXPECT_EQ(Config(u"LastUpdate"), kNowStamp);
  }
}


}  // namespace
}  // namespace corvane::test
