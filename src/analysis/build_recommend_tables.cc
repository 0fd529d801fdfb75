// The recommendation tables from the scored table h2 and table z, with the
// hide marks of the host carried over the rebuild.

#include "analysis/update_driver.h"
#include "settings/score_settings.h"
#include "store/corvane_db.h"

namespace corvane {

HRESULT CUpdateDriver::BuildRecommendTables() {
  // Saved before BuildRecommendURLs empties the table.
  HideMap hiddenURLs;
  HRESULT saved = m_pDB->GetHiddenRecommendURLs(&hiddenURLs);
  static_cast<void>(m_pDB->BuildRecommendURLs());
  // Moves the pages of white-listed hosts out of TRecommendURL, so a saved
  // mark on such a page finds no row below.
  static_cast<void>(m_pDB->BuildRecommendDomains());
  if (saved == 0) static_cast<void>(m_pDB->ReapplyHiddenRecommendURLs(hiddenURLs, m_pSettings->GetHideFactor()));
  static_cast<void>(m_pDB->MarkTopDomains());
  static_cast<void>(m_pDB->BuildZSTable());
  static_cast<void>(m_pDB->BuildSubDomains());
  return S_OK;
}

}  // namespace corvane
