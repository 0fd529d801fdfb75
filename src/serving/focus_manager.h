// focus_manager.h: CFocusURLsManager, manager 2 of the provider: the entries
// that the host itself chose. It is the only writer of TFocusURL; an entry
// moves the matching site into the focus half of the recommendation
// listing.

#ifndef CORVANE_SERVING_FOCUS_MANAGER_H_
#define CORVANE_SERVING_FOCUS_MANAGER_H_

#include "corvane/CorvaneDataProvider.h"
#include "platform/com_object.h"
#include "serving/provider_link.h"

namespace corvane {

class CFocusURLsManager final : public ComObject<IURLsManager, IFocusURLsManager> {
 public:
  CFocusURLsManager() = default;

  static HRESULT CreateInstance(const IID& riid, void** ppvObject);

  [[nodiscard]] HRESULT Attach(IUnknown* provider) { return m_link.Attach(provider, false); }

  // IURLsManager. GetURLs lists every entry in the order of adding (uCount
  // has no effect). AddURL: S_OK when added, S_FALSE when the same URL and
  // name stand already. RemoveURL deletes: uType 0 by ID, 1 by URL, other
  // values E_FAIL. ClearURLs also restarts the ID numbering at 1.
  HRESULT GetURLs(uint32_t uCount, IUnknown** lppURLs) override;
  HRESULT AddURL(BSTR bstrURL, BSTR bstrName, uint32_t uReserved) override;
  HRESULT RemoveURL(BSTR bstrID, uint32_t uType) override;
  HRESULT ClearURLs() override;

 private:
  ~CFocusURLsManager() override = default;

  CProviderLink m_link;
};

}  // namespace corvane

#endif  // CORVANE_SERVING_FOCUS_MANAGER_H_
