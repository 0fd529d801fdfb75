// Which profile is read: Chromium's Local State, Firefox's installs.ini and
// profiles.ini, the folders each browser family may live in, and, where
// several are offered, the one written last. Every profile holds one visit
// to a URL that names it.
//
// The default browser from the chain of mimeapps.list files: one rule, the
// first installed entry of the first file that names one.

#include <sys/stat.h>

#include <chrono>
#include <filesystem>
#include <fstream>

#include "harvest/harvest_host.h"

namespace corvane::testing {
namespace {

namespace fs = std::filesystem;

class ProfileDiscoveryTest : public HarvestTest {
 protected:
  // Databases (folder under the home, tag) whose only visit goes to
  // https://<tag>.test/: History in a Chromium profile folder,
  // places.sqlite in a Firefox one.
  void WriteProfiles(bool firefox, std::initializer_list<std::pair<std::string, std::string>> profiles) {
    for (const auto& [folder, tag] : profiles) {
      std::string url = "'https://" + tag + ".test/'";
      WriteDb(Home() + folder + (firefox ? "/places.sqlite" : "/History"), firefox,
              firefox ? "insert into moz_places(id, url, title, visit_count) values(1, " + url + ", 'T', 1);"
                        "insert into moz_historyvisits values(1, 0, 1, 1709629623041000, 1, 0);"
                      : "insert into urls values(1, " + url + ", 'T', 1, 0, 0, 0);"
                        "insert into visits values(1, 1, 13354103223041000, 0, 805306368, 0, 0, '');");
    }
  }
  void WriteText(const std::string& file, const std::string& text) {
    fs::create_directories(fs::path(Home() + file).parent_path());
    std::ofstream(Home() + file, std::ios::trunc) << text;
  }
  // Writes text to the file under the home, when one is named, then gives
  // the tag of the one visit read from the browser; empty when none.
  std::string TagAfter(uint32_t browser, const std::string& file = "", const std::string& text = "") {
    if (!file.empty()) WriteText(file, text);
    std::vector<Delivered> visits = Extract(browser, EXTRACT_HISTORY);
    if (visits.size() != 1) return visits.empty() ? std::string() : "several";
    return visits[0].url.substr(8, visits[0].url.size() - 8 - 6);
  }
  // Sets the modification time of a file under the home to minutes ago.
  void WrittenMinutesAgo(const std::string& file, int minutes) {
    fs::last_write_time(Home() + file, fs::file_time_type::clock::now() - std::chrono::minutes(minutes));
  }
};

// Without Local State, Default. A last-used folder that is gone, or the
// guest: the most recently active. A damaged Local State is no Local State.
TEST_F(ProfileDiscoveryTest, ChromiumReadsTheProfileUsedLast) {
  const std::string kData = "/.config/chromium", kLocalState = kData + "/Local State";
  WriteProfiles(false, {{kData + "/Default", "default"}, {kData + "/Profile 1", "one"}, {kData + "/Profile 2", "two"},
                        {kData + "/Guest Profile", "guest"}});
  EXPECT_EQ(TagAfter(BROWSER_CHROME), "default");
  EXPECT_EQ(TagAfter(BROWSER_CHROME, kLocalState, R"({"profile": {"last_used": "Profile 2", "info_cache": {
      "Default": {"active_time": 100.0}, "Profile 1": {"active_time": 300.5}}}})"), "two");
  EXPECT_EQ(TagAfter(BROWSER_CHROME, kLocalState, R"({"profile": {"last_used": "Profile 9", "info_cache": {
      "Default": {"active_time": 100.0}, "Profile 1": {"active_time": 300.5}, "Guest Profile": {"active_time": 900}}}})"),
            "one");
  EXPECT_EQ(TagAfter(BROWSER_CHROME, kLocalState, R"({"profile": {"last_used": "Guest Profile"}})"), "default");
  EXPECT_EQ(TagAfter(BROWSER_CHROME, kLocalState, "{\"profile\": "), "default");
}

