// settings_test_env.h: a fresh application-data folder for each settings
// test, and direct access to the settings files in it.

#ifndef CORVANE_TESTS_SETTINGS_SETTINGS_TEST_ENV_H_
#define CORVANE_TESTS_SETTINGS_SETTINGS_TEST_ENV_H_

#include <gtest/gtest.h>

#include <string>

#include "support/test_host.h"

namespace corvane::test {

class SettingsTestBase : public ::testing::Test {
 protected:
  SettingsTestBase();

  // Settings<name>.ini in the data folder, UTF-16 and UTF-8.
  std::u16string SettingsPath(const std::u16string& name = u"") const;
  std::string SettingsFile(const std::string& name = "") const;

  bool Exists(const std::string& name = "") const;
  std::u16string ReadKey(const std::u16string& key, const std::u16string& name = u"") const;
  void WriteKey(const std::u16string& key, const std::u16string* value, const std::u16string& name = u"") const;

  // Writes a whole Settings.ini by hand.
  void WriteRawFile(const std::string& content) const;

  TempDir m_dir;
  ScopedEnv m_appData;
};

}  // namespace corvane::test

#endif  // CORVANE_TESTS_SETTINGS_SETTINGS_TEST_ENV_H_
