// sources.h: which browser profiles an extraction reads, as Harvest.ini in
// the component's data folder says, and what the last extraction read.
//
//   [Sources]
//   Read=default            the family's default profile (profile_locator.h);
//                           also when the file or the key is missing
//   Read=all                every profile of every browser found
//   Read=brave:Default, firefox:default-release
//                           the profiles named, as `corvane browsers` prints
//                           them, separated by commas; "default" and "all"
//                           may stand among them
//
// With more than one profile chosen, an extraction of either family's value
// delivers the visits of all of them as one stream (item_store.h). An entry
// that names no browser of the catalogue, or no profile found here, is
// reported and passed over; when no entry names a profile found here, the
// default is read, so that a damaged file never reads nothing.
//
//   [LastRead]
//   History=1234 brave:Default; 567 firefox:default-release
//   Favorites=...
//
// is written by each extraction that delivered items: the number of items
// each profile gave and its name, so that a host can say what was read.

#ifndef CORVANE_HARVEST_SOURCES_H_
#define CORVANE_HARVEST_SOURCES_H_

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "harvest/profile_locator.h"

namespace corvane::harvest {

struct SourceChoice {
  bool all = false;
  bool withDefault = true;         // "default" stands in the list (or nothing else does)
  std::vector<std::string> names;  // "browser:profile" entries, as written
  std::vector<std::string> problems;
};

// Harvest.ini in the data folder; empty when there is no data folder.
std::string HarvestIniPath();

// The Read value of Harvest.ini, parsed; unreadable or missing, the default.
SourceChoice ReadSourceChoice();
// Parses a Read value; what it can't take goes to problems.
SourceChoice ParseSourceChoice(const std::string& value);

// Writes Read=value, the data folder made when missing. False, with
// *lpError, when the file can't be written.
bool WriteSourceChoice(const std::string& value, std::string* lpError);

// The profiles that an extraction of the family reads, in the order of
// profiles, each once. Entries of the list that name nothing found here
// are added to *lpProblems.
std::vector<const BrowserProfile*> ChosenProfiles(const SourceChoice& choice, const std::vector<BrowserProfile>& profiles,
                                                  Family family, const std::vector<std::string>& defaultProducts,
                                                  std::vector<std::string>* lpProblems);

// What the last extraction of a kind read: the number of items of each
// profile and its name.
using ReadCounts = std::vector<std::pair<std::string, uint32_t>>;
void RecordLastRead(uint32_t kind, const ReadCounts& counts);
ReadCounts LastRead(uint32_t kind);

}  // namespace corvane::harvest

#endif  // CORVANE_HARVEST_SOURCES_H_
