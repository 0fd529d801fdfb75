// row_actions.h: what a person does to the rows of the listings, shared by
// the command line and the start page: the sites with every pin first,
// pinning (checked, renaming a pinned URL) and hiding a row by its row ID
// (a site with every ranked row of its main domain).
//
// Each action goes through the component's own operations. A failure comes
// back as a status with a sentence in *lpError: E_INVALIDARG for what the
// person gave wrongly, E_FAIL for a row that is not listed or a component
// that failed.

#ifndef CORVANE_CLI_ROW_ACTIONS_H_
#define CORVANE_CLI_ROW_ACTIONS_H_

#include <string>
#include <vector>

#include "cli/records.h"
#include "cli/session.h"

namespace corvane::cli {

// At most count records, every pin first in its order and under its own
// name (a pinned site that the ranking holds is that record, any other pin
// a record of its own), then the ranking.
[[nodiscard]] HRESULT ListSitesWithPins(ProviderSession& session, uint32_t count, std::vector<SiteRecord>* lpSites);

// Whether a pin may be made of the URL and name: http or https with a
// host, file, or a bare main domain (the whole site), and a name. False with
// the reason.
[[nodiscard]] bool CheckPin(const std::string& url, const std::string& name, std::string* lpError);

// Whether the text is a row ID that can be hidden so (no pin, no recent
// row; --until-rebuild only for the ranked rows). False with the reason.
[[nodiscard]] bool CheckHideTarget(const std::string& rowId, bool untilRebuild, std::string* lpError);

// *lpAction: "pinned", "renamed" or "already pinned". E_INVALIDARG for
// what CheckPin refuses.
[[nodiscard]] HRESULT PinUrl(ProviderSession& session, const std::string& url, const std::string& name,
                             std::string* lpAction, std::string* lpError);

// *lpWhat says what was hidden: a site with the count of its rows.
// E_INVALIDARG for what CheckHideTarget refuses.
[[nodiscard]] HRESULT HideRow(ProviderSession& session, const std::string& rowId, bool untilRebuild,
                              std::string* lpWhat, std::string* lpError);

}  // namespace corvane::cli

#endif  // CORVANE_CLI_ROW_ACTIONS_H_
