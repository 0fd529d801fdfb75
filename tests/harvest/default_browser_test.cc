// The default browser from the chain of mimeapps.list files: one rule, the
// first installed entry of the first file that names one.

#include <sys/stat.h>

#include <filesystem>
#include <fstream>

#include "harvest/harvest_host.h"

namespace corvane::testing {
namespace {

namespace fs = std::filesystem;

class DefaultBrowserTest : public HarvestTest {
 protected:
  void Write(const std::string& path, const std::string& handler) {
    fs::create_directories(fs::path(path).parent_path());
    std::ofstream out(path, std::ios::trunc);
    out << "[Added Associations]\nx-scheme-handler/http=firefox.desktop;\n\n[Default Applications]\n";
    if (!handler.empty()) out << "x-scheme-handler/http=" << handler << "\n";
    out << "text/plain=gedit.desktop\n";
  }
  // A desktop file as a package installs it, in the user's or the system's
  // application folder.
  void Install(const std::string& desktop, bool system = true) {
    std::string folder = Home() + (system ? "/usr-share/applications" : "/.local/share/applications");
    fs::create_directories(folder);
    std::ofstream(folder + "/" + desktop) << "[Desktop Entry]\nType=Application\n";
  }
  uint32_t Default() { return LoadHarvest().GetDefautBrowser(); }
};

// The case that used to depend on whether any desktop file could be seen:
// a list whose first entry is a browser we don't read.
TEST_F(DefaultBrowserTest, RegressionSameListGivesTheSameAnswerWithAndWithoutDesktopFiles) {
  Write(Home() + "/.config/mimeapps.list", "opera.desktop;chromium.desktop");
  // Nothing installed: the names alone say nothing.
  EXPECT_EQ(Default(), BROWSER_NONE);
  EXPECT_NE(TakeDebugLog().find("no mimeapps.list names an installed browser"), std::string::npos);
  // Only the second entry installed: it is the first installed one.
  Install("chromium.desktop");
  EXPECT_EQ(Default(), BROWSER_CHROME);
  // Both installed: the first one, a browser we don't read.
  Install("opera.desktop", false);
  EXPECT_EQ(Default(), BROWSER_NONE);
  EXPECT_NE(TakeDebugLog().find("the default browser opera.desktop is none we read"), std::string::npos);
}

TEST_F(DefaultBrowserTest, FirstFileWithAnInstalledEntryDecides) {
  EXPECT_EQ(Default(), BROWSER_NONE);
  Install("chromium.desktop");
  Install("firefox-esr.desktop");
  // Only in the system folders.
  Write(Home() + "/usr-share/applications/mimeapps.list", "chromium.desktop");
  EXPECT_EQ(Default(), BROWSER_CHROME);
  Write(Home() + "/etc-xdg/mimeapps.list", "firefox-esr.desktop");
  EXPECT_EQ(Default(), BROWSER_FIREFOX);
  // A user file without the key passes on to the next.
  Write(Home() + "/.config/mimeapps.list", "");
  EXPECT_EQ(Default(), BROWSER_FIREFOX);
  // A user file whose entries are all missing passes on too.
  Write(Home() + "/.config/mimeapps.list", "google-chrome.desktop;org.mozilla.firefox.desktop");
  EXPECT_EQ(Default(), BROWSER_FIREFOX);
  // The first installed entry of the first such file wins.
  Write(Home() + "/.config/mimeapps.list", "google-chrome.desktop;chromium.desktop;firefox-esr.desktop;");
  EXPECT_EQ(Default(), BROWSER_CHROME);
  // The desktop's own file comes first.
  test::ScopedEnv desktop("XDG_CURRENT_DESKTOP", "ubuntu:GNOME");
  Install("firefox_firefox.desktop", false);
  Write(Home() + "/.config/gnome-mimeapps.list", "firefox_firefox.desktop");
  EXPECT_EQ(Default(), BROWSER_FIREFOX);
}

TEST_F(DefaultBrowserTest, NameThatLeavesTheFolderIsNeverInstalled) {
  Install("opera.desktop");
  Install("firefox-esr.desktop");
  Write(Home() + "/.config/mimeapps.list", "../applications/opera.desktop;firefox-esr.desktop");
  EXPECT_EQ(Default(), BROWSER_FIREFOX);
}

// A FIFO where a mimeapps.list should be would block a plain open for ever;
// it is passed over like a missing file, with a debug line.
TEST_F(DefaultBrowserTest, FifoInTheChainDoesNotHang) {
  Install("firefox-esr.desktop");
  fs::create_directories(Home() + "/.config");
  ASSERT_EQ(mkfifo((Home() + "/.config/mimeapps.list").c_str(), 0600), 0);
  Write(Home() + "/etc-xdg/mimeapps.list", "firefox-esr.desktop");
  std::string out;
  ASSERT_TRUE(RunWithin(20, [] { return std::to_string(LoadHarvest().GetDefautBrowser()); }, &out))
      << "GetDefautBrowser hangs on a FIFO";
  EXPECT_EQ(out, std::to_string(BROWSER_FIREFOX));
  EXPECT_NE(TakeDebugLog().find("mimeapps.list skipped: not a regular file"), std::string::npos);
}

}  // namespace
}  // namespace corvane::testing
