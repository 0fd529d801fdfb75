#include "cli/time_text.h"

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

namespace corvane::cli {
namespace {

struct StampParts {
  int year, month, day, weekday, hour, minute, second, millis;
};

bool ParseStamp(const std::string& stamp, StampParts* lpParts) {
  StampParts& p = *lpParts;
  int consumed = 0;
  return std::sscanf(stamp.c_str(), "%4d.%2d.%2d %1d %2d:%2d:%2d.%3d%n", &p.year, &p.month, &p.day, &p.weekday,
                     &p.hour, &p.minute, &p.second, &p.millis, &consumed) == 8 &&
         static_cast<size_t>(consumed) == stamp.size() && p.month >= 1 && p.month <= 12 && p.day >= 1 &&
         p.day <= 31 && p.hour < 24 && p.minute < 60 && p.second < 61;
}

// The local time of the stamp, its zone offset worked out; a time in the
// hour that a change to summer time skips is taken as the zone takes it.
bool LocalTimeOf(const StampParts& p, struct tm* lpLocal) {
  *lpLocal = tm{};
  lpLocal->tm_year = p.year - 1900;
  lpLocal->tm_mon = p.month - 1;
  lpLocal->tm_mday = p.day;
  lpLocal->tm_hour = p.hour;
  lpLocal->tm_min = p.minute;
  lpLocal->tm_sec = p.second;
  lpLocal->tm_isdst = -1;
  return mktime(lpLocal) != static_cast<time_t>(-1);
}

}  // namespace

std::string StampToIso(const std::string& stamp) {
  StampParts p{};
  struct tm local {};
  if (!ParseStamp(stamp, &p) || !LocalTimeOf(p, &local)) return std::string();
  const long offset = local.tm_gmtoff / 60;
  char text[48];
  std::snprintf(text, sizeof(text), "%04d-%02d-%02dT%02d:%02d:%02d.%03d%c%02ld:%02ld", p.year, p.month, p.day, p.hour,
                p.minute, p.second, p.millis, offset < 0 ? '-' : '+', (offset < 0 ? -offset : offset) / 60,
                (offset < 0 ? -offset : offset) % 60);
  return text;
}

std::string StampDate(const std::string& stamp) {
  StampParts p{};
  if (!ParseStamp(stamp, &p)) return std::string();
  char text[16];
  std::snprintf(text, sizeof(text), "%04d-%02d-%02d", p.year, p.month, p.day);
  return text;
}

bool IsIsoDate(const std::string& text) {
  int year = 0, month = 0, day = 0, consumed = 0;
  if (std::sscanf(text.c_str(), "%4d-%2d-%2d%n", &year, &month, &day, &consumed) != 3 || consumed != 10 ||
      text.size() != 10 || month < 1 || month > 12 || day < 1) {
    return false;
  }
  const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
  const int kDays[] = {31, leap ? 29 : 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return day <= kDays[month - 1];
}

namespace {

bool DateParts(const std::string& date, struct tm* lpTime) {
  int year = 0, month = 0, day = 0;
  if (std::sscanf(date.c_str(), "%4d-%2d-%2d", &year, &month, &day) != 3) return false;
  *lpTime = tm{};
  lpTime->tm_year = year - 1900;
  lpTime->tm_mon = month - 1;
  lpTime->tm_mday = day;
  lpTime->tm_hour = 12;
  lpTime->tm_isdst = -1;
  return mktime(lpTime) != static_cast<time_t>(-1);
}

std::string Strftime(const char* format, const struct tm& time) {
  char text[128];
  const size_t size = std::strftime(text, sizeof(text), format, &time);
  return std::string(text, size);
}

}  // namespace

std::string StampForPeople(const std::string& stamp) {
  StampParts p{};
  struct tm local {};
  if (!ParseStamp(stamp, &p) || !LocalTimeOf(p, &local)) return stamp;
  return Strftime("%c", local);
}

std::string DayHeading(const std::string& date, const std::string& today, const std::string& componentLabel) {
  const char* locale = std::setlocale(LC_TIME, nullptr);
  if (locale != nullptr && std::string(locale).rfind("zh", 0) == 0) return componentLabel;
  struct tm day {}, now {};
  if (!DateParts(date, &day) || !DateParts(today, &now)) return componentLabel;
  std::string written = Strftime("%A %e %B %Y", day);
  for (size_t twice = written.find("  "); twice != std::string::npos; twice = written.find("  ")) written.erase(twice, 1);
  const double apart = std::difftime(std::mktime(&now), std::mktime(&day)) / 86400.0;
  if (apart > -0.5 && apart < 0.5) return "Today, " + written;
  if (apart > 0.5 && apart < 1.5) return "Yesterday, " + written;
  return written;
}

std::string TodayDate() {
  const char* fixed = std::getenv("CORVANE_TEST_NOW");
  if (fixed != nullptr && std::strlen(fixed) >= 10) return std::string(fixed, 10);
  const time_t now = std::time(nullptr);
  struct tm local {};
  localtime_r(&now, &local);
  return Strftime("%Y-%m-%d", local);
}

}  // namespace corvane::cli
