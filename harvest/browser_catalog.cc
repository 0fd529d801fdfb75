#include "harvest/browser_catalog.h"

#include <cstdlib>
#include <filesystem>

#include "corvane/VisitHarvest.h"

namespace corvane::harvest {
namespace {

std::string Env(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr ? value : "";
}

std::string BaseFolder(Base base) {
  const std::string home = Env("HOME");
  if (home.empty()) return std::string();
  const std::string config = Env("XDG_CONFIG_HOME").empty() ? home + "/.config" : Env("XDG_CONFIG_HOME");
  if (base == Base::kHome) return home;
  if (base == Base::kChromeConfig && !Env("CHROME_CONFIG_HOME").empty()) return Env("CHROME_CONFIG_HOME");
  return config;
}

// The desktop files of each product, as their packages install them.
struct DesktopFile {
  const char* file;
  std::vector<std::string> products;
};

const std::vector<DesktopFile>& DesktopFiles() {
  static const std::vector<DesktopFile> kFiles = {
      {"google-chrome.desktop", {"chrome"}},
      {"google-chrome-beta.desktop", {"chrome-beta"}},
      {"google-chrome-unstable.desktop", {"chrome-unstable"}},
      {"com.google.Chrome.desktop", {"chrome-flatpak"}},
      {"chromium.desktop", {"chromium", "chromium-snap"}},
      {"chromium-browser.desktop", {"chromium", "chromium-snap"}},
      {"org.chromium.Chromium.desktop", {"chromium-flatpak"}},
      {"chromium_chromium.desktop", {"chromium-snap"}},
      {"brave-browser.desktop", {"brave"}},
      {"com.brave.Browser.desktop", {"brave-flatpak"}},
      {"brave_brave.desktop", {"brave-snap"}},
      {"microsoft-edge.desktop", {"edge"}},
      {"microsoft-edge-beta.desktop", {"edge-beta"}},
      {"microsoft-edge-dev.desktop", {"edge-dev"}},
      {"com.microsoft.Edge.desktop", {"edge-flatpak"}},
      {"vivaldi-stable.desktop", {"vivaldi"}},
      {"vivaldi-snapshot.desktop", {"vivaldi-snapshot"}},
      {"com.vivaldi.Vivaldi.desktop", {"vivaldi-flatpak"}},
      {"opera.desktop", {"opera"}},
      {"opera-beta.desktop", {"opera-beta"}},
      {"opera-developer.desktop", {"opera-developer"}},
      // Some distributions ship the snap under the plain name.
      {"firefox.desktop", {"firefox", "firefox-snap"}},
      {"firefox-esr.desktop", {"firefox"}},
      {"org.mozilla.firefox.desktop", {"firefox-flatpak"}},
      {"firefox_firefox.desktop", {"firefox-snap"}},
      {"librewolf.desktop", {"librewolf"}},
      {"io.gitlab.librewolf-community.desktop", {"librewolf-flatpak"}},
      {"waterfox.desktop", {"waterfox"}},
  };
  return kFiles;
}

}  // namespace

const std::vector<Product>& Products() {
  using F = Family;
  static const std::vector<Product> kProducts = {
      {"chrome", "Google Chrome", F::kChromium, Base::kChromeConfig, "google-chrome"},
      {"chrome-beta", "Google Chrome Beta", F::kChromium, Base::kChromeConfig, "google-chrome-beta"},
      {"chrome-unstable", "Google Chrome Dev", F::kChromium, Base::kChromeConfig, "google-chrome-unstable"},
      {"chrome-flatpak", "Google Chrome (Flatpak)", F::kChromium, Base::kHome,
       ".var/app/com.google.Chrome/config/google-chrome"},
      {"chromium", "Chromium", F::kChromium, Base::kConfig, "chromium"},
      {"chromium-snap", "Chromium (Snap)", F::kChromium, Base::kHome, "snap/chromium/common/chromium"},
      {"chromium-flatpak", "Chromium (Flatpak)", F::kChromium, Base::kHome,
       ".var/app/org.chromium.Chromium/config/chromium"},
      {"brave", "Brave", F::kChromium, Base::kConfig, "BraveSoftware/Brave-Browser"},
      {"brave-flatpak", "Brave (Flatpak)", F::kChromium, Base::kHome,
       ".var/app/com.brave.Browser/config/BraveSoftware/Brave-Browser"},
      {"brave-snap", "Brave (Snap)", F::kChromium, Base::kHome, "snap/brave/current/.config/BraveSoftware/Brave-Browser"},
      {"edge", "Microsoft Edge", F::kChromium, Base::kConfig, "microsoft-edge"},
      {"edge-beta", "Microsoft Edge Beta", F::kChromium, Base::kConfig, "microsoft-edge-beta"},
      {"edge-dev", "Microsoft Edge Dev", F::kChromium, Base::kConfig, "microsoft-edge-dev"},
      {"edge-flatpak", "Microsoft Edge (Flatpak)", F::kChromium, Base::kHome,
       ".var/app/com.microsoft.Edge/config/microsoft-edge"},
      {"vivaldi", "Vivaldi", F::kChromium, Base::kConfig, "vivaldi"},
      {"vivaldi-snapshot", "Vivaldi Snapshot", F::kChromium, Base::kConfig, "vivaldi-snapshot"},
      {"vivaldi-flatpak", "Vivaldi (Flatpak)", F::kChromium, Base::kHome, ".var/app/com.vivaldi.Vivaldi/config/vivaldi"},
      {"opera", "Opera", F::kChromium, Base::kConfig, "opera", true},
      {"opera-beta", "Opera Beta", F::kChromium, Base::kConfig, "opera-beta", true},
      {"opera-developer", "Opera Developer", F::kChromium, Base::kConfig, "opera-developer", true},
      {"firefox", "Firefox", F::kFirefox, Base::kHome, ".mozilla/firefox", false, "mozilla/firefox"},
      {"firefox-snap", "Firefox (Snap)", F::kFirefox, Base::kHome, "snap/firefox/common/.mozilla/firefox"},
      {"firefox-flatpak", "Firefox (Flatpak)", F::kFirefox, Base::kHome, ".var/app/org.mozilla.firefox/.mozilla/firefox"},
      {"librewolf", "LibreWolf", F::kFirefox, Base::kHome, ".librewolf"},
      {"librewolf-flatpak", "LibreWolf (Flatpak)", F::kFirefox, Base::kHome,
       ".var/app/io.gitlab.librewolf-community/.librewolf"},
      {"waterfox", "Waterfox", F::kFirefox, Base::kHome, ".waterfox"},
  };
  return kProducts;
}

const Product* FindProduct(const std::string& id) {
  for (const Product& product : Products()) {
    if (id == product.id) return &product;
  }
  return nullptr;
}

uint32_t FamilyValue(Family family) { return family == Family::kChromium ? BROWSER_CHROME : BROWSER_FIREFOX; }

bool FamilyOfValue(uint32_t browser, Family* lpFamily) {
  if (browser != BROWSER_CHROME && browser != BROWSER_FIREFOX) return false;
  *lpFamily = browser == BROWSER_CHROME ? Family::kChromium : Family::kFirefox;
  return true;
}

std::vector<std::string> ProductsOfDesktopFile(const std::string& desktopFile) {
  for (const DesktopFile& entry : DesktopFiles()) {
    if (desktopFile == entry.file) return entry.products;
  }
  return {};
}

std::string ProductFolder(const Product& product) {
  const std::string base = BaseFolder(product.base);
  if (base.empty()) return std::string();
  const std::string first = base + "/" + product.folder;
  std::error_code error;
  if (product.otherFolder == nullptr || std::filesystem::exists(first, error)) return first;
  const std::string other = BaseFolder(Base::kConfig) + "/" + product.otherFolder;
  return std::filesystem::exists(other, error) ? other : first;
}

}  // namespace corvane::harvest
