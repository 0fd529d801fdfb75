// local_clock.h: the local wall-clock time, with a seam for tests.
//
// GetLocalTime reads the real clock in the local zone (honouring TZ), unless
// $CORVANE_TEST_NOW holds "YYYY-MM-DD HH:MM:SS[.mmm]": then that reading is
// the time now, with the day of the week worked out from the date. Tests of
// the once-a-day gate and of the date labels use it through the exports.

#ifndef CORVANE_COMMON_LOCAL_CLOCK_H_
#define CORVANE_COMMON_LOCAL_CLOCK_H_

#include "corvane/VisitHarvest.h"

namespace corvane {

void GetLocalTime(SYSTEMTIME* lpTime);

// Fills the calendar record from a Unix time in microseconds, in the local
// zone; the day of the week comes from the date. The zone is the one last
// read by tzset: a caller converting many times calls tzset once first
// (glibc looks at the zone file again on every tzset).
void UnixMicrosToLocalTime(int64_t unixMicros, SYSTEMTIME* lpTime);

}  // namespace corvane

#endif  // CORVANE_COMMON_LOCAL_CLOCK_H_
