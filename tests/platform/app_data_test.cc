// Where the per-user files lie: the order in which the variables are asked.

#include "platform/app_data.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "common/utf.h"
#include "support/test_host.h"

namespace corvane {
namespace {

using test::ScopedEnv;

// The folder found, or "<none>" and what the output held before.
std::u16string AppDataFolder() {
  std::u16string folder = u"untouched";
  return GetAppDataFolder(&folder) ? folder : u"<none>" + folder;
}

TEST(AppDataTest, OwnVariableThenXdgDataHomeThenHome) {
  test::TempDir dir;
  ScopedEnv own("CORVANE_APPDATA", "/data/own");
  ScopedEnv xdg("XDG_DATA_HOME", "/data/xdg");
  ScopedEnv home("HOME", dir.Path().c_str());
  EXPECT_EQ(AppDataFolder(), u"/data/own");
  ScopedEnv emptyOwn("CORVANE_APPDATA", "");
  EXPECT_EQ(AppDataFolder(), u"/data/xdg");
  ScopedEnv noOwn("CORVANE_APPDATA", nullptr);
  ScopedEnv emptyXdg("XDG_DATA_HOME", "");
  // The data folder is created with its parents.
  std::u16string folder;
  ASSERT_TRUE(GetDataFolder(&folder));
  EXPECT_EQ(folder, FromUtf8(dir.Path() + "/.local/share/CorvaneApp"));
  EXPECT_TRUE(std::filesystem::is_directory(dir.Path() + "/.local/share/CorvaneApp"));
  ScopedEnv noXdg("XDG_DATA_HOME", nullptr);
  ScopedEnv noHome("HOME", "");
  EXPECT_EQ(AppDataFolder(), u"<none>untouched");
  EXPECT_FALSE(GetDataFolder(&folder));
}

}  // namespace
}  // namespace corvane
