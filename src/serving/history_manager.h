// history_manager.h: CHistoryURLsManager, manager 3 of the provider: the
// browsing history as days, newest first, with search, hides and clear.
//
// Whether it reads TIEHistory or THistory is decided once, when the
// provider attaches it ("ExtractBrowser" naming IE). Listings are built
// wholly in memory before the call returns.

#ifndef CORVANE_SERVING_HISTORY_MANAGER_H_
#define CORVANE_SERVING_HISTORY_MANAGER_H_

#include "corvane/CorvaneDataProvider.h"
#include "platform/com_object.h"
#include "serving/provider_link.h"
#include "store/sqlite_db.h"
#include "store/history_rows.h"

namespace corvane {

class CHistoryURLsManager final : public ComObject<IURLsManager, IHistoryURLsManager> {
 public:
  CHistoryURLsManager() = default;

  static HRESULT CreateInstance(const IID& riid, void** ppvObject);

  [[nodiscard]] HRESULT Attach(IUnknown* provider) { return m_link.Attach(provider, true); }

  // IURLsManager. GetURLs: uCount limits rows, not days; 0 lists all.
  // RemoveURL: uType 0 hides by HID, 1 by URL (or "All"), other values
  // E_FAIL. ClearURLs deletes THistory in both modes.
  HRESULT GetURLs(uint32_t uCount, IUnknown** lppURLs) override;
  HRESULT AddURL(BSTR bstrURL, BSTR bstrName, uint32_t uReserved) override;
  HRESULT RemoveURL(BSTR bstrID, uint32_t uType) override;
  HRESULT ClearURLs() override;

  // IHistoryURLsManager: Name and URL of the visible rows.
  HRESULT SearchURLs(BSTR bstrSearch, IUnknown** lppURLs) override;

 private:
  ~CHistoryURLsManager() override = default;

  // The day groups of the rows, unless the storage failed since watch began.
  HRESULT HandOutGroups(const CStorageWatch& watch, const CHistoryRows& rows, IUnknown** lppURLs);

  CProviderLink m_link;
};

}  // namespace corvane

#endif  // CORVANE_SERVING_HISTORY_MANAGER_H_
