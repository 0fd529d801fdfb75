// profile_readers.h: what the extraction library delivers from a profile.
//
// History, one item per visit the person chose, with the local wall-clock
// time of the visit, the page title, the URL and the URL's visit count:
// - Chromium: visits that end a navigation chain (a redirect step is left
//   out, its landing page kept), other than subframe loads (automatic and
//   manual) and generated keyword visits, on URLs not marked hidden, and
//   not synced from another device or imported (visit_source).
// - Firefox: visits other than embedded loads (4), downloads (7) and framed
//   links (8), on places not marked hidden. A visit of type 5 or 6 is the
//   page where a redirect ended, which the person sees, and is kept; the
//   page that redirected is left out, both through its hidden place and as
//   the from_visit of such a visit.
// Reloads are kept: the person chose to see the page again.
//
// Favourites, one item per bookmark with its folder path as a person reads
// it ("Bookmarks bar/Work"): Chromium's Bookmarks file; Firefox's
// moz_bookmarks without tags and saved searches (place: URLs).
//
// A file that is missing, locked, torn or corrupt delivers nothing.

#ifndef CORVANE_HARVEST_PROFILE_READERS_H_
#define CORVANE_HARVEST_PROFILE_READERS_H_

#include <memory>
#include <string>
#include <vector>

#include "harvest/harvest_item.h"

namespace corvane::harvest {

using ItemList = std::vector<std::unique_ptr<HarvestItem>>;

void ReadChromiumHistory(const std::string& profile, uint32_t browser, ItemList* lpItems);
void ReadChromiumBookmarks(const std::string& profile, uint32_t browser, ItemList* lpItems);
void ReadFirefoxHistory(const std::string& profile, uint32_t browser, ItemList* lpItems);
void ReadFirefoxBookmarks(const std::string& profile, uint32_t browser, ItemList* lpItems);

}  // namespace corvane::harvest

#endif  // CORVANE_HARVEST_PROFILE_READERS_H_
