// settings_test_env.h: a fresh application-data folder for each settings
// test, and direct access to the settings files in it.

#ifndef CORVANE_TESTS_SETTINGS_SETTINGS_TEST_ENV_H_
#define CORVANE_TESTS_SETTINGS_SETTINGS_TEST_ENV_H_

#include <gtest/gtest.h>

#include <fstream>

#include "common/utf.h"
#include "platform/ini_file.h"
#include "platform/paths.h"
#include "settings/setting_parse.h"
#include "support/test_host.h"

namespace corvane::test {

class SettingsTestBase : public ::testing::Test {
 protected:
  SettingsTestBase() { static_cast<void>(CreateDirectories(FromUtf8(m_dir.File("CorvaneApp")))); }

  // Settings<name>.ini in the data folder, UTF-8 and UTF-16.
  std::string SettingsFile(const std::string& name = "") const {
    return m_dir.File("CorvaneApp/Settings" + name + ".ini");
  }
  std::u16string SettingsPath(const std::u16string& name = u"") const { return FromUtf8(SettingsFile(ToUtf8(name))); }
  bool Exists(const std::string& name = "") const { return PathFileExists(FromUtf8(SettingsFile(name))); }

  // Sets the key; a null value deletes it.
  void WriteKey(const std::u16string& key, const char16_t* value, const std::u16string& name = u"") const {
    const std::u16string text = value != nullptr ? value : u"";
    ASSERT_TRUE(WriteProfileString(SettingsPath(name), u"Settings", key, value != nullptr ? &text : nullptr));
  }
  // SaveSetting through a parser of the file in force, as the provider calls it.
  static HRESULT Save(const std::u16string& text, int32_t force) {
    return CSettingParse(nullptr).SaveSetting(text.c_str(), force);
  }

  TempDir m_dir;
  ScopedEnv m_appData{"CORVANE_APPDATA", m_dir.Path().c_str()};
};

}  // namespace corvane::test

#endif  // CORVANE_TESTS_SETTINGS_SETTINGS_TEST_ENV_H_
