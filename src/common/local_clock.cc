#include "common/local_clock.h"

#include <cstdio>
#include <cstdlib>
#include <ctime>

namespace corvane {
namespace {

// Day of the week for a proleptic Gregorian date, 0 Sunday (Sakamoto).
uint16_t DayOfWeek(int year, int month, int day) {
  static const int kOffsets[] = {0, 3, 2, 5, 0, 3, 5, 1, 4, 6, 2, 4};
  if (month < 3) year -= 1;
  int dow = (year + year / 4 - year / 100 + year / 400 + kOffsets[(month + 11) % 12] + day) % 7;
  return static_cast<uint16_t>(dow);
}

bool ReadTestNow(SYSTEMTIME* lpTime) {
  const char* text = std::getenv("CORVANE_TEST_NOW");
  if (text == nullptr || *text == '\0') return false;
  int y = 0, mo = 0, d = 0, h = 0, mi = 0, s = 0, ms = 0;
  int n = std::sscanf(text, "%d-%d-%d %d:%d:%d.%d", &y, &mo, &d, &h, &mi, &s, &ms);
  if (n < 6) return false;
  *lpTime = SYSTEMTIME{static_cast<uint16_t>(y), static_cast<uint16_t>(mo), DayOfWeek(y, mo, d),
                       static_cast<uint16_t>(d), static_cast<uint16_t>(h), static_cast<uint16_t>(mi),
                       static_cast<uint16_t>(s), static_cast<uint16_t>(n == 7 ? ms : 0)};
  return true;
}

}  // namespace

void UnixMicrosToLocalTime(int64_t unixMicros, SYSTEMTIME* lpTime) {
  // Floor division, so that instants before 1970 keep a sound millisecond.
  int64_t seconds = unixMicros / 1000000;
  int64_t micros = unixMicros % 1000000;
  if (micros < 0) {
    micros += 1000000;
    seconds -= 1;
  }
  time_t t = static_cast<time_t>(seconds);
  struct tm local {};
  localtime_r(&t, &local);
  *lpTime = SYSTEMTIME{static_cast<uint16_t>(local.tm_year + 1900), static_cast<uint16_t>(local.tm_mon + 1),
                       static_cast<uint16_t>(local.tm_wday), static_cast<uint16_t>(local.tm_mday),
                       static_cast<uint16_t>(local.tm_hour), static_cast<uint16_t>(local.tm_min),
                       static_cast<uint16_t>(local.tm_sec), static_cast<uint16_t>(micros / 1000)};
}

void GetLocalTime(SYSTEMTIME* lpTime) {
  if (ReadTestNow(lpTime)) return;
  tzset();
  struct timespec now {};
  clock_gettime(CLOCK_REALTIME, &now);
  UnixMicrosToLocalTime(static_cast<int64_t>(now.tv_sec) * 1000000 + now.tv_nsec / 1000, lpTime);
}

}  // namespace corvane
