// Where the per-user files lie: the order in which the variables are asked.

#include "platform/app_data.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "common/utf.h"
#include "support/test_host.h"

namespace corvane {
namespace {

using test::ScopedEnv;

TEST(AppDataTest, OwnVariableThenXdgDataHomeThenHome) {
  ScopedEnv own("CORVANE_APPDATA", "/data/own");
  ScopedEnv xdg("XDG_DATA_HOME", "/data/xdg");
  ScopedEnv home("HOME", "/home/someone");
  std::u16string folder;
  ASSERT_TRUE(GetAppDataFolder(&folder));
  EXPECT_EQ(folder, u"/data/own");
  {
    ScopedEnv empty("CORVANE_APPDATA", "");
    ASSERT_TRUE(GetAppDataFolder(&folder));
    EXPECT_EQ(folder, u"/data/xdg");
  }
  {
    ScopedEnv unset("CORVANE_APPDATA", nullptr);
    ScopedEnv emptyXdg("XDG_DATA_HOME", "");
    ASSERT_TRUE(GetAppDataFolder(&folder));
    EXPECT_EQ(folder, u"/home/someone/.local/share");
  }
  ScopedEnv noOwn("CORVANE_APPDATA", nullptr);
  ScopedEnv noXdg("XDG_DATA_HOME", nullptr);
  ScopedEnv noHome("HOME", "");
  folder = u"untouched";
  EXPECT_FALSE(GetAppDataFolder(&folder));
  EXPECT_EQ(folder, u"untouched");
  EXPECT_FALSE(GetDataFolder(&folder));
}

TEST(AppDataTest, DataFolderIsCreatedWithItsParents) {
  test::TempDir dir;
  ScopedEnv own("CORVANE_APPDATA", nullptr);
  ScopedEnv xdg("XDG_DATA_HOME", nullptr);
  ScopedEnv home("HOME", dir.Path().c_str());
  std::u16string folder;
  ASSERT_TRUE(GetDataFolder(&folder));
  EXPECT_EQ(folder, FromUtf8(dir.Path() + "/.local/share/CorvaneApp"));
  EXPECT_TRUE(std::filesystem::is_directory(dir.Path() + "/.local/share/CorvaneApp"));
}

}  // namespace
}  // namespace corvane
