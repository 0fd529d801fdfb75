// profile_locator.h: where the browsers we read keep the profile that was
// used last, under $HOME and $XDG_CONFIG_HOME.
//
// Chromium family (delivered as "Chrome"): Google Chrome (stable, beta,
// unstable, flatpak) and Chromium (plain, snap, flatpak); of those present,
// the one whose profile's History was written last. The profile is the one
// Local State names as last used, else the most recently active, else
// "Default". Firefox (also firefox-esr, snap and flatpak): each root offers
// the default of each installation in installs.ini or profiles.ini, else
// the profile marked Default=1, else the first; of all these, across all
// roots, the one whose places.sqlite (or its -wal) was written last.

#ifndef CORVANE_HARVEST_PROFILE_LOCATOR_H_
#define CORVANE_HARVEST_PROFILE_LOCATOR_H_

#include <string>

namespace corvane::harvest {

// The profile folder, or empty when there is none.
std::string FindChromiumProfile();
std::string FindFirefoxProfile();

}  // namespace corvane::harvest

#endif  // CORVANE_HARVEST_PROFILE_LOCATOR_H_
