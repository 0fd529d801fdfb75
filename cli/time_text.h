// time_text.h: the component's visit stamps as programs and people read
// times.
//
// The component stamps a visit "2024.03.05 2 09:07:03.041" (local time,
// with the weekday as a digit). JSON gives ISO 8601 with the UTC offset of
// that local time; a listing filters by the date.

#ifndef CORVANE_CLI_TIME_TEXT_H_
#define CORVANE_CLI_TIME_TEXT_H_

#include <string>

namespace corvane::cli {

// "2024-03-05T09:07:03.041+01:00"; empty when the stamp does not parse.
std::string StampToIso(const std::string& stamp);
// "2024-03-05" of a stamp; empty when it does not parse.
std::string StampDate(const std::string& stamp);
// Whether text is a date "YYYY-MM-DD" of the calendar.
[[nodiscard]] bool IsIsoDate(const std::string& text);

// A stamp in the LC_TIME locale's date and time form ("%c"); the stamp
// itself when it does not parse.
std::string StampForPeople(const std::string& stamp);

// The heading of a day of the history in the LC_TIME locale: under a
// Chinese locale the component's own label; else "Today, ", "Yesterday, "
// or nothing before the date as the locale writes it ("Wednesday 25
// November 2026" under C and en_*). date is "YYYY-MM-DD", today too.
std::string DayHeading(const std::string& date, const std::string& today, const std::string& componentLabel);
// Today's local date, "YYYY-MM-DD" ($CORVANE_TEST_NOW when set, as the
// component takes it).
std::string TodayDate();

}  // namespace corvane::cli

#endif  // CORVANE_CLI_TIME_TEXT_H_
