// The default browser from the chain of mimeapps.list files.

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
};

// Without any desktop file to be seen, the first browser we read in the
// first file with the key.
TEST_F(DefaultBrowserTest, FirstFileWithTheKeyDecides) {
  EXPECT_EQ(LoadHarvest().GetDefautBrowser(), BROWSER_NONE);
  // Only in the system folders.
  Write(Home() + "/usr-share/applications/mimeapps.list", "chromium.desktop");
  EXPECT_EQ(LoadHarvest().GetDefautBrowser(), BROWSER_CHROME);
  Write(Home() + "/etc-xdg/mimeapps.list", "firefox-esr.desktop");
  EXPECT_EQ(LoadHarvest().GetDefautBrowser(), BROWSER_FIREFOX);
  // A user file without the key passes on to the next.
  Write(Home() + "/.config/mimeapps.list", "");
  EXPECT_EQ(LoadHarvest().GetDefautBrowser(), BROWSER_FIREFOX);
  // The first entry we read wins; a browser we don't read is passed over.
  Write(Home() + "/.config/mimeapps.list", "opera.desktop;org.chromium.Chromium.desktop;firefox.desktop;");
  EXPECT_EQ(LoadHarvest().GetDefautBrowser(), BROWSER_CHROME);
  // Only browsers we don't read: none.
  Write(Home() + "/.config/mimeapps.list", "opera.desktop;");
  EXPECT_EQ(LoadHarvest().GetDefautBrowser(), BROWSER_NONE);
  // The desktop's own file comes first.
  test::ScopedEnv desktop("XDG_CURRENT_DESKTOP", "ubuntu:GNOME");
  Write(Home() + "/.config/gnome-mimeapps.list", "firefox_firefox.desktop");
  EXPECT_EQ(LoadHarvest().GetDefautBrowser(), BROWSER_FIREFOX);
}

// With desktop files to be seen, the first installed entry is the default,
// also when it is a browser we don't read.
TEST_F(DefaultBrowserTest, FirstInstalledEntryDecides) {
  auto install = [&](const std::string& folder, const std::string& desktop) {
    fs::create_directories(folder);
    std::ofstream(folder + "/" + desktop) << "[Desktop Entry]\nType=Application\n";
  };
  test::ScopedEnv dataHome("XDG_DATA_HOME", (Home() + "/.local/share").c_str());
  install(Home() + "/usr-share/applications", "firefox-esr.desktop");
  // The list's first entry is not installed: the next one that is.
  Write(Home() + "/.config/mimeapps.list", "google-chrome.desktop;firefox-esr.desktop;");
  EXPECT_EQ(LoadHarvest().GetDefautBrowser(), BROWSER_FIREFOX);
  // An installed browser we don't read comes first: no browser of ours.
  install(Home() + "/.local/share/applications", "opera.desktop");
  Write(Home() + "/.config/mimeapps.list", "opera.desktop;firefox-esr.desktop;");
  EXPECT_EQ(LoadHarvest().GetDefautBrowser(), BROWSER_NONE);
  // A list with nothing installed passes on to the next file.
  Write(Home() + "/.config/mimeapps.list", "chromium.desktop;");
  Write(Home() + "/etc-xdg/mimeapps.list", "firefox-esr.desktop");
  EXPECT_EQ(LoadHarvest().GetDefautBrowser(), BROWSER_FIREFOX);
  install(Home() + "/usr-share/applications", "chromium.desktop");
  EXPECT_EQ(LoadHarvest().GetDefautBrowser(), BROWSER_CHROME);
  // A name that leaves the folder is never taken for an installed file.
  Write(Home() + "/.config/mimeapps.list", "../applications/opera.desktop;firefox-esr.desktop");
  EXPECT_EQ(LoadHarvest().GetDefautBrowser(), BROWSER_FIREFOX);
}

}  // namespace
}  // namespace corvane::testing
