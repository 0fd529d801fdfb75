// profile_readers.h: what the extraction library delivers from a profile.
//
// History, one item per visit the person chose, with the local wall-clock
// time of the visit, the page title, the URL and the count 1: each item is
// one visit, so the visits of a page add up to the count the browser keeps.
//
// Chromium: a visit is kept when it ends a navigation chain (CHAIN_END),
// on a URL not marked hidden, browsed here (not listed in visit_source as
// synced, from an extension or imported). Of those, left out are:
// - subframe loads, automatic (3) and manual (4): parts of another page;
// - generated keyword visits (10): the search page a keyword led to, which
//   the browser itself does not show as a visit;
// - reloads (8): the page was already on screen; the browser does not
//   count a reload in the URL's visit_count either, so keeping it would
//   deliver more visits of a URL than the browser itself counts.
// A redirect step (a visit without CHAIN_END) is left out; the page where
// the chain ended is kept. Kept as well: form submissions (7), whose result
// page the person asked for, and steps back or forward (the FORWARD_BACK
// qualifier on any core type), which return to a page by choice and which
// the browser counts as visits.
//
// Firefox: kept are links (1), typed visits (2), bookmarks (3) and the
// visits of types 5 and 6 on places not marked hidden. Types 5 and 6 are
// the permanent and temporary redirects, but Firefox gives that type to the
// page the redirect landed on, not to the page that redirected: the landing
// page is what the person saw, and it is kept. The page that redirected is
// the one left out: its place is hidden, and where it is not (an address
// also visited on its own), its visit is the from_visit of a type 5 or 6
// visit. Left out as well: embedded loads (4), downloads (7), framed links
// (8) and reloads (9), the types Firefox leaves out of visit_count.
//
// A visit whose time lies outside 1970..9999 is skipped (visit_values.h).
//
// Favourites, one item per bookmark with its folder path as a person reads
// it ("Bookmarks bar/Work"): Chromium's Bookmarks file; Firefox's
// moz_bookmarks without tags and saved searches (place: URLs).
//
// Each reader adds to the store's current source. It returns false, after
// one debug line that says why, when its file is missing, locked, torn,
// corrupt or not what it expects, and then adds nothing; true when the file
// was read, even if it held nothing.

#ifndef CORVANE_HARVEST_PROFILE_READERS_H_
#define CORVANE_HARVEST_PROFILE_READERS_H_

#include <string>

#include "harvest/item_store.h"

namespace corvane::harvest {

bool ReadChromiumHistory(const std::string& profile, ItemStore* lpItems);
bool ReadChromiumBookmarks(const std::string& profile, ItemStore* lpItems);
bool ReadFirefoxHistory(const std::string& profile, ItemStore* lpItems);
bool ReadFirefoxBookmarks(const std::string& profile, ItemStore* lpItems);

}  // namespace corvane::harvest

#endif  // CORVANE_HARVEST_PROFILE_READERS_H_
