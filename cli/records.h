// records.h: what the host keeps of the component's result objects.
//
// The component answers with arrays of records behind IURLArray, IURLInfo
// and IURLInfo2. These functions copy them into plain structs right away,
// so that the rest of the host (tables, JSON, the report) never touches an
// interface and no reference outlives the call that read it.

#ifndef CORVANE_CLI_RECORDS_H_
#define CORVANE_CLI_RECORDS_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "corvane/CorvaneDataProvider.h"

namespace corvane::cli {

// A recommendation or recent record (IURLInfo2).
struct SiteRecord {
  uint32_t id = 0;                     // GetID; a nested sub-site's is set by the session (0: none)
  std::string name;
  std::string url;
  std::string domain;
  std::string mainDomain;
  std::string lastVisit;
  std::string fixedUrl;
  std::optional<uint32_t> weight;      // "Weight", or "Score" of a recent domain
  std::optional<uint32_t> hide;        // "Hide"; 0xFFFFFFFF is -1
  std::optional<uint32_t> whiteList;   // record kind: 0 URL, 1 domain, 2 sub-domain, 3 sub-site, 4 pin
  std::optional<uint32_t> visitCount;
  std::optional<uint32_t> focusId;
  bool focus = false;                  // came from the focus half of the listing
  std::vector<SiteRecord> subSites;    // "SubDomain"
};

// A history, favourite or pinned record (IURLInfo).
struct UrlRecord {
  uint32_t id = 0;
  std::string name;
  std::string url;
  std::string path;
  std::string lastVisit;
};

// One day of the history listing: the title record's label and the visits.
struct DayGroup {
  std::string label;
  std::vector<UrlRecord> visits;
};

// Each returns the first failing status of the interfaces it reads, S_OK
// otherwise; the output vector then holds every item of the array.
[[nodiscard]] HRESULT ReadSiteArray(IUnknown* lpArray, std::vector<SiteRecord>* lpOut);
[[nodiscard]] HRESULT ReadUrlArray(IUnknown* lpArray, std::vector<UrlRecord>* lpOut);
[[nodiscard]] HRESULT ReadDayGroups(IUnknown* lpArray, std::vector<DayGroup>* lpOut);

// The kind the host gives a pin that the ranking does not hold.
inline constexpr uint32_t kPinRecord = 4;

// Kind names of the "WhiteList" values, as the hide command takes them.
const char* SiteKindName(const SiteRecord& record);
// The hide state in words: "visible", "hidden", "hidden until rebuild",
// "lowered" (shown again with a lowered score).
const char* HideStateName(std::optional<uint32_t> hide);

}  // namespace corvane::cli

#endif  // CORVANE_CLI_RECORDS_H_
