// The extraction library on profiles that a real, headless browser wrote:
// the visits of local pages come back with their titles and the instants
// they happened, also while the browser still runs and holds its files.
// A machine without the browser skips its test and says so; in CI, where
// scripts/test.sh installs both browsers, it fails instead.

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <thread>

#include "harvest/harvest_host.h"
#include "support/child_process.h"

namespace corvane::testing {
namespace {

namespace fs = std::filesystem;

std::string WritePage(const std::string& folder, const std::string& name) {
  const std::string path = folder + "/" + name + ".html";
  std::ofstream(path) << "<html><head><title>Page " << name << "</title></head><body>" << name << "</body></html>";
  return "file://" + path;
}

// The delivered visits of url, each checked to have happened between the
// two instants (TZ is UTC, so local time is the instant itself) and to
// count once.
size_t VisitsBetween(const std::vector<Delivered>& items, const std::string& url, time_t from, time_t to) {
  size_t found = 0;
  for (const Delivered& item : items) {
    if (item.url != url) continue;
    EXPECT_EQ(item.count, 1) << url;
    struct tm local {};
    local.tm_year = item.time.wYear - 1900;
    local.tm_mon = item.time.wMonth - 1;
    local.tm_mday = item.time.wDay;
    local.tm_hour = item.time.wHour;
    local.tm_min = item.time.wMinute;
    local.tm_sec = item.time.wSecond;
    const time_t at = timegm(&local);
    EXPECT_TRUE(from <= at && at <= to) << url << " visited at " << Clock(item.time);
    ++found;
  }
  return found;
}

class RealBrowserTest : public HarvestTest {
 protected:
  void SetUp() override {
    m_pages = m_scratch.File("pages");
    fs::create_directories(m_pages);
  }

  // Starts the browser with args and, while it runs and holds its files,
  // reads its history: the read must end in time and still hold the five
  // visits of url.
  void ExpectReadWhileRunning(const std::vector<std::string>& args, uint32_t browser, const std::string& url) {
    test::ChildProcess running(args);
    ASSERT_TRUE(running.Started());
    std::this_thread::sleep_for(std::chrono::seconds(5));
    std::string found;
    const auto holdsUrl = [&] {
      const std::vector<std::string> urls = URLs(Extract(browser, 1));
      return std::to_string(std::count(urls.begin(), urls.end(), url));
    };
    ASSERT_TRUE(RunWithin(30, holdsUrl, &found)) << "reading beside a running browser hung";
    EXPECT_EQ(found, "5") << url << " missing while the browser runs";
  }

  // Runs the browser once for each of args, each a visit of url that
  // the browser ends by itself; then the browser's own count of url, the
  // delivered visits and the component's stored sum are each 5.
  void ExpectFiveVisitsCountedFive(const std::vector<std::vector<std::string>>& args, uint32_t browser,
                                   const std::string& url, const std::string& countSql, const std::string& file) {
    const time_t start = time(nullptr);
    for (const std::vector<std::string>& run : args) {
      ASSERT_TRUE(test::ChildProcess(run).Finish(90)) << "the browser did not load the page";
    }
    EXPECT_EQ(Column(countSql + " where url = '" + url + "'", file), std::vector<std::string>{"5"});
    EXPECT_EQ(VisitsBetween(Extract(browser, EXTRACT_HISTORY), url, start, time(nullptr)), 5u);
    UpdateAt("");
    EXPECT_EQ(Column("select sum(VisitCount) from THistory where URL = '" + url + "'"), std::vector<std::string>{"5"});
  }

  std::string m_pages;
};

TEST_F(RealBrowserTest, ChromiumVisitsAreReadAfterItEndsAndWhileItRuns) {
  const std::string program = test::FindProgram({"chromium", "chromium-browser", "google-chrome"});
  CORVANE_REQUIRE_PROGRAM(program, "chromium");
  const std::string alpha = WritePage(m_pages, "alpha");
  const std::string beta = WritePage(m_pages, "beta");
  const std::vector<std::string> common = {program,          "--headless",  "--no-sandbox",
                                           "--disable-gpu",  "--no-first-run",
                                           "--user-data-dir=" + Home() + "/.config/chromium"};
  const time_t start = time(nullptr);
  std::vector<std::string> once = common;
  once.insert(once.end(), {"--dump-dom", alpha});
  ExpectFiveVisitsCountedFive(std::vector<std::vector<std::string>>(5, once), BROWSER_CHROME, alpha,
                              "select visit_count from urls", Home() + "/.config/chromium/Default/History");

  // A browser that keeps running holds the profile and its History open.
  std::vector<std::string> running = common;
  running.push_back(beta);
  ExpectReadWhileRunning(running, BROWSER_CHROME, alpha);
  const std::vector<Delivered> after = Extract(BROWSER_CHROME, 1);
  EXPECT_EQ(VisitsBetween(after, alpha, start, time(nullptr)), 5u);
  for (const Delivered& item : after) EXPECT_EQ(item.name, "Page " + fs::path(item.url).stem().string());
}

TEST_F(RealBrowserTest, FirefoxVisitsAndItsOwnBookmarksAreRead) {
  const std::string program = test::FindProgram({"firefox-esr", "firefox"});
  CORVANE_REQUIRE_PROGRAM(program, "firefox-esr");
  const std::string alpha = WritePage(m_pages, "alpha");
  const std::string beta = WritePage(m_pages, "beta");
  const std::string profile = Home() + "/.mozilla/firefox/test.default";
  fs::create_directories(profile);
  std::ofstream(Home() + "/.mozilla/firefox/profiles.ini")
      << "[Profile0]\nName=default\nIsRelative=1\nPath=test.default\nDefault=1\n\n"
         "[General]\nStartWithLastProfile=1\nVersion=2\n";
  const std::vector<std::string> once = {program, "--headless", "--profile", profile, "--screenshot",
                                         m_scratch.File("shot.png"), alpha};
  ExpectFiveVisitsCountedFive(std::vector<std::vector<std::string>>(5, once), BROWSER_FIREFOX, alpha,
                              "select visit_count from moz_places", profile + "/places.sqlite");
  std::vector<Delivered> visits = Extract(BROWSER_FIREFOX, 1);
  ASSERT_FALSE(visits.empty());
  EXPECT_EQ(visits[0].name, "Page alpha");
  // A new profile comes with the browser's own bookmarks, in a folder of a root.
  bool inFolder = false;
  for (const Delivered& bookmark : Extract(BROWSER_FIREFOX, 2)) inFolder = inFolder || bookmark.path.find('/') != std::string::npos;
  EXPECT_TRUE(inFolder);

  ExpectReadWhileRunning({program, "--headless", "--profile", profile, beta}, BROWSER_FIREFOX, alpha);
}

}  // namespace
}  // namespace corvane::testing
