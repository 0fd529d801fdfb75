// visit_values.h: the checks both history readers apply to the numbers a
// browser stored, before any arithmetic on them.
//
// A damaged or hostile file can hold any 64-bit value. A time is delivered
// only when its local date lies within 1970..9999 in every zone (so that
// the calendar record and the provider's stamps can hold it; 0 in Chromium
// would be the year 1601); the others are skipped, and one debug line per
// file says how many. A typed count is clamped, not cut: 2^32 + 1 stays a
// large count instead of becoming 1, and a negative count is no count.

#ifndef CORVANE_HARVEST_VISIT_VALUES_H_
#define CORVANE_HARVEST_VISIT_VALUES_H_

#include <algorithm>
#include <cstdint>
#include <string>

#include "common/debug_log.h"

namespace corvane::harvest {

// 1970-01-02 00:00 UTC up to 9999-12-30 24:00 UTC (exclusive): a day of
// margin on each side for the zones west and east of UTC.
inline constexpr int64_t kMinUnixMicros = 86400LL * 1000000;
inline constexpr int64_t kMaxUnixMicros = 253402214400LL * 1000000 - 1;

inline bool IsDeliverableTime(int64_t unixMicros) {
  return unixMicros >= kMinUnixMicros && unixMicros <= kMaxUnixMicros;
}

inline uint32_t ClampTypedCount(int64_t count) {
  return static_cast<uint32_t>(std::clamp<int64_t>(count, 0, UINT32_MAX));
}

// Counts the visits skipped for their time and reports them once.
class SkippedTimes {
 public:
  void Note(int64_t stored) {
    if (m_count++ == 0) m_first = stored;
  }
  void Report(const std::string& file) const {
    if (m_count == 0) return;
    DebugLog("harvest: %lld visits of %s skipped: time outside 1970..9999 (first stored as %lld)\n",
             static_cast<long long>(m_count), file.c_str(), static_cast<long long>(m_first));
  }

 private:
  int64_t m_count = 0;
  int64_t m_first = 0;
};

}  // namespace corvane::harvest

#endif  // CORVANE_HARVEST_VISIT_VALUES_H_
