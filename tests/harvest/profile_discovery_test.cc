// Which profile is read: Chromium's Local State, Firefox's installs.ini and
// profiles.ini, the folders each browser family may live in, and, where
// several are offered, the one written last. Every profile holds one visit
// to a URL that names it.

#include <sqlite3.h>

#include <chrono>
#include <filesystem>
#include <fstream>

#include "harvest/harvest_host.h"

namespace corvane::testing {
namespace {

namespace fs = std::filesystem;

// A database at path whose only visit goes to https://<tag>.test/.
void WriteOneVisit(const std::string& path, const std::string& tag, bool firefox) {
  fs::create_directories(fs::path(path).parent_path());
  sqlite3* db = nullptr;
  ASSERT_EQ(sqlite3_open(path.c_str(), &db), SQLITE_OK);
  std::string url = "'https://" + tag + ".test/'";
  std::string sql =
      firefox ? "create table moz_places(id INTEGER PRIMARY KEY, url, title, visit_count, hidden, typed);"
                "create table moz_historyvisits(id INTEGER PRIMARY KEY, from_visit, place_id, visit_date, visit_type);"
                "insert into moz_places values(1, " + url + ", 'T', 1, 0, 0);"
                "insert into moz_historyvisits values(1, 0, 1, 1709629623041000, 1);"
              : "create table urls(id INTEGER PRIMARY KEY, url, title, visit_count, typed_count, last_visit_time, "
                "hidden);"
                "create table visits(id INTEGER PRIMARY KEY, url, visit_time, from_visit, transition);"
                "insert into urls values(1, " + url + ", 'T', 1, 0, 0, 0);"
                "insert into visits values(1, 1, 13354103223041000, 0, 805306368);";
  EXPECT_EQ(sqlite3_exec(db, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK) << sqlite3_errmsg(db);
  sqlite3_close(db);
}

void WriteText(const std::string& path, const std::string& text) {
  fs::create_directories(fs::path(path).parent_path());
  std::ofstream(path, std::ios::trunc) << text;
}

// Sets a file's modification time to some minutes ago.
void WrittenMinutesAgo(const std::string& path, int minutes) {
  fs::last_write_time(path, fs::file_time_type::clock::now() - std::chrono::minutes(minutes));
}

class ProfileDiscoveryTest : public HarvestTest {
 protected:
  // The tag of the one visit read from the browser; empty when none.
  std::string ReadTag(uint32_t browser) {
    std::vector<Delivered> visits = Extract(browser, EXTRACT_HISTORY);
    if (visits.size() != 1) return visits.empty() ? std::string() : "several";
    return visits[0].url.substr(8, visits[0].url.size() - 8 - 6);
  }
};

TEST_F(ProfileDiscoveryTest, ChromiumReadsTheProfileUsedLast) {
  std::string data = Home() + "/.config/chromium";
  const std::pair<const char*, const char*> kProfiles[] = {
      {"Default", "default"}, {"Profile 1", "one"}, {"Profile 2", "two"}, {"Guest Profile", "guest"}};
  for (const auto& [name, tag] : kProfiles) WriteOneVisit(data + "/" + name + "/History", tag, false);
  // No Local State: the Default profile.
  EXPECT_EQ(ReadTag(BROWSER_CHROME), "default");
  WriteText(data + "/Local State", R"({"profile": {"last_used": "Profile 2", "info_cache": {
      "Default": {"active_time": 100.0}, "Profile 1": {"active_time": 300.5}}}})");
  EXPECT_EQ(ReadTag(BROWSER_CHROME), "two");
  // A last-used folder that is gone, or the guest: the most recently active.
  WriteText(data + "/Local State", R"({"profile": {"last_used": "Profile 9", "info_cache": {
      "Default": {"active_time": 100.0}, "Profile 1": {"active_time": 300.5}, "Guest Profile": {"active_time": 900}}}})");
  EXPECT_EQ(ReadTag(BROWSER_CHROME), "one");
  WriteText(data + "/Local State", R"({"profile": {"last_used": "Guest Profile"}})");
  EXPECT_EQ(ReadTag(BROWSER_CHROME), "default");
  // A damaged Local State is no Local State.
  WriteText(data + "/Local State", "{\"profile\": ");
  EXPECT_EQ(ReadTag(BROWSER_CHROME), "default");
}

TEST_F(ProfileDiscoveryTest, ChromiumFromSnapFlatpakAndChromeConfigHome) {
  EXPECT_FALSE(LoadHarvest().IsBrowserInstalled(BROWSER_CHROME));
  WriteOneVisit(Home() + "/snap/chromium/common/chromium/Default/History", "snap", false);
  EXPECT_TRUE(LoadHarvest().IsBrowserInstalled(BROWSER_CHROME));
  EXPECT_EQ(ReadTag(BROWSER_CHROME), "snap");
  fs::remove_all(Home() + "/snap");
  WriteOneVisit(Home() + "/.var/app/com.google.Chrome/config/google-chrome/Default/History", "flatpak", false);
  EXPECT_EQ(ReadTag(BROWSER_CHROME), "flatpak");
  fs::remove_all(Home() + "/.var");
  test::ScopedEnv chromeHome("CHROME_CONFIG_HOME", (Home() + "/elsewhere").c_str());
  WriteOneVisit(Home() + "/elsewhere/google-chrome/Default/History", "elsewhere", false);
  EXPECT_EQ(ReadTag(BROWSER_CHROME), "elsewhere");
}

