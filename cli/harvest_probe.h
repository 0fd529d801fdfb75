// harvest_probe.h: which browsers the extraction library can read here.
//
// The library asked is the one the component loads for an update:
// $CORVANE_HARVEST_LIBRARY when set, else libVisitHarvest.so in the folder
// of the component's own file. It is loaded with dlopen, asked through its
// exports GetDefautBrowser and IsBrowserInstalled, and unloaded again, so
// the answer covers every place the library looks for profiles.

#ifndef CORVANE_CLI_HARVEST_PROBE_H_
#define CORVANE_CLI_HARVEST_PROBE_H_

#include <cstdint>
#include <string>
#include <vector>

namespace corvane::cli {

struct BrowserFindings {
  std::string library;               // the file that was asked
  uint32_t defaultBrowser = 0;       // 0: none known
  std::vector<uint32_t> installed;   // in the order of the browser values
};

// The browser values of the extraction contract, each one bit.
const std::vector<uint32_t>& BrowserValues();
// The name the component gives a browser value ("Chrome", "FireFox", ...).
const char* BrowserName(uint32_t browser);
// False with a one-line message when the library does not load or lacks
// the exports.
[[nodiscard]] bool ProbeBrowsers(BrowserFindings* lpOut, std::string* lpError);

}  // namespace corvane::cli

#endif  // CORVANE_CLI_HARVEST_PROBE_H_
