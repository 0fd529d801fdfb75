#include "cli/row_ids.h"

#include "cli/host_text.h"

namespace corvane::cli {

std::string RowId(RowKind kind, uint32_t number) { return static_cast<char>(kind) + std::to_string(number); }

RowKind SiteRowKind(const SiteRecord& record) {
  switch (record.whiteList.value_or(0xFFFFFFFFu)) {
    case 0: return RowKind::kUrl;
    case 2: return RowKind::kSubDomain;
    case kPinRecord: return RowKind::kPin;
    default: return RowKind::kDomain;  // sites and their parts
  }
}

bool ParseRowId(const std::string& text, RowKind* lpKind, uint32_t* lpNumber) {
  if (text.size() < 2 || !IsDecimalNumber(text.substr(1))) return false;
  for (RowKind kind : {RowKind::kDomain, RowKind::kSubDomain, RowKind::kUrl, RowKind::kPin, RowKind::kHistory,
                       RowKind::kFavorite, RowKind::kRecent}) {
    if (text[0] != static_cast<char>(kind)) continue;
    *lpKind = kind;
    *lpNumber = static_cast<uint32_t>(std::stoul(text.substr(1)));
    return true;
  }
  return false;
}

}  // namespace corvane::cli
