// visit_rows.h: the rows of a history query, delivered as visits.
//
// Both history readers read their file the same way: a statement of the
// visits in time order, 0 the browser's own number of the visit's page and
// 1 the visit time as the browser stores it (a reader may add columns
// behind these for its own test of a row); and a statement that gives, for
// a page's number bound at 1, 0 its address, 1 its title, 2 its typed count
// and 3 whether it is hidden. Each page is looked up once, at its first
// visit: a heavy user's history has a hundred thousand visits of a few ten
// thousand pages. The visits of a hidden or missing page are left out. The
// checks of visit_values.h apply to every row.
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
  // Sees every row once it was added (added true) or left out; null for
  // none.
  void (*observe)(sqlite3_stmt* stmt, bool added, void* context) = nullptr;
  void* context = nullptr;
};

// Steps through the rows of visits and adds each chosen visit whose time can
// be delivered to the store's current source; the others are skipped, with
// one debug line that names file. Returns the last result of stepping
// visits.
int AddVisitRows(sqlite3_stmt* visits, sqlite3_stmt* pages, const VisitQuery& query, const std::string& file,
                 ItemStore* lpItems);

}  // namespace corvane::harvest

#endif  // CORVANE_HARVEST_VISIT_ROWS_H_
