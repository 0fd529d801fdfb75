// time_stamp.h: the forms a visit's time takes and the conversions between
// them.
//
//  - calendar record: SYSTEMTIME, a wall-clock reading without a zone;
//  - visit stamp: "YYYY.MM.DD W hh:mm:ss.mmm" with W the day of the week
//    (0 Sunday); fixed widths make text order the order of time;
//  - time number: 100-nanosecond units since 1601-01-01 00:00:00 of the
//    proleptic Gregorian calendar, from the fields as they stand;
//  - day number: whole days since 1601-01-01 (time number / one day).
//
// All forms hold the same local wall-clock reading; nothing converts zones.
// No state, safe on any thread.

#ifndef CORVANE_COMMON_TIME_STAMP_H_
#define CORVANE_COMMON_TIME_STAMP_H_

#include <cstdint>
#include <string>
#include <string_view>

#include "corvane/VisitHarvest.h"

namespace corvane {

// 100-nanosecond units in one day.
inline constexpr uint64_t kTimeUnitsPerDay = 864000000000ULL;

// Calendar record to time number. False, with *out untouched, for a year
// before 1601, a month outside 1..12, a day the month lacks, an hour above
// 23, a minute or second above 59, milliseconds above 999, or a date so late
// that the number would reach 2^63. wDayOfWeek is ignored.
[[nodiscard]] bool SystemTimeToTimeNumber(const SYSTEMTIME& time, uint64_t* out);

// Time number to calendar record, the day of the week derived from the
// date. False, with *out untouched, at or above 2^63.
[[nodiscard]] bool TimeNumberToSystemTime(uint64_t number, SYSTEMTIME* out);

// The visit stamp of a record, with the record's own wDayOfWeek.
void FormatVisitStamp(const SYSTEMTIME& time, std::u16string* out);

// The stamp of the local time now (GetLocalTime).
std::u16string StampOfNow();

// Reads a stamp the way "%hd.%hd.%hd %hd %hd:%hd:%hd.%hd" scans it (fields
// without leading zeros are accepted, text behind the milliseconds is
// ignored, the weekday digit is not checked). True when all eight fields
// were read and form a valid date and time; otherwise false and *out is 0.
[[nodiscard]] bool ParseVisitStamp(std::u16string_view text, uint64_t* out);

// The time number of a stamp; 0 for null, for text that does not parse and
// for invalid fields.
[[nodiscard]] uint64_t VisitStampToLong(std::u16string_view text);
[[nodiscard]] uint64_t VisitStampToLong(const char16_t* text);

// The stamp of a time number, the weekday derived from the date. A number
// at or above 2^63 gives "0000.00.00 0 00:00:00.000". Always true.
bool TimeNumberToStamp(uint64_t number, std::u16string* out);

// |a - b| in whole milliseconds, the rest dropped.
[[nodiscard]] uint64_t TimeNumberDiffMs(uint64_t a, uint64_t b);

// Whole days since 1601-01-01: the VisitDate of a visit.
[[nodiscard]] uint32_t DayNumber(uint64_t number);

// True when the day number is the local date now (GetLocalTime).
[[nodiscard]] bool IsToday(uint32_t dayNumber);

// "YYYY.MM.DD" of a record.
std::u16string FormatDateText(const SYSTEMTIME& time);

// The time number and day number of the local time now; 0 should the clock
// give a reading that does not convert.
[[nodiscard]] uint64_t LocalTimeNumberNow();
[[nodiscard]] uint32_t LocalDayNumberToday();

}  // namespace corvane

#endif  // CORVANE_COMMON_TIME_STAMP_H_
