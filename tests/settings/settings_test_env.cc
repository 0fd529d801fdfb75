#include "settings/settings_test_env.h"

#include <fstream>

#include "common/utf.h"
#include "platform/ini_file.h"
#include "platform/paths.h"

namespace corvane::test {

SettingsTestBase::SettingsTestBase() : m_appData("CORVANE_APPDATA", m_dir.Path().c_str()) {
  static_cast<void>(CreateDirectories(FromUtf8(m_dir.File("CorvaneApp"))));
}

std::u16string SettingsTestBase::SettingsPath(const std::u16string& name) const {
  return FromUtf8(SettingsFile(ToUtf8(name)));
}

std::string SettingsTestBase::SettingsFile(const std::string& name) const {
  return m_dir.File("CorvaneApp/Settings" + name + ".ini");
}

bool SettingsTestBase::Exists(const std::string& name) const { return PathFileExists(FromUtf8(SettingsFile(name))); }

std::u16string SettingsTestBase::ReadKey(const std::u16string& key, const std::u16string& name) const {
  return ReadProfileString(SettingsPath(name), u"Settings", key, u"<missing>", 4096);
}

void SettingsTestBase::WriteKey(const std::u16string& key, const std::u16string* value,
                                const std::u16string& name) const {
  ASSERT_TRUE(WriteProfileString(SettingsPath(name), u"Settings", key, value));
}

void SettingsTestBase::WriteRawFile(const std::string& content) const {
  std::ofstream out(SettingsFile(), std::ios::binary | std::ios::trunc);
  out << content;
  ASSERT_TRUE(out.good());
}

}  // namespace corvane::test
