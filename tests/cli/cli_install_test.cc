// The install: the two libraries side by side, the headers, corvane.pc, the
// host (which finds the installed white list and its libraries), and the
// demo run through the real extraction library on the sample profile.

#include <gtest/gtest.h>
#include <sqlite3.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>

#include "cli/cli_runner.h"
#include "cli/demo_profile.h"
#include "cli/score_bands.h"
#include "harvest/fixture/profile_fixture.h"
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

// The local dates with visits of a Chromium History file, and for each
// host the dates it was visited on.
struct ProfileDays {
  std::set<int> dates;  // yyyymmdd
  std::map<std::string, std::set<int>> byHost;
};

ProfileDays ReadProfileDays(const std::string& historyPath) {
  ProfileDays days;
  sqlite3* db = nullptr;
  EXPECT_EQ(sqlite3_open_v2(historyPath.c_str(), &db, SQLITE_OPEN_READONLY, nullptr), SQLITE_OK);
  sqlite3_stmt* stmt = nullptr;
  EXPECT_EQ(sqlite3_prepare_v2(db, "select urls.url, visits.visit_time from visits join urls on urls.id = visits.url",
                               -1, &stmt, nullptr),
            SQLITE_OK)
      << sqlite3_errmsg(db);
  while (stmt != nullptr && sqlite3_step(stmt) == SQLITE_ROW) {
    std::string url = reinterpret_cast<const char*>(sqlite3_column_text(stmt, 0));
    size_t start = url.find("://") + 3;
    std::string host = url.substr(start, url.find('/', start) - start);
    // Chromium counts microseconds since 1601 in UTC; the analysis counts
    // local days.
    time_t seconds = static_cast<time_t>(sqlite3_column_int64(stmt, 1) / 1000000 - 11644473600LL);
    struct tm local {};
    localtime_r(&seconds, &local);
    int date = (local.tm_year + 1900) * 10000 + (local.tm_mon + 1) * 100 + local.tm_mday;
    days.dates.insert(date);
    days.byHost[host].insert(date);
  }
  sqlite3_finalize(stmt);
  sqlite3_close(db);
  return days;
}

// For each popular site of the fixture: on how many of the newest span
// dates with visits its most visited host was opened. Fifty points a day
// are the main part of every score.
std::map<std::string, size_t> DaysOfEachSite(const ProfileDays& profile, size_t span) {
  std::set<int> analysed;
  for (auto date = profile.dates.rbegin(); date != profile.dates.rend() && analysed.size() < span; ++date) {
    analysed.insert(*date);
  }
  std::map<std::string, size_t> days;
  for (const fixture::PopularSite& site : fixture::PopularSites()) {
    for (const std::string& host : site.hosts) {
      auto found = profile.byHost.find(host);
      if (found == profile.byHost.end()) continue;
      size_t count = 0;
      for (int date : found->second) count += analysed.count(date);
      days[site.mainDomain] = std::max(days[site.mainDomain], count);
    }
  }
  return days;
}

class CliDemoTest : public ::testing::Test {
 protected:
  // The demo's output in JSON, on a data folder that it keeps.
  Json::Value RunDemo() {
    RunResult run = RunBinary(CORVANE_CLI_BINARY, {"--json", "--data-dir", m_data.Path(), "demo"},
                              {{"CORVANE_APPDATA", ""}, {"CORVANE_TEST_NOW", ""}});
    EXPECT_EQ(run.status, 0) << run.err;
    Json::Value demo;
    std::string error;
    EXPECT_TRUE(ParseJson(run.out, &demo, &error)) << error;
    return demo;
  }

  RunResult Run(std::vector<std::string> args) {
    args.insert(args.begin(), {"--data-dir", m_data.Path()});
    return RunBinary(CORVANE_CLI_BINARY, args, {{"CORVANE_APPDATA", ""}, {"CORVANE_TEST_NOW", ""}});
  }

  test::TempDir m_data;
};

// Sampling makes neighbours swap: a site seen on two days more than another
// may still score a little less. Beyond that the order must hold.
constexpr size_t kDayNoise = 2;

