#include "common/time_stamp.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "common/local_clock.h"
#include "common/text_util.h"

namespace corvane {
namespace {

constexpr uint64_t kUnitsPerMs = 10000;
constexpr uint64_t kUnitsPerSecond = 1000 * kUnitsPerMs;
// Numbers at or above 2^63 are refused both ways, so every accepted number
// converts back.
constexpr uint64_t kNumberLimit = uint64_t{1} << 63;
constexpr uint64_t kLastDay = (kNumberLimit - 1) / kTimeUnitsPerDay;

constexpr int kFirstYear = 1601;
constexpr uint64_t kDaysPer400Years = 146097;
constexpr uint64_t kDaysPer100Years = 36524;
constexpr uint64_t kDaysPer4Years = 1461;
constexpr uint64_t kDaysPerYear = 365;
// 1601-01-01 was a Monday; 0 is Sunday.
constexpr uint64_t kFirstWeekday = 1;

constexpr std::array<uint16_t, 12> kMonthDays = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};

bool IsLeapYear(int year) { return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0; }

int DaysInMonth(int year, int month) {
  return kMonthDays[month - 1] + ((month == 2 && IsLeapYear(year)) ? 1 : 0);
}

bool HasValidFields(const SYSTEMTIME& t) {
  return t.wYear >= kFirstYear && t.wMonth >= 1 && t.wMonth <= 12 && t.wDay >= 1 &&
         t.wDay <= DaysInMonth(t.wYear, t.wMonth) && t.wHour <= 23 && t.wMinute <= 59 && t.wSecond <= 59 &&
         t.wMilliseconds <= 999;
}

// Days from 1601-01-01 to a valid date. The era begins just after a leap
// century, so leap days before year y are n/4 - n/100 + n/400, n = y - 1601.
uint64_t DaysSinceEpoch(int year, int month, int day) {
  const uint64_t years = static_cast<uint64_t>(year - kFirstYear);
  uint64_t days = years * kDaysPerYear + years / 4 - years / 100 + years / 400;
  for (int m = 1; m < month; ++m) days += static_cast<uint64_t>(DaysInMonth(year, m));
  return days + static_cast<uint64_t>(day - 1);
}

// Fills year, month, day and weekday for a day number. Each 400-year cycle
// of the era ends in its leap century, each century in its non-leap year and
// each 4-year group in its leap year, hence the caps at 3.
void DayToDate(uint64_t dayNumber, SYSTEMTIME* out) {
  uint64_t rest = dayNumber % kDaysPer400Years;
  const uint64_t cycles = dayNumber / kDaysPer400Years;
  const uint64_t centuries = std::min<uint64_t>(rest / kDaysPer100Years, 3);
  rest -= centuries * kDaysPer100Years;
  const uint64_t groups = rest / kDaysPer4Years;
  rest %= kDaysPer4Years;
  const uint64_t years = std::min<uint64_t>(rest / kDaysPerYear, 3);
  rest -= years * kDaysPerYear;
  const int year = kFirstYear + static_cast<int>(cycles * 400 + centuries * 100 + groups * 4 + years);
  int month = 1;
  while (rest >= static_cast<uint64_t>(DaysInMonth(year, month))) {
    rest -= static_cast<uint64_t>(DaysInMonth(year, month));
    ++month;
  }
  out->wYear = static_cast<uint16_t>(year);
  out->wMonth = static_cast<uint16_t>(month);
  out->wDay = static_cast<uint16_t>(rest + 1);
  out->wDayOfWeek = static_cast<uint16_t>((dayNumber + kFirstWeekday) % 7);
}

// Reads the eight stamp fields in stamp order: year, month, day, weekday,
// hour, minute, second, millisecond. A blank in the pattern matches any run
// of blanks, including none, as in scanf.
bool ScanStampFields(std::u16string_view text, std::array<int16_t, 8>* fields) {
  static constexpr std::array<char16_t, 7> kSeparators = {u'.', u'.', u' ', u' ', u':', u':', u'.'};
  size_t pos = 0;
  for (size_t i = 0; i < fields->size(); ++i) {
    if (i > 0 && kSeparators[i - 1] != u' ') {
      if (pos >= text.size() || text[pos] != kSeparators[i - 1]) return false;
      ++pos;
    }
    // ScanInt16 skips the blanks in front of a number itself.
    if (!ScanInt16(text, &pos, &(*fields)[i])) return false;
  }
  return true;
}

}  // namespace

bool SystemTimeToTimeNumber(const SYSTEMTIME& time, uint64_t* out) {
  if (!HasValidFields(time)) return false;
  const uint64_t days = DaysSinceEpoch(time.wYear, time.wMonth, time.wDay);
  if (days > kLastDay) return false;
  const uint64_t seconds = (uint64_t{time.wHour} * 60 + time.wMinute) * 60 + time.wSecond;
  const uint64_t number = days * kTimeUnitsPerDay + seconds * kUnitsPerSecond + time.wMilliseconds * kUnitsPerMs;
  if (number >= kNumberLimit) return false;
  *out = number;
  return true;
}

