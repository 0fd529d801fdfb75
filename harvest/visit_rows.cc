#include "harvest/visit_rows.h"

#include "harvest/private_copy.h"
#include "harvest/visit_values.h"

namespace corvane::harvest {
namespace {

constexpr int kURL = 0;
constexpr int kTitle = 1;
constexpr int kTypedCount = 2;
constexpr int kTime = 3;
constexpr int kPage = 4;

}  // namespace

int AddVisitRows(sqlite3_stmt* stmt, const VisitQuery& query, const std::string& file, ItemStore* lpItems) {
  // The range is checked in the browser's own unit, so that no stored value
  // is ever shifted out of range.
  const int64_t firstTime = kMinUnixMicros + query.epochToUnixMicros;
  const int64_t lastTime = kMaxUnixMicros + query.epochToUnixMicros;
  SkippedTimes skipped;
  int rc = SQLITE_ROW;
  while ((rc = sqlite3_step(stmt)) == SQLITE_ROW) {
    if (query.isChosen != nullptr && !query.isChosen(stmt)) continue;
    const int64_t stored = sqlite3_column_int64(stmt, kTime);
    if (stored < firstTime || stored > lastTime) {
      skipped.Note(stored);
      continue;
    }
    const int64_t pageId = sqlite3_column_int64(stmt, kPage);
    const PageTexts* page = lpItems->FindPage(pageId);
    if (page == nullptr) {
      page = &lpItems->KeepPage(pageId, ColumnText16(stmt, kTitle), ColumnText16(stmt, kURL),
                                ClampTypedCount(sqlite3_column_int64(stmt, kTypedCount)));
    }
    lpItems->AddVisit(*page, stored - query.epochToUnixMicros);
  }
  skipped.Report(file);
  return rc;
}

}  // namespace corvane::harvest