TEST_F(CliDemoTest, DemoRanksTheSampleProfilesSitesInTheOrderOfTheirDays) {
  Json::Value demo = RunDemo();
  EXPECT_EQ(demo["browser"].asString(), "Chrome");
  EXPECT_EQ(demo["dataFolder"].asString(), m_data.File("CorvaneApp"));
  EXPECT_TRUE(demo["update"]["updated"].asBool());
  const Json::Value& sites = demo["sites"];
  ASSERT_EQ(sites.size(), 15u) << sites.toStyledString();

  // The same profile, written again, as the expectation.
  test::TempDir home;
  std::string error;
  ASSERT_TRUE(fixture::WriteChromiumProfile(home.Path(), cli::DemoProfileSpec(), &error)) << error;
  size_t span = cli::LoadScoreModel(m_data.File("CorvaneApp")).MaxDays();
  ASSERT_EQ(span, 21u);
  std::map<std::string, size_t> days = DaysOfEachSite(ReadProfileDays(fixture::ChromiumHistoryPath(home.Path())), span);

  std::vector<size_t> listed;
  std::string order;
  for (const Json::Value& site : sites) {
    ASSERT_EQ(site["kind"].asString(), "site");
    ASSERT_TRUE(days.count(site["mainDomain"].asString())) << site["mainDomain"].asString();
    listed.push_back(days[site["mainDomain"].asString()]);
    order += site["mainDomain"].asString() + "=" + std::to_string(listed.back()) + " ";
  }
  size_t most = 0;
  for (const auto& [main, count] : days) most = std::max(most, count);
  EXPECT_EQ(listed.front(), most) << order;
  for (size_t i = 0; i < listed.size(); ++i) {
    for (size_t j = i + 1; j < listed.size(); ++j) EXPECT_LE(listed[j], listed[i] + kDayNoise) << order;
  }
  // No site seen clearly more often than the last one shown is missing.
  for (const auto& [main, count] : days) {
    if (count <= listed.back() + kDayNoise) continue;
    bool shown = false;
    for (const Json::Value& site : sites) shown = shown || site["mainDomain"].asString() == main;
    EXPECT_TRUE(shown) << main << " seen on " << count << " days; " << order;
  }
}

TEST_F(CliDemoTest, DemoShowsSubSitesWithTheIdsThatHideTakesAndKeepsItsDataFolder) {
  Json::Value demo = RunDemo();
  ASSERT_GT(demo["recent"].size(), 0u);
  ASSERT_EQ(demo["history"].size(), 1u);
  EXPECT_GT(demo["history"][0]["visits"].size(), 0u);
  EXPECT_TRUE(fs::exists(m_data.File("CorvaneApp/WhiteList.js")));
  // Each nested sub-site carries the ID of its host's row, as explain
  // finds it, and "hide site" takes it.
  Json::Value sub;
  for (const Json::Value& site : demo["sites"]) {
    for (const Json::Value& nested : site["subSites"]) {
      EXPECT_EQ(nested["kind"].asString(), "part");
      EXPECT_GT(nested["id"].asUInt(), 1u) << nested.toStyledString();
      if (!sub.isObject()) sub = nested;
    }
  }
  ASSERT_TRUE(sub.isObject()) << demo["sites"].toStyledString();
  RunResult explain = Run({"--json", "explain", sub["domain"].asString()});
  ASSERT_EQ(explain.status, 0) << explain.err;
  Json::Value facts;
  std::string error;
  ASSERT_TRUE(ParseJson(explain.out, &facts, &error)) << error;
  bool found = false;
  for (const Json::Value& row : facts["ranked"]) {
    found = found || (row["table"].asString() == "TRecommendDomain" && row["id"].asUInt() == sub["id"].asUInt());
  }
  EXPECT_TRUE(found) << facts.toStyledString();
  RunResult hidden = Run({"hide", "site", sub["id"].asString()});
  EXPECT_EQ(hidden.status, 0) << hidden.err;

  // A second demo on the same folder would mix its visits into it.
  RunResult again = Run({"demo"});
  EXPECT_EQ(again.status, 1);
  EXPECT_TRUE(again.out.empty());
  EXPECT_EQ(std::count(again.err.begin(), again.err.end(), '\n'), 1) << again.err;
  EXPECT_NE(again.err.find(m_data.File("CorvaneApp/CorvaneAppDB.db")), std::string::npos) << again.err;
  RunResult help = Run({"demo", "--help"});
  EXPECT_NE(help.out.find("holds no\ndatabase yet"), std::string::npos) << help.out;
}