bool TimeNumberToSystemTime(uint64_t number, SYSTEMTIME* out) {
  if (number >= kNumberLimit) return false;
  DayToDate(number / kTimeUnitsPerDay, out);
  const uint64_t ms = (number % kTimeUnitsPerDay) / kUnitsPerMs;
  out->wMilliseconds = static_cast<uint16_t>(ms % 1000);
  out->wSecond = static_cast<uint16_t>(ms / 1000 % 60);
  out->wMinute = static_cast<uint16_t>(ms / 60000 % 60);
  out->wHour = static_cast<uint16_t>(ms / 3600000);
  return true;
}

namespace {

// The decimal digits of value, at least minDigits of them with zeros in
// front, as "%0*d" writes a field that is never negative.
void AppendPadded(uint16_t value, int minDigits, std::u16string* out) {
  char16_t digits[5];
  int count = 0;
  do {
    digits[count++] = static_cast<char16_t>(u'0' + value % 10);
    value = static_cast<uint16_t>(value / 10);
  } while (value != 0);
  for (int pad = count; pad < minDigits; ++pad) out->push_back(u'0');
  while (count > 0) out->push_back(digits[--count]);
}

}  // namespace

// "%04d.%02d.%02d %d %02d:%02d:%02d.%03d", written out by hand: it runs for
// every stored visit.
void FormatVisitStamp(const SYSTEMTIME& time, std::u16string* out) {
  struct Field {
    uint16_t value;
    int digits;
    char16_t separator;  // behind the field; 0 for none
  };
  const Field fields[] = {{time.wYear, 4, u'.'},      {time.wMonth, 2, u'.'},  {time.wDay, 2, u' '},
                          {time.wDayOfWeek, 1, u' '}, {time.wHour, 2, u':'},   {time.wMinute, 2, u':'},
                          {time.wSecond, 2, u'.'},    {time.wMilliseconds, 3, 0}};
  out->clear();
  for (const Field& field : fields) {
    AppendPadded(field.value, field.digits, out);
    if (field.separator != 0) out->push_back(field.separator);
  }
}

bool ParseVisitStamp(std::u16string_view text, uint64_t* out) {
  *out = 0;
  std::array<int16_t, 8> f{};
  if (!ScanStampFields(text, &f)) return false;
  // The fields land in the record's 16-bit slots bit for bit, so a negative
  // field becomes a large value that the range checks refuse.
  const auto w = [](int16_t v) { return static_cast<uint16_t>(v); };
  const SYSTEMTIME time{w(f[0]), w(f[1]), w(f[3]), w(f[2]), w(f[4]), w(f[5]), w(f[6]), w(f[7])};
  return SystemTimeToTimeNumber(time, out);
}

uint64_t VisitStampToLong(std::u16string_view text) {
  uint64_t number = 0;
  return ParseVisitStamp(text, &number) ? number : 0;
}

uint64_t VisitStampToLong(const char16_t* text) {
  return text == nullptr ? 0 : VisitStampToLong(std::u16string_view(text));
}

bool TimeNumberToStamp(uint64_t number, std::u16string* out) {
  SYSTEMTIME time{};
  // A refused number leaves the record zeroed, and the zeroed stamp stands.
  static_cast<void>(TimeNumberToSystemTime(number, &time));
  FormatVisitStamp(time, out);
  return true;
}

uint64_t TimeNumberDiffMs(uint64_t a, uint64_t b) { return (a > b ? a - b : b - a) / kUnitsPerMs; }

uint32_t DayNumber(uint64_t number) { return static_cast<uint32_t>(number / kTimeUnitsPerDay); }

bool IsToday(uint32_t dayNumber) { return dayNumber == LocalDayNumberToday(); }

std::u16string FormatDateText(const SYSTEMTIME& time) {
  char buffer[32];
  const int length = std::snprintf(buffer, sizeof(buffer), "%04d.%02d.%02d", time.wYear, time.wMonth, time.wDay);
  return std::u16string(buffer, buffer + (length > 0 ? length : 0));
}

uint64_t LocalTimeNumberNow() {
  SYSTEMTIME now{};
  GetLocalTime(&now);
  uint64_t number = 0;
  return SystemTimeToTimeNumber(now, &number) ? number : 0;
}

uint32_t LocalDayNumberToday() { return DayNumber(LocalTimeNumberNow()); }

std::u16string StampOfNow() {
  SYSTEMTIME now{};
  GetLocalTime(&now);
  std::u16string stamp;
  FormatVisitStamp(now, &stamp);
  return stamp;
}

}  // namespace corvane