TEST_F(ProfileDiscoveryTest, FirefoxPrefersTheInstallDefault) {
  std::string root = Home() + "/.mozilla/firefox";
  WriteOneVisit(root + "/aaa.default/places.sqlite", "first", true);
  WriteOneVisit(root + "/bbb.marked/places.sqlite", "marked", true);
  WriteOneVisit(Home() + "/elsewhere/ccc.install/places.sqlite", "install", true);
  WriteText(root + "/profiles.ini",
            "[Profile1]\nName=a\nIsRelative=1\nPath=aaa.default\n\n[Profile0]\nName=b\nIsRelative=1\nPath=bbb.marked\n"
            "Default=1\n\n[General]\nVersion=2\n");
  EXPECT_TRUE(LoadHarvest().IsBrowserInstalled(BROWSER_FIREFOX));
  EXPECT_EQ(ReadTag(BROWSER_FIREFOX), "marked");
  // The installation's default, here a full path, comes before Default=1.
  WriteText(root + "/installs.ini", "[4F96D1932A9F858E]\nDefault=" + Home() + "/elsewhere/ccc.install\nLocked=1\n");
  EXPECT_EQ(ReadTag(BROWSER_FIREFOX), "install");
  // An installation default that is gone falls back; no mark: the first.
  WriteText(root + "/installs.ini", "[4F96D1932A9F858E]\nDefault=gone.profile\n");
  WriteText(root + "/profiles.ini", "[Profile1]\nIsRelative=1\nPath=aaa.default\n\n[Profile0]\nIsRelative=1\n"
                                    "Path=bbb.marked\n");
  EXPECT_EQ(ReadTag(BROWSER_FIREFOX), "first");
}

TEST_F(ProfileDiscoveryTest, FirefoxUnderXdgConfigWhenTheLegacyFolderIsMissing) {
  std::string root = Home() + "/.config/mozilla/firefox";
  WriteOneVisit(root + "/xdg.default-release/places.sqlite", "xdg", true);
  WriteText(root + "/profiles.ini", "[Install11]\nDefault=xdg.default-release\n\n[Profile0]\nPath=xdg.default-release\n");
  EXPECT_EQ(ReadTag(BROWSER_FIREFOX), "xdg");
  // A profiles.ini naming no profile with a places.sqlite: not installed.
  WriteText(root + "/profiles.ini", "[Profile0]\nPath=nothing-here\n");
  EXPECT_FALSE(LoadHarvest().IsBrowserInstalled(BROWSER_FIREFOX));
  EXPECT_TRUE(Extract(BROWSER_FIREFOX, EXTRACT_HISTORY).empty());
}

// A release and an ESR installation (or a snap beside a distribution's
// package) each have their own root and default; the person uses the one
// whose history was written last, wherever its root comes in the search.
TEST_F(ProfileDiscoveryTest, FirefoxReadsTheProfileWrittenLastAcrossRoots) {
  std::string legacy = Home() + "/.mozilla/firefox";
  std::string snap = Home() + "/snap/firefox/common/.mozilla/firefox";
  WriteOneVisit(legacy + "/l.default/places.sqlite", "legacy", true);
  WriteOneVisit(snap + "/s.default/places.sqlite", "snap", true);
  WriteText(legacy + "/profiles.ini", "[Profile0]\nIsRelative=1\nPath=l.default\nDefault=1\n");
  WriteText(snap + "/installs.ini", "[A1B2C3D4]\nDefault=s.default\n");
  WriteText(snap + "/profiles.ini", "[Profile0]\nIsRelative=1\nPath=s.default\n");
  WrittenMinutesAgo(legacy + "/l.default/places.sqlite", 60);
  WrittenMinutesAgo(snap + "/s.default/places.sqlite", 5);
  EXPECT_EQ(ReadTag(BROWSER_FIREFOX), "snap");
  WrittenMinutesAgo(legacy + "/l.default/places.sqlite", 1);
  EXPECT_EQ(ReadTag(BROWSER_FIREFOX), "legacy");
  // Recent writes sit in the log: a newer -wal makes its profile the newer.
  WriteText(snap + "/s.default/places.sqlite-wal", "");
  EXPECT_EQ(ReadTag(BROWSER_FIREFOX), "snap");
}

TEST_F(ProfileDiscoveryTest, FirefoxReadsTheProfileWrittenLastAcrossInstalls) {
  std::string root = Home() + "/.mozilla/firefox";
  WriteOneVisit(root + "/r.default-release/places.sqlite", "release", true);
  WriteOneVisit(root + "/e.default-esr/places.sqlite", "esr", true);
  WriteOneVisit(root + "/d.dev-edition/places.sqlite", "dev", true);
  WriteOneVisit(root + "/m.marked/places.sqlite", "marked", true);
  WriteText(root + "/installs.ini", "[1111]\nDefault=r.default-release\nLocked=1\n\n[2222]\nDefault=e.default-esr\n");
  // profiles.ini's own install sections count too; Default=1 does not once
  // an installation names a profile.
  WriteText(root + "/profiles.ini", "[Install3333]\nDefault=d.dev-edition\n\n[Profile0]\nIsRelative=1\n"
                                    "Path=m.marked\nDefault=1\n");
  WrittenMinutesAgo(root + "/r.default-release/places.sqlite", 30);
  WrittenMinutesAgo(root + "/e.default-esr/places.sqlite", 10);
  WrittenMinutesAgo(root + "/d.dev-edition/places.sqlite", 20);
  EXPECT_EQ(ReadTag(BROWSER_FIREFOX), "esr");
  WrittenMinutesAgo(root + "/d.dev-edition/places.sqlite", 2);
  EXPECT_EQ(ReadTag(BROWSER_FIREFOX), "dev");
  WrittenMinutesAgo(root + "/r.default-release/places.sqlite", 1);
  EXPECT_EQ(ReadTag(BROWSER_FIREFOX), "release");
}

}  // namespace
}  // namespace corvane::testing
