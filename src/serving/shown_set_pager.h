// shown_set_pager.h: the paged stages of the recommendation listing, read
// from one statement.
//
// The listing takes its sub-domains and its single URLs a page at a time
// (20 and 50 rows). Each page leaves out the main domains shown so far and
// starts at an offset that grows by a whole page. Since the filter grows
// between pages while the offset grows too, a later page starts further
// down the remaining rows than the rows already seen and passes some over;
// they stay eligible for the next call. Asking SQLite for every page sorts
// the table once per page, so that a long listing costs the square of its
// length.
//
// CShownSetPager hands out the same pages, row for row, from one statement
// that returns the whole listing in its order and without the shown filter.
// It counts the rows read so far of each main domain. At the start of a
// page, the rows of the main domains shown during the page before have left
// the filter; as many rows as they were, in front of the offset, move the
// offset that much further down the eligible rows, and the pager skips them.
//
// The pager reads the statement it is given, which must outlive it, and the
// shown set, which the caller changes between rows through NoteShown.

#ifndef CORVANE_SERVING_SHOWN_SET_PAGER_H_
#define CORVANE_SERVING_SHOWN_SET_PAGER_H_

#include <cstdint>
#include <string>
#include <unordered_map>
#include <unordered_set>

#include "store/corvane_db.h"

namespace corvane {

class CShownSetPager {
 public:
  // stmt returns the whole listing in order; its column mainDomainColumn
  // holds each row's main domain. shown is the set that the filter of each
  // page is taken from.
  CShownSetPager(CSqliteStatement* stmt, int mainDomainColumn, uint32_t pageSize, const ShownDomainMap* shown);

  CShownSetPager(const CShownSetPager&) = delete;
  CShownSetPager& operator=(const CShownSetPager&) = delete;

  // Starts the next page: false when the page before held no row, which
  // ends the stage as an empty page does.
  [[nodiscard]] bool NextPage();
  // Moves the statement to the next row of the page; false at the end of
  // the page or of the listing.
  [[nodiscard]] bool NextRow();
  // The main domain of the row the statement stands on.
  const std::u16string& MainDomain() const { return m_mainDomain; }
  // Tells the pager that the main domain of the current row has just been
  // added to the shown set.
  void NoteShown();

 private:
  // Steps to the next row that the filter of the current page lets through.
  bool StepToEligible();
  bool PassesPageFilter(const std::u16string& mainDomain) const;

  CSqliteStatement* m_pStmt;
  const int m_mainDomainColumn;
  const uint32_t m_pageSize;
  const ShownDomainMap* m_pShown;

  std::u16string m_mainDomain;
  // Rows read so far, by main domain, whatever the filter said of them.
  std::unordered_map<std::u16string, uint64_t> m_rowsRead;
  // Main domains shown since the current page began: the page's own
  // filter is the shown set without them.
  std::unordered_set<std::u16string> m_shownInPage;
  uint32_t m_rowsInPage = 0;
  bool m_started = false;
  bool m_ended = false;
};

}  // namespace corvane

#endif  // CORVANE_SERVING_SHOWN_SET_PAGER_H_
