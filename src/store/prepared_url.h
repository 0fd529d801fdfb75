// prepared_url.h: one URL of one day as the visit classification keeps it,
// and the map of those by fixed URL. The analysis fills them; the store
// writes them to TPreparedURL and, on the IE-only path, to TRecommendURL.

#ifndef CORVANE_STORE_PREPARED_URL_H_
#define CORVANE_STORE_PREPARED_URL_H_

#include <cstdint>
#include <map>
#include <string>

namespace corvane {

struct CPreparedURL {
  int32_t DayIndex = 0;
  int32_t lastDayIndex = 0;      // day index at which the record last counted a visit
  std::u16string Name;           // empty: there is no such visit
  std::u16string fixedURL;
  std::u16string VisitTime;      // visit stamp
  int32_t rowVisitCount = 0;     // VisitCount of the history row, at least 1
  int32_t mergedRows = 0;        // rows merged after the first
  int32_t hadWww = 0;
  int32_t hadSlash = 0;
  int32_t VisitCount = 0;        // sum over merged rows
  int32_t dayCount = 1;          // distinct days counted
};

// Ordered by UTF-16 code units of the fixed URL, case included.
using PreparedMap = std::map<std::u16string, CPreparedURL>;

}  // namespace corvane

#endif  // CORVANE_STORE_PREPARED_URL_H_