TEST_F(ProfileDiscoveryTest, ChromiumFromSnapFlatpakAndChromeConfigHome) {
  EXPECT_FALSE(IsBrowserInstalled(BROWSER_CHROME));
  WriteProfiles(false, {{"/snap/chromium/common/chromium/Default", "snap"}});
  EXPECT_TRUE(IsBrowserInstalled(BROWSER_CHROME));
  EXPECT_EQ(TagAfter(BROWSER_CHROME), "snap");
  fs::remove_all(Home() + "/snap");
  WriteProfiles(false, {{"/.var/app/com.google.Chrome/config/google-chrome/Default", "flatpak"}});
  EXPECT_EQ(TagAfter(BROWSER_CHROME), "flatpak");
  fs::remove_all(Home() + "/.var");
  SetEnv("CHROME_CONFIG_HOME", (Home() + "/elsewhere").c_str());
  WriteProfiles(false, {{"/elsewhere/google-chrome/Default", "elsewhere"}});
  EXPECT_EQ(TagAfter(BROWSER_CHROME), "elsewhere");
}

// The installation's default, here a full path, comes before Default=1; an
// installation default that is gone falls back; without a mark, the first.
TEST_F(ProfileDiscoveryTest, FirefoxPrefersTheInstallDefault) {
  const std::string kRoot = "/.mozilla/firefox";
  WriteProfiles(true, {{kRoot + "/aaa.default", "first"}, {kRoot + "/bbb.marked", "marked"},
                       {"/elsewhere/ccc.install", "install"}});
  EXPECT_EQ(TagAfter(BROWSER_FIREFOX, kRoot + "/profiles.ini", "[Profile1]\nName=a\nIsRelative=1\nPath=aaa.default\n\n"
                     "[Profile0]\nName=b\nIsRelative=1\nPath=bbb.marked\nDefault=1\n\n[General]\nVersion=2\n"), "marked");
  EXPECT_TRUE(IsBrowserInstalled(BROWSER_FIREFOX));
  EXPECT_EQ(TagAfter(BROWSER_FIREFOX, kRoot + "/installs.ini", "[4F96D1932A9F858E]\nDefault=" + Home() +
                     "/elsewhere/ccc.install\nLocked=1\n"), "install");
  EXPECT_EQ(TagAfter(BROWSER_FIREFOX, kRoot + "/installs.ini", "[4F96D1932A9F858E]\nDefault=gone.profile\n"), "marked");
  EXPECT_EQ(TagAfter(BROWSER_FIREFOX, kRoot + "/profiles.ini", "[Profile1]\nIsRelative=1\nPath=aaa.default\n\n"
                     "[Profile0]\nIsRelative=1\nPath=bbb.marked\n"), "first");
}

// profiles.ini's own install sections count too; Default=1 does not once
// an installation names a profile.
TEST_F(ProfileDiscoveryTest, FirefoxReadsTheProfileWrittenLastAcrossInstalls) {
  const std::string kRoot = "/.mozilla/firefox";
  WriteProfiles(true, {{kRoot + "/r.default-release", "release"}, {kRoot + "/e.default-esr", "esr"},
                       {kRoot + "/d.dev-edition", "dev"}, {kRoot + "/m.marked", "marked"}});
  WriteText(kRoot + "/installs.ini", "[1111]\nDefault=r.default-release\nLocked=1\n\n[2222]\nDefault=e.default-esr\n");
  WriteText(kRoot + "/profiles.ini",
            "[Install3333]\nDefault=d.dev-edition\n\n[Profile0]\nIsRelative=1\nPath=m.marked\nDefault=1\n");
  WrittenMinutesAgo(kRoot + "/r.default-release/places.sqlite", 30);
  WrittenMinutesAgo(kRoot + "/e.default-esr/places.sqlite", 10);
  WrittenMinutesAgo(kRoot + "/d.dev-edition/places.sqlite", 20);
  EXPECT_EQ(TagAfter(BROWSER_FIREFOX), "esr");
  WrittenMinutesAgo(kRoot + "/d.dev-edition/places.sqlite", 2);
  EXPECT_EQ(TagAfter(BROWSER_FIREFOX), "dev");
  WrittenMinutesAgo(kRoot + "/r.default-release/places.sqlite", 1);
  EXPECT_EQ(TagAfter(BROWSER_FIREFOX), "release");
}


