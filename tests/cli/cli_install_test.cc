// The install: the two libraries side by side, the headers, corvane.pc, the
// host (which finds the installed white list and its libraries); and the
// demo run through the real extraction library on the sample profile, with
// its report rendered by a headless chromium.

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>

#include "cli/cli_runner.h"
#include "cli/demo_profile.h"
#include "cli/score_bands.h"
#include "harvest/fixture/browsing_model.h"
#include "support/test_host.h"

namespace corvane::testing {
namespace {

namespace fs = std::filesystem;

// A host of the installed library: only the public header and its exports.
constexpr char kSmallHost[] = R"(#include <corvane/CorvaneDataProvider.h>
#include <cstdio>
int main() {
  IClassFactory* factory = nullptr;
  if (DllGetClassObject(CLSID_CorvaneDataProviderObject, IID_IClassFactory, (void**)&factory) != 0) return 1;
  ICorvaneDataProviderObject* provider = nullptr;
  HRESULT hr = factory->CreateInstance(nullptr, IID_ICorvaneDataProviderObject, (void**)&provider);
  factory->Release();
  if (hr != 0) return 2;
  BSTR key = SysAllocString(u"Missing");
  BSTR value = nullptr;
  std::printf("provider created; Missing: 0x%08X\n", (unsigned)provider->GetValue(key, &value));
  SysFreeString(key);
  SysFreeString(value);
  provider->Release();
  return 0;
}
)";

TEST(CliInstallTest, InstallsLibrariesHeadersHostWhiteListAndPackages) {
  test::TempDir prefix;
  std::string command = "cmake --install '" + std::string(CORVANE_BUILD_TREE) + "' --prefix '" + prefix.Path() +
                        "' > '" + prefix.File("install.log") + "' 2>&1";
  ASSERT_EQ(std::system(command.c_str()), 0) << ReadFile(prefix.File("install.log"));
  fs::path root(prefix.Path()), lib = root / CORVANE_INSTALL_LIBDIR;
  for (const fs::path& file : {lib / "libCorvaneDataProvider.so", lib / "libVisitHarvest.so", root / "bin/corvane",
                               root / "include/corvane/CorvaneDataProvider.h", root / "include/corvane/VisitHarvest.h",
                               root / "share/corvane/WhiteList.js"}) {
    EXPECT_TRUE(fs::exists(file)) << file;
  }
  std::string pc = ReadFile(lib / "pkgconfig/corvane.pc");
  EXPECT_NE(pc.find("Libs: -L${libdir} -lCorvaneDataProvider"), std::string::npos) << pc;
  EXPECT_NE(pc.find("Cflags: -I${includedir}"), std::string::npos);
  // The prefix follows the file, wherever it was installed.
  EXPECT_NE(pc.find("prefix=${pcfiledir}/"), std::string::npos) << pc;
  // Versioned names, with the major version as the SONAME.
  for (const char* name : {"libCorvaneDataProvider.so", "libVisitHarvest.so"}) {
    EXPECT_EQ(fs::read_symlink(lib / name).string(), std::string(name) + ".1");
    EXPECT_EQ(fs::read_symlink(lib / (std::string(name) + ".1")).string(), std::string(name) + ".1.0.0");
  }
  // A small host built against the installed package, once with pkg-config
  // and once with find_package(Corvane); each creates the provider and reads
  // a value through the boundary.
  std::ofstream(prefix.File("host.cc")) << kSmallHost;
  std::ofstream(prefix.File("CMakeLists.txt")) << "cmake_minimum_required(VERSION 3.25)\nproject(host CXX)\n"
      "find_package(Corvane 1 REQUIRED CONFIG)\nadd_executable(host host.cc)\n"
      "target_link_libraries(host PRIVATE Corvane::CorvaneDataProvider)\n";
  const std::string built = "cd '" + prefix.Path() + "' && ";
  const std::map<std::string, std::string> env = {{"PKG_CONFIG_PATH", (lib / "pkgconfig").string()},
                                                  {"CMAKE_PREFIX_PATH", prefix.Path()},
                                                  {"CORVANE_APPDATA", prefix.File("hostdata")}};
  // A sanitized component needs its runtime first in the host too.
  const std::string flags = CORVANE_HOST_FLAGS;
  for (const std::string& build : {built + "c++ -std=c++17 " + flags + " host.cc -o host-pc $(pkg-config --cflags "
                                           "--libs corvane) -Wl,-rpath,$(pkg-config --variable=libdir corvane) && ./host-pc",
                                   built + "cmake -S . -B cm -DCMAKE_BUILD_TYPE=Release '-DCMAKE_CXX_FLAGS=" + flags +
                                           "' > cm.log && cmake --build cm > cm.log && cm/host"}) {
    RunResult host = RunBinary("/bin/sh", {"-c", build}, env);
    EXPECT_EQ(host.status, 0) << build << "\n" << host.err << ReadFile(prefix.File("cm.log"));
    EXPECT_EQ(host.out, "provider created; Missing: 0x80004005\n") << build;
  }
  // The installed host runs from its own folders: its rpath finds the
  // component and it copies the installed white list into a new data folder.
  RunResult run = RunBinary((root / "bin/corvane").string(), {"--data-dir", prefix.File("appdata"), "pins"},
                            {{"LD_LIBRARY_PATH", ""}, {"CORVANE_APPDATA", ""}});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(ReadFile(prefix.File("appdata/CorvaneApp/WhiteList.js")), ReadFile(root / "share/corvane/WhiteList.js"));
}

// For each popular site of the sample profile: on how many of the newest
// span local dates with visits its most visited host was opened, as the
// fixture's model makes them. Fifty points a day are the main part of
// every score.
std::map<std::string, size_t> DaysOfEachSite(const fixture::ProfileSpec& spec, size_t span) {
  std::map<int, std::set<std::string>> hostsOn;  // yyyymmdd: the hosts opened that day
  fixture::BrowsingModel model(spec);
  std::string error;
  EXPECT_TRUE(fixture::ForEachDay(spec, &model, [&](const std::vector<fixture::VisitEvent>& visits) {
    for (const fixture::VisitEvent& visit : visits) {
      const std::string& url = model.Pages()[static_cast<size_t>(visit.page)].url;
      time_t seconds = static_cast<time_t>(visit.unixMicros / 1000000);
      struct tm local {};
      localtime_r(&seconds, &local);
      size_t start = url.find("://") + 3;
      hostsOn[(local.tm_year + 1900) * 10000 + (local.tm_mon + 1) * 100 + local.tm_mday].insert(
          url.substr(start, url.find('/', start) - start));
    }
    return true;
  }, &error)) << error;
  std::map<std::string, size_t> days;
  for (const fixture::PopularSite& site : fixture::PopularSites()) {
    for (const std::string& host : site.hosts) {
      size_t count = 0, date = 0;
      for (auto day = hostsOn.rbegin(); day != hostsOn.rend() && date++ < span; ++day) count += day->second.count(host);
      days[site.mainDomain] = std::max(days[site.mainDomain], count);
    }
  }
  return days;
}

class CliDemoTest : public ::testing::Test {
 protected:
  RunResult Run(std::vector<std::string> args) {
    args.insert(args.begin(), {"--data-dir", m_data.Path()});
    return RunBinary(CORVANE_CLI_BINARY, args, {{"CORVANE_APPDATA", ""}, {"CORVANE_TEST_NOW", ""}});
  }
  Json::Value RunJson(std::vector<std::string> args) {
    args.insert(args.begin(), "--json");
    return OutputJson(Run(args));
  }

