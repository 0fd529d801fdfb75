#include "serving/shown_set_pager.h"

namespace corvane {

CShownSetPager::CShownSetPager(CSqliteStatement* stmt, int mainDomainColumn, uint32_t pageSize,
                               const ShownDomainMap* shown)
    : m_pStmt(stmt), m_mainDomainColumn(mainDomainColumn), m_pageSize(pageSize), m_pShown(shown) {}

bool CShownSetPager::NextPage() {
  if (m_started && m_rowsInPage == 0) return false;
  // The rows of domains shown during the last page that lie in front of the
  // offset have left the filter: the offset now points as many eligible
  // rows further down.
  uint64_t skip = 0;
  for (const std::u16string& mainDomain : m_shownInPage) skip += m_rowsRead[mainDomain];
  m_shownInPage.clear();
  m_rowsInPage = 0;
  m_started = true;
  while (skip > 0 && StepToEligible()) --skip;
  return true;
}

bool CShownSetPager::NextRow() {
  if (m_rowsInPage >= m_pageSize || !StepToEligible()) return false;
  ++m_rowsInPage;
  return true;
}

void CShownSetPager::NoteShown() { m_shownInPage.insert(m_mainDomain); }

bool CShownSetPager::StepToEligible() {
  while (!m_ended) {
    if (!m_pStmt->Step()) {
      m_ended = true;
      break;
    }
    m_mainDomain = m_pStmt->ColumnText16(m_mainDomainColumn);
    ++m_rowsRead[m_mainDomain];
    if (PassesPageFilter(m_mainDomain)) return true;
  }
  return false;
}

// The filter of a page is the shown set as it stood when the page began.
bool CShownSetPager::PassesPageFilter(const std::u16string& mainDomain) const {
  return m_pShown->count(mainDomain) == 0 || m_shownInPage.count(mainDomain) != 0;
}

}  // namespace corvane
