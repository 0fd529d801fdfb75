// browser_catalog.h: every browser whose profiles the extraction library
// reads, where each keeps them on Linux, and the desktop files that name it
// as the default browser.
//
// A product is one installation kind of one browser: Chromium from Debian
// and Chromium from a snap keep separate profiles and are separate
// products. Chromium-family products keep a user-data folder (Local State
// and one folder per profile; Opera keeps its one profile in the user-data
// folder itself); Firefox-family products keep a profile root (profiles.ini
// and the profile folders). Every Chromium-family product is delivered
// under the value BROWSER_CHROME, every Firefox-family one under
// BROWSER_FIREFOX: the component knows browsers by those values only.

#ifndef CORVANE_HARVEST_BROWSER_CATALOG_H_
#define CORVANE_HARVEST_BROWSER_CATALOG_H_

#include <cstdint>
#include <string>
#include <vector>

namespace corvane::harvest {

enum class Family { kChromium, kFirefox };

// Where a product's folder lies: under $HOME, under the configuration
// folder ($XDG_CONFIG_HOME, else ~/.config), or under $CHROME_CONFIG_HOME.
enum class Base { kHome, kConfig, kChromeConfig };

struct Product {
  const char* id;    // "brave", "edge-beta", "firefox-snap": names it in Harvest.ini and on the command line
  const char* name;  // "Brave", "Microsoft Edge Beta": for people
  Family family;
  Base base;
  const char* folder;  // below the base
  // Opera keeps History and Bookmarks in the user-data folder itself.
  bool profileIsUserData = false;
  // Where the product keeps its folder when the first place does not
  // exist (recent Firefox under the configuration folder); null for none.
  const char* otherFolder = nullptr;
};

const std::vector<Product>& Products();

// The product of an id; null for one the catalogue lacks.
const Product* FindProduct(const std::string& id);

// The browser value a family is delivered under.
uint32_t FamilyValue(Family family);

// The family a browser value stands for; false for values we don't read.
bool FamilyOfValue(uint32_t browser, Family* lpFamily);

// The product ids a desktop file (as mimeapps.list names it) stands for,
// in the order in which they are tried; empty for one we don't read.
std::vector<std::string> ProductsOfDesktopFile(const std::string& desktopFile);

// The full path of a product's folder under the current environment: the
// first place, or the other one when only that exists. Empty without $HOME.
// $CHROME_CONFIG_HOME, when set, stands in for the configuration folder of
// Google Chrome.
std::string ProductFolder(const Product& product);

}  // namespace corvane::harvest

#endif  // CORVANE_HARVEST_BROWSER_CATALOG_H_
