// visit_rows.h: the rows of a history query, delivered as visits.
//
// Both history readers ask their file for the same columns: 0 the page's
// address, 1 its title, 2 its typed count, 3 the visit time as the browser
// stores it, 4 the browser's own number of the page. A reader may add
// columns behind these for its own test of a row. The checks of
// visit_values.h apply to every row.
//
// Each row is one visit and is delivered with the count 1. The page's own
// visit_count is the number of such rows and is not read: handing it out
// with every visit would count a page seen n times n * n times.

#ifndef CORVANE_HARVEST_VISIT_ROWS_H_
#define CORVANE_HARVEST_VISIT_ROWS_H_

#include <sqlite3.h>

#include <cstdint>
#include <string>

#include "harvest/item_store.h"

namespace corvane::harvest {

struct VisitQuery {
  // Microseconds from the browser's epoch to 1970-01-01.
  int64_t epochToUnixMicros;
  // Whether the row the statement stands on is a visit the person chose;
  // null takes every row.
  bool (*isChosen)(sqlite3_stmt* stmt);
};

// Steps through the rows of stmt and adds each chosen visit whose time can
// be delivered to the store's current source; the others are skipped, with
// one debug line that names file. Returns the last result of sqlite3_step.
int AddVisitRows(sqlite3_stmt* stmt, const VisitQuery& query, const std::string& file, ItemStore* lpItems);

}  // namespace corvane::harvest

#endif  // CORVANE_HARVEST_VISIT_ROWS_H_
