#include "floors.h"

#include <sqlite3.h>

#include <chrono>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <vector>

namespace corvane::bench {
namespace {

// Visits that a person chose: the end of a redirect chain, not a subframe,
// not a generated keyword visit, on a URL that is not hidden.
constexpr char kVisitQuery[] =
    "select u.url, u.title, u.visit_count, v.visit_time from visits v join urls u on u.id = v.url "
    "where (v.transition & 0x20000000) != 0 and (v.transition & 255) not in (3, 4, 10) and u.hidden = 0 "
    "order by v.visit_time";
constexpr char kCreateBareHistory[] =
    "create table THistory(HID INTEGER PRIMARY KEY ASC AUTOINCREMENT,Name TEXT,URL TEXT,VisitCount INTEGER,"
    "VisitTime TEXT,VisitDate INTEGER,HideDate INTEGER,Browser INTEGER);";
constexpr int64_t kWindowsToUnixMicros = 11644473600LL * 1000000;

double SecondsSince(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// The stamp text and the day number of a browser time, as any importer
// that keeps local wall-clock days must make them.
void StampOf(int64_t chromeMicros, char* stamp, size_t size, int64_t* dayNumber) {
  int64_t unixMicros = chromeMicros - kWindowsToUnixMicros;
  time_t seconds = static_cast<time_t>(unixMicros / 1000000);
  struct tm local {};
  localtime_r(&seconds, &local);
  std::snprintf(stamp, size, "%04d.%02d.%02d %d %02d:%02d:%02d.%03d", local.tm_year + 1900, local.tm_mon + 1,
                local.tm_mday, local.tm_wday, local.tm_hour, local.tm_min, local.tm_sec,
                static_cast<int>((unixMicros / 1000) % 1000));
  int64_t localSeconds = static_cast<int64_t>(seconds) + local.tm_gmtoff;
  *dayNumber = (localSeconds + 11644473600LL) / 86400;
}

}  // namespace

FloorRun MeasureImportFloor(const std::string& historyFile, const std::string& scratchFolder) {
  FloorRun run;
  std::filesystem::create_directories(scratchFolder);
  std::string copy = scratchFolder + "/History";
  std::string target = scratchFolder + "/floor.db";
  std::filesystem::remove(target);
  auto start = std::chrono::steady_clock::now();
  std::filesystem::copy_file(historyFile, copy, std::filesystem::copy_options::overwrite_existing);
  sqlite3* source = nullptr;
  sqlite3* sink = nullptr;
  sqlite3_open(copy.c_str(), &source);
  sqlite3_open(target.c_str(), &sink);
  sqlite3_exec(sink, kCreateBareHistory, nullptr, nullptr, nullptr);
  sqlite3_exec(sink, "begin", nullptr, nullptr, nullptr);
  sqlite3_stmt* select = nullptr;
  sqlite3_stmt* insert = nullptr;
  sqlite3_prepare_v2(source, kVisitQuery, -1, &select, nullptr);
  sqlite3_prepare_v2(sink, "insert into THistory values(?, ?, ?, ?, ?, ?, ?, ?);", -1, &insert, nullptr);
  char stamp[64];
  while (sqlite3_step(select) == SQLITE_ROW) {
    int64_t dayNumber = 0;
    StampOf(sqlite3_column_int64(select, 3), stamp, sizeof(stamp), &dayNumber);
    sqlite3_bind_text16(insert, 2, sqlite3_column_text16(select, 1), -1, SQLITE_TRANSIENT);
    sqlite3_bind_text16(insert, 3, sqlite3_column_text16(select, 0), -1, SQLITE_TRANSIENT);
    sqlite3_bind_int(insert, 4, sqlite3_column_int(select, 2));
    sqlite3_bind_text(insert, 5, stamp, -1, SQLITE_TRANSIENT);
    sqlite3_bind_int64(insert, 6, dayNumber);
    sqlite3_bind_int(insert, 7, 0);
    sqlite3_bind_int(insert, 8, 2);
    if (sqlite3_step(insert) == SQLITE_DONE) run.rows += 1;
    sqlite3_reset(insert);
  }
  sqlite3_finalize(select);
  sqlite3_finalize(insert);
  sqlite3_exec(sink, "commit", nullptr, nullptr, nullptr);
  sqlite3_close(source);
  sqlite3_close(sink);
  run.seconds = SecondsSince(start);
  return run;
}

FloorRun MeasureAnalysisFloor(const std::string& databaseFile) {
  FloorRun run;
  sqlite3* db = nullptr;
  sqlite3_open_v2(databaseFile.c_str(), &db, SQLITE_OPEN_READONLY, nullptr);
  auto start = std::chrono::steady_clock::now();
  sqlite3_stmt* dates = nullptr;
  sqlite3_stmt* rows = nullptr;
  sqlite3_prepare_v2(db, "select distinct VisitDate from THistory order by VisitDate desc limit 21", -1, &dates,
                     nullptr);
  sqlite3_prepare_v2(db, "select URL, Name, VisitTime, VisitCount from THistory where VisitDate = ? order by VisitTime desc",
                     -1, &rows, nullptr);
  size_t bytes = 0;
  while (sqlite3_step(dates) == SQLITE_ROW) {
    sqlite3_bind_int64(rows, 1, sqlite3_column_int64(dates, 0));
    while (sqlite3_step(rows) == SQLITE_ROW) {
      bytes += static_cast<size_t>(sqlite3_column_bytes16(rows, 0)) + sqlite3_column_bytes16(rows, 1) +
               sqlite3_column_bytes16(rows, 2);
      run.rows += 1;
    }
    sqlite3_reset(rows);
  }
  sqlite3_finalize(dates);
  sqlite3_finalize(rows);
  sqlite3_close(db);
  run.seconds = SecondsSince(start);
  if (bytes == 0) run.rows = 0;
  return run;
}

}  // namespace corvane::bench
