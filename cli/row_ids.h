// row_ids.h: the IDs that the host shows for listed rows.
//
// The component numbers the rows of each of its tables on their own, so
// one number may name a ranked site and a ranked page at once. The host
// puts a letter for the table before the component's number, and the ID
// names one row whatever listing shows it:
//   s109  a site, or one of its parts: the ranked row of a host
//   d7    a sub-domain that is a site of its own
//   u109  a single ranked page
//   p2    a pinned site
//   h8048 a visit of the history
//   f3    a favourite
//   r4    the fourth row of the recent listing, which the component does
//         not let a host hide
// JSON keeps the kind and the component's own ID beside it.

#ifndef CORVANE_CLI_ROW_IDS_H_
#define CORVANE_CLI_ROW_IDS_H_

#include <cstdint>
#include <string>

#include "cli/records.h"

namespace corvane::cli {

enum class RowKind : char {
  kDomain = 's',
  kSubDomain = 'd',
  kUrl = 'u',
  kPin = 'p',
  kHistory = 'h',
  kFavorite = 'f',
  kRecent = 'r',
};

std::string RowId(RowKind kind, uint32_t number);
// The row kind of a record of the sites listing.
RowKind SiteRowKind(const SiteRecord& record);
// False for text that is no row ID (a letter of the list above and a
// decimal number that fits 32 bits).
[[nodiscard]] bool ParseRowId(const std::string& text, RowKind* lpKind, uint32_t* lpNumber);

}  // namespace corvane::cli

#endif  // CORVANE_CLI_ROW_IDS_H_
