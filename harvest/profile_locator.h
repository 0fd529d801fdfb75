// profile_locator.h: every profile of every browser of the catalogue
// (browser_catalog.h) found under $HOME, and the one that a family's
// extraction reads by default.
//
// Chromium family: the profiles of a user-data folder are the folders that
// Local State lists in profile.info_cache and any other folder holding a
// History file; Guest Profile and System Profile are left out. The one used
// last is the one Local State names as last used, else the most recently
// active, else "Default". Opera keeps its single profile in the user-data
// folder itself.
//
// Firefox family: the profiles of a root are the [ProfileN] sections of
// profiles.ini. The one used last is, of the defaults of the installations
// (installs.ini, then the [Install...] sections of profiles.ini), the one
// whose places.sqlite (or its -wal) was written last; without one, the
// profile marked Default=1, else the first.

#ifndef CORVANE_HARVEST_PROFILE_LOCATOR_H_
#define CORVANE_HARVEST_PROFILE_LOCATOR_H_

#include <string>
#include <vector>

#include "harvest/browser_catalog.h"

namespace corvane::harvest {

struct BrowserProfile {
  const Product* product = nullptr;
  std::string folder;  // holds History and Bookmarks, or places.sqlite
  std::string name;    // "Default", "Profile 1"; Firefox: the Name of profiles.ini
  std::string label;   // the name the person gave it, where the browser keeps one; else name
  bool usedLast = false;

  // "brave:Default": how Harvest.ini and the command line name it.
  std::string SourceName() const { return std::string(product->id) + ":" + name; }
  // History (Chromium family) or places.sqlite (Firefox family).
  std::string HistoryFile() const;
};

// Every profile found, products in catalogue order.
std::vector<BrowserProfile> FindProfiles();

// The profile that an extraction of the family reads when Harvest.ini asks
// for no other: the one the default browser (given as the products its
// desktop file stands for) used last, when that browser is of the family
// and has a history; else, of the profiles each product of the family used
// last, the one whose history was written last. Null when there is none.
const BrowserProfile* DefaultProfile(const std::vector<BrowserProfile>& profiles, Family family,
                                     const std::vector<std::string>& defaultProducts);

}  // namespace corvane::harvest

#endif  // CORVANE_HARVEST_PROFILE_LOCATOR_H_
