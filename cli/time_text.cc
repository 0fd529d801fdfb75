#include "cli/time_text.h"

#include <cstdio>
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

}  // namespace

std::string StampToIso(const std::string& stamp) {
  StampParts p{};
  if (!ParseStamp(stamp, &p)) return std::string();
  // The offset is the local zone's at that instant; a time in the hour
  // that a change to summer time skips is taken as the zone takes it.
  struct tm local {};
  local.tm_year = p.year - 1900;
  local.tm_mon = p.month - 1;
  local.tm_mday = p.day;
  local.tm_hour = p.hour;
  local.tm_min = p.minute;
  local.tm_sec = p.second;
  local.tm_isdst = -1;
  if (mktime(&local) == static_cast<time_t>(-1)) return std::string();
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

}  // namespace corvane::cli