class DefaultBrowserTest : public HarvestTest {
 protected:
  void Write(const std::string& file, const std::string& handler) {
    fs::create_directories(fs::path(Home() + file).parent_path());
    std::ofstream out(Home() + file, std::ios::trunc);
    out << "[Added Associations]\nx-scheme-handler/http=firefox.desktop;\n\n[Default Applications]\n";
    if (!handler.empty()) out << "x-scheme-handler/http=" << handler << "\n";
    out << "text/plain=gedit.desktop\n";
  }
  // A desktop file as a package installs it, in the system's or the
  // user's application folder.
  void Install(const std::string& desktop, bool system = true) {
    std::string folder = Home() + (system ? "/usr-share/applications" : "/.local/share/applications");
    fs::create_directories(folder);
    std::ofstream(folder + "/" + desktop) << "[Desktop Entry]\nType=Application\n";
  }
  uint32_t Default() { return GetDefautBrowser(); }
};

TEST_F(DefaultBrowserTest, FirstFileWithAnInstalledEntryDecides) {
  EXPECT_EQ(Default(), BROWSER_NONE);
  Install("chromium.desktop");
  Install("firefox-esr.desktop");
  Install("opera.desktop");
  const struct {
    const char* file;
    const char* handler;
    uint32_t expected;
  } kSteps[] = {
      // Only in the system folders.
      {"/usr-share/applications/mimeapps.list", "chromium.desktop", BROWSER_CHROME},
      {"/etc-xdg/mimeapps.list", "firefox-esr.desktop", BROWSER_FIREFOX},
      // A user file without the key, or whose entries are all missing,
      // passes on to the next.
      {"/.config/mimeapps.list", "", BROWSER_FIREFOX},
      {"/.config/mimeapps.list", "google-chrome.desktop;org.mozilla.firefox.desktop", BROWSER_FIREFOX},
      // The first installed entry of the first such file wins.
      {"/.config/mimeapps.list", "google-chrome.desktop;chromium.desktop;firefox-esr.desktop;", BROWSER_CHROME},
      // A name that leaves the folder is never installed.
      {"/.config/mimeapps.list", "../applications/opera.desktop;firefox-esr.desktop", BROWSER_FIREFOX},
  };
  for (const auto& step : kSteps) {
    Write(step.file, step.handler);
    EXPECT_EQ(Default(), step.expected) << step.file << ": " << step.handler;
  }
  // The desktop's own file comes first.
  SetEnv("XDG_CURRENT_DESKTOP", "ubuntu:GNOME");
  Install("firefox_firefox.desktop", false);
  Write("/.config/mimeapps.list", "chromium.desktop");
  Write("/.config/gnome-mimeapps.list", "firefox_firefox.desktop");
  EXPECT_EQ(Default(), BROWSER_FIREFOX);
}

// A FIFO where a mimeapps.list should be would block a plain open for ever;
// it is passed over like a missing file, with a debug line.
TEST_F(DefaultBrowserTest, FifoInTheChainDoesNotHang) {
  Install("firefox-esr.desktop");
  fs::create_directories(Home() + "/.config");
  ASSERT_EQ(mkfifo((Home() + "/.config/mimeapps.list").c_str(), 0600), 0);
  Write("/etc-xdg/mimeapps.list", "firefox-esr.desktop");
  std::string out;
  ASSERT_TRUE(RunWithin(20, [] { return std::to_string(GetDefautBrowser()); }, &out)) << "hangs";
  EXPECT_EQ(out, std::to_string(BROWSER_FIREFOX));
  EXPECT_NE(TakeDebugLog().find("mimeapps.list skipped: not a regular file"), std::string::npos);
}

}  // namespace
}  // namespace corvane::testing