  test::TempDir m_data;
};

// A site's weight adds up the days of each of its pages, so a site whose
// visits spread over more pages may pass one used on a few more days, and
// sampling makes neighbours swap. The sample ends at the time the demo runs:
// run at every hour of ten dates across a year and at four hours of 28
// more, a site passed one used on at most four more days (www.office.com,
// 14 days with a wiki page of 5, passes www.reddit.com, 18 days, from 17:00
// on). Beyond four days the order must hold, and no site used on clearly
// more days than the last one shown is missing. Each
// nested sub-site carries the ID of its host's row, as explain finds it,
// and "hide site" takes it. A second demo on the same folder would mix its
// visits into it.
TEST_F(CliDemoTest, DemoRanksTheSampleProfilesSitesInTheOrderOfTheirDaysAndKeepsItsDataFolder) {
  constexpr size_t kDayNoise = 4;
  Json::Value demo = RunJson({"demo"});
  EXPECT_EQ(Fields(demo, {"browser", "dataFolder"}), "Chrome | " + m_data.File("CorvaneApp"));
  EXPECT_TRUE(demo["update"]["updated"].asBool());
  EXPECT_TRUE(demo["recent"].size() > 0 && demo["history"].size() == 1 && demo["history"][0]["visits"].size() > 0);
  EXPECT_TRUE(fs::exists(m_data.File("CorvaneApp/WhiteList.js")));
  const Json::Value& sites = demo["sites"];
  ASSERT_EQ(sites.size(), 15u) << sites.toStyledString();
  size_t span = cli::LoadScoreModel(m_data.File("CorvaneApp")).MaxDays();
  ASSERT_EQ(span, 21u);
  std::map<std::string, size_t> days = DaysOfEachSite(cli::DemoProfileSpec(), span);
  std::vector<size_t> listed;
  std::string order;
  Json::Value sub;
  for (const Json::Value& site : sites) {
    ASSERT_EQ(site["kind"].asString(), "site");
    listed.push_back(days.at(site["mainDomain"].asString()));
    order += " " + site["mainDomain"].asString() + "=" + std::to_string(listed.back());
    for (const Json::Value& nested : site["subSites"]) {
      EXPECT_TRUE(nested["kind"] == "part" && nested["componentId"].asUInt() > 1u) << nested.toStyledString();
      if (!sub.isObject()) sub = nested;
    }
  }
  size_t most = 0;
  for (const auto& [main, count] : days) most = std::max(most, count);
  EXPECT_EQ(listed.front(), most) << order;
  for (size_t i = 0; i < listed.size(); ++i) {
    for (size_t j = i + 1; j < listed.size(); ++j) EXPECT_LE(listed[j], listed[i] + kDayNoise) << order;
  }
  for (const auto& [main, count] : days) {
    EXPECT_TRUE(count <= listed.back() + kDayNoise || order.find(" " + main + "=") != std::string::npos) << main << order;
  }
  ASSERT_TRUE(sub.isObject()) << sites.toStyledString();
  Json::Value facts = RunJson({"explain", sub["domain"].asString()});
  bool found = false;
  for (const Json::Value& row : facts["ranked"]) {
    found = found || (row["table"].asString() == "TRecommendDomain" && row["rowId"] == sub["id"]);
  }
  EXPECT_TRUE(found) << facts.toStyledString();
  EXPECT_EQ(Run({"hide", sub["id"].asString()}).status, 0);
  EXPECT_TRUE(FailsWithOneLine(Run({"demo"}), 1, {m_data.File("CorvaneApp/CorvaneAppDB.db")}));
  EXPECT_NE(Run({"demo", "--help"}).out.find("holds no\ndatabase yet"), std::string::npos);
}

// Width and height from the IHDR chunk that starts every PNG file; 0 x 0
// for anything else.
std::pair<uint32_t, uint32_t> PngSize(const std::string& bytes) {
  if (bytes.size() < 24 || bytes.compare(0, 8, "\x89PNG\r\n\x1a\n") != 0 || bytes.compare(12, 4, "IHDR") != 0) return {};
  auto word = [&](size_t at) {
    uint32_t value = 0;
    for (size_t i = 0; i < 4; ++i) value = (value << 8) | static_cast<unsigned char>(bytes[at + i]);
    return value;
  };
  return {word(16), word(20)};
}

// The report of the demo's update renders, in a window of 1200 x 1600 by a
// headless chromium with a new profile and nothing that reaches the
// network, to a screenshot of the window's size that is far from a blank
// page: text, tables and bars compress far worse.
TEST_F(CliDemoTest, ReportOfTheDemoRendersInHeadlessChromium) {
  const std::string chromium = test::FindProgram({"chromium"});
  CORVANE_REQUIRE_PROGRAM(chromium, "chromium");
  ASSERT_EQ(RunJson({"demo"})["sites"].size(), 15u);
  test::TempDir pages;
  ASSERT_EQ(Run({"report", "--html", pages.File("report.html")}).status, 0);
  std::ofstream(pages.File("empty.html")) << "<!DOCTYPE html><html><head><meta charset=\"utf-8\"></head><body></body></html>\n";
  std::map<std::string, std::string> png;
  for (const char* page : {"report", "empty"}) {
    RunResult shot = RunBinary("/usr/bin/timeout", {"120", chromium, "--headless", "--no-sandbox", "--disable-gpu",
                               "--disable-quic", "--no-first-run", "--disable-background-networking",
                               "--disable-component-update", "--disable-sync", "--user-data-dir=" + pages.File(page),
                               "--screenshot=" + pages.File(page) + ".png", "--window-size=1200,1600",
                               "file://" + pages.File(page) + ".html"}, {{"HOME", pages.Path()}});
    ASSERT_EQ(shot.status, 0) << shot.err;
    png[page] = ReadFile(pages.File(page) + ".png");
  }
  EXPECT_EQ(PngSize(png["report"]), (std::pair<uint32_t, uint32_t>{1200, 1600})) << png["report"].size() << " bytes";
  EXPECT_EQ(PngSize(png["empty"]), (std::pair<uint32_t, uint32_t>{1200, 1600}));
  EXPECT_GT(png["report"].size(), 10 * png["empty"].size()) << png["report"].size() << " vs " << png["empty"].size();
}

}  // namespace
}  // namespace corvane::testing
