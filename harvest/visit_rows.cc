#include "harvest/visit_rows.h"

#include <unordered_set>

#include "harvest/private_copy.h"
#include "harvest/visit_values.h"

namespace corvane::harvest {
namespace {

// Columns of the visits statement and of the page statement.
constexpr int kVisitPage = 0;
constexpr int kVisitTime = 1;
constexpr int kPageURL = 0;
constexpr int kPageTitle = 1;
constexpr int kPageTyped = 2;
constexpr int kPageHidden = 3;

// The page's texts, read once; null for a page that is hidden or missing,
// whose visits are left out.
const PageTexts* LookUpPage(sqlite3_stmt* pages, int64_t pageId, ItemStore* lpItems) {
  const PageTexts* page = nullptr;
  sqlite3_reset(pages);
  if (sqlite3_bind_int64(pages, 1, pageId) == SQLITE_OK && sqlite3_step(pages) == SQLITE_ROW &&
      sqlite3_column_int64(pages, kPageHidden) == 0) {
    page = &lpItems->KeepPage(pageId, ColumnText16(pages, kPageTitle), ColumnText16(pages, kPageURL),
                              ClampTypedCount(sqlite3_column_int64(pages, kPageTyped)));
  }
  sqlite3_reset(pages);
  return page;
}

// The visit of the row the statement stands on; false when it is left out.
bool AddVisitRow(sqlite3_stmt* visits, sqlite3_stmt* pages, const VisitQuery& query, SkippedTimes* lpSkipped,
                 std::unordered_set<int64_t>* lpLeftOut, ItemStore* lpItems) {
  if (query.isChosen != nullptr && !query.isChosen(visits)) return false;
  const int64_t stored = sqlite3_column_int64(visits, kVisitTime);
  // The range is checked in the browser's own unit, so that no stored value
  // is ever shifted out of range.
  if (stored < kMinUnixMicros + query.epochToUnixMicros || stored > kMaxUnixMicros + query.epochToUnixMicros) {
    lpSkipped->Note(stored);
    return false;
  }
  const int64_t pageId = sqlite3_column_int64(visits, kVisitPage);
  const PageTexts* page = lpItems->FindPage(pageId);
  if (page == nullptr) {
    if (lpLeftOut->count(pageId) != 0) return false;
    page = LookUpPage(pages, pageId, lpItems);
    if (page == nullptr) {
      lpLeftOut->insert(pageId);
      return false;
    }
  }
  lpItems->AddVisit(*page, stored - query.epochToUnixMicros);
  return true;
}

}  // namespace

int AddVisitRows(sqlite3_stmt* visits, sqlite3_stmt* pages, const VisitQuery& query, const std::string& file,
                 ItemStore* lpItems) {
  SkippedTimes skipped;
  std::unordered_set<int64_t> leftOut;
  int rc = SQLITE_ROW;
  while ((rc = sqlite3_step(visits)) == SQLITE_ROW) {
    const bool added = AddVisitRow(visits, pages, query, &skipped, &leftOut, lpItems);
    if (query.observe != nullptr) query.observe(visits, added, query.context);
  }
  skipped.Report(file);
  return rc;
}

}  // namespace corvane::harvest
