// The install: the two libraries side by side, the headers, corvane.pc, the
// host (which finds the installed white list and its libraries), and the
// demo run through the real extraction library.

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "cli/cli_runner.h"
#include "support/test_host.h"

namespace corvane::testing {
namespace {

namespace fs = std::filesystem;

std::string ReadFile(const fs::path& path) {
  std::ifstream in(path);
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

TEST(CliInstallTest, InstallsLibrariesHeadersHostWhiteListAndPkgConfig) {
  test::TempDir prefix;
  std::string command = "cmake --install '" + std::string(CORVANE_BUILD_TREE) + "' --prefix '" + prefix.Path() +
                        "' > '" + prefix.File("install.log") + "' 2>&1";
  ASSERT_EQ(std::system(command.c_str()), 0) << ReadFile(prefix.File("install.log"));
  fs::path root(prefix.Path());
  fs::path lib = root / CORVANE_INSTALL_LIBDIR;
  EXPECT_TRUE(fs::exists(lib / "libCorvaneDataProvider.so"));
  EXPECT_TRUE(fs::exists(lib / "libVisitHarvest.so"));
  EXPECT_TRUE(fs::exists(root / "include/corvane/CorvaneDataProvider.h"));
  EXPECT_TRUE(fs::exists(root / "include/corvane/VisitHarvest.h"));
  EXPECT_TRUE(fs::exists(root / "share/corvane/WhiteList.js"));
  ASSERT_TRUE(fs::exists(root / "bin/corvane"));
  std::string pc = ReadFile(lib / "pkgconfig/corvane.pc");
  EXPECT_NE(pc.find("Libs: -L${libdir} -lCorvaneDataProvider"), std::string::npos) << pc;
  EXPECT_NE(pc.find("Cflags: -I${includedir}"), std::string::npos);
  // The prefix follows the file, wherever it was installed.
  std::string query = "PKG_CONFIG_PATH='" + (lib / "pkgconfig").string() + "' pkg-config --libs --cflags corvane > '" +
                      prefix.File("pc.out") + "' 2>&1";
  if (std::system("command -v pkg-config > /dev/null") == 0) {
    ASSERT_EQ(std::system(query.c_str()), 0) << ReadFile(prefix.File("pc.out"));
    std::string flags = ReadFile(prefix.File("pc.out"));
    EXPECT_NE(flags.find("-lCorvaneDataProvider"), std::string::npos) << flags;
    EXPECT_NE(flags.find("/include"), std::string::npos) << flags;
  } else {
    EXPECT_NE(pc.find("prefix=${pcfiledir}/"), std::string::npos) << pc;
  }

  // The installed host runs from its own folders: its rpath finds the
  // component and it copies the installed white list into a new data folder.
  RunResult run = RunBinary((root / "bin/corvane").string(), {"--data-dir", prefix.File("appdata"), "pins"},
                            {{"LD_LIBRARY_PATH", ""}, {"CORVANE_APPDATA", ""}});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(ReadFile(prefix.File("appdata/CorvaneApp/WhiteList.js")), ReadFile(root / "share/corvane/WhiteList.js"));
}

TEST(CliDemoTest, DemoRunsTheRealHarvestLibraryOnTheSampleProfile) {
  test::TempDir data;
  RunResult run = RunBinary(CORVANE_CLI_BINARY, {"--json", "--data-dir", data.Path(), "demo"},
                            {{"CORVANE_APPDATA", ""}, {"CORVANE_TEST_NOW", ""}});
  ASSERT_EQ(run.status, 0) << run.err;
  Json::Value demo;
  std::string error;
  ASSERT_TRUE(ParseJson(run.out, &demo, &error)) << error;
  EXPECT_EQ(demo["browser"].asString(), "Chrome");
  ASSERT_TRUE(demo["sites"].isArray());
  EXPECT_GT(demo["sites"].size(), 5u);
  EXPECT_EQ(demo["sites"][0]["kind"].asString(), "site");
  size_t withSubSites = 0;
  for (const Json::Value& site : demo["sites"]) withSubSites += site["subSites"].size() > 0 ? 1 : 0;
  EXPECT_GT(withSubSites, 0u) << demo["sites"].toStyledString();
  EXPECT_GT(demo["recent"].size() + demo["history"].size(), 0u);
  ASSERT_EQ(demo["history"].size(), 1u);
  EXPECT_GT(demo["history"][0]["visits"].size(), 0u);
  // The white list came into the data folder; the temporary home is gone.
  EXPECT_TRUE(fs::exists(data.File("CorvaneApp/WhiteList.js")));
}

}  // namespace
}  // namespace corvane::testing