TEST_F(CliDemoTest, DemoWithoutADataFolderLeavesNoneBehind) {
  test::TempDir appData;
  RunResult run =
      RunBinary(CORVANE_CLI_BINARY, {"demo"}, {{"CORVANE_APPDATA", appData.Path()}, {"CORVANE_TEST_NOW", ""}});
  ASSERT_EQ(run.status, 0) << run.err;
  // The folder it names is a temporary one, removed at the end; the
  // application-data folder of the environment is not touched.
  size_t at = run.out.find("Data folder:");
  ASSERT_NE(at, std::string::npos) << run.out;
  std::string line = run.out.substr(at, run.out.find('\n', at) - at);
  EXPECT_NE(line.find("(removed at the end)"), std::string::npos) << line;
  std::string folder = line.substr(line.find('/'), line.find(" (") - line.find('/'));
  EXPECT_FALSE(fs::exists(folder)) << folder;
  EXPECT_TRUE(fs::is_empty(appData.Path()));
  EXPECT_NE(run.out.find("Browser read: Chrome"), std::string::npos) << run.out;
}

std::string ReadBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream bytes;
  bytes << in.rdbuf();
  return bytes.str();
}

std::string FindChromium() {
  if (access("/usr/bin/chromium", X_OK) == 0) return "/usr/bin/chromium";
  const char* path = std::getenv("PATH");
  std::stringstream folders(path != nullptr ? path : "");
  for (std::string folder; std::getline(folders, folder, ':');) {
    if (!folder.empty() && access((folder + "/chromium").c_str(), X_OK) == 0) return folder + "/chromium";
  }
  return std::string();
}

// Width and height from the IHDR chunk that starts every PNG file.
bool PngSize(const std::string& bytes, uint32_t* lpWidth, uint32_t* lpHeight) {
  if (bytes.size() < 24 || bytes.compare(0, 8, "\x89PNG\r\n\x1a\n") != 0 || bytes.compare(12, 4, "IHDR") != 0) {
    return false;
  }
  auto word = [&](size_t at) {
    uint32_t value = 0;
    for (size_t i = 0; i < 4; ++i) value = (value << 8) | static_cast<unsigned char>(bytes[at + i]);
    return value;
  };
  *lpWidth = word(16);
  *lpHeight = word(20);
  return true;
}

// A screenshot of the page in a window of 1200 x 1600, by a headless
// chromium with a new profile and nothing that reaches the network.
RunResult Screenshot(const std::string& chromium, const test::TempDir& dir, const std::string& page,
                     const std::string& png) {
  std::string profile = dir.File("profile-" + png);
  fs::create_directories(profile);
  return RunBinary("/usr/bin/timeout",
                   {"120", chromium, "--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
                    "--disable-background-networking", "--disable-component-update", "--disable-sync",
                    "--user-data-dir=" + profile, "--screenshot=" + dir.File(png), "--window-size=1200,1600",
                    "file://" + dir.File(page)},
                   {{"HOME", dir.Path()}});
}

// The report of the demo's update renders to a screenshot of the window's
// size that is far from a blank page.
TEST_F(CliDemoTest, ReportOfTheDemoRendersInHeadlessChromium) {
  std::string chromium = FindChromium();
  if (chromium.empty()) GTEST_SKIP() << "chromium is not installed (no /usr/bin/chromium, none on PATH)";
  ASSERT_EQ(RunDemo()["sites"].size(), 15u);
  test::TempDir pages;
  RunResult report = Run({"report", "--html", pages.File("report.html")});
  ASSERT_EQ(report.status, 0) << report.err;
  {
    std::ofstream empty(pages.File("empty.html"));
    empty << "<!DOCTYPE html><html><head><meta charset=\"utf-8\"></head><body></body></html>\n";
  }
  RunResult shot = Screenshot(chromium, pages, "report.html", "report.png");
  ASSERT_EQ(shot.status, 0) << shot.err;
  shot = Screenshot(chromium, pages, "empty.html", "empty.png");
  ASSERT_EQ(shot.status, 0) << shot.err;
  std::string reportPng = ReadBytes(pages.File("report.png"));
  std::string emptyPng = ReadBytes(pages.File("empty.png"));
  uint32_t width = 0, height = 0;
  ASSERT_TRUE(PngSize(reportPng, &width, &height)) << reportPng.size() << " bytes";
  EXPECT_EQ(width, 1200u);
  EXPECT_EQ(height, 1600u);
  ASSERT_TRUE(PngSize(emptyPng, &width, &height)) << emptyPng.size() << " bytes";
  // Text, tables and bars compress far worse than a blank page.
  EXPECT_GT(reportPng.size(), 10 * emptyPng.size()) << reportPng.size() << " vs " << emptyPng.size();
}

}  // namespace
}  // namespace corvane::testing
