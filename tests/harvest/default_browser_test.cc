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

}  // namespace
}  // namespace corvane::testing
