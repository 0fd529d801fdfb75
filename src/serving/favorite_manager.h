// favorite_manager.h: CFavoriteURLsManger, manager 4 of the provider: the
// stored browser favourites, listed by Path and row, and hidden on request
// (a hidden favourite stays in the table, so the intake does not add it
// again).

#ifndef CORVANE_SERVING_FAVORITE_MANAGER_H_
#define CORVANE_SERVING_FAVORITE_MANAGER_H_

#include "corvane/CorvaneDataProvider.h"
#include "platform/com_object.h"
#include "serving/provider_link.h"

namespace corvane {

class CFavoriteURLsManger final : public ComObject<IURLsManager, IFavoriteURLsManger> {
 public:
  CFavoriteURLsManger() = default;

  static HRESULT CreateInstance(const IID& riid, void** ppvObject);

  [[nodiscard]] HRESULT Attach(IUnknown* provider) { return m_link.Attach(provider, false); }

  // IURLsManager. GetURLs: uCount limits rows, 0 lists all. RemoveURL:
  // uType 0 hides by rowid, 1 by URL (or "All" in any case), other values
  // E_FAIL. AddURL does nothing.
  HRESULT GetURLs(uint32_t uCount, IUnknown** lppURLs) override;
  HRESULT AddURL(BSTR bstrURL, BSTR bstrName, uint32_t uReserved) override;
  HRESULT RemoveURL(BSTR bstrID, uint32_t uType) override;
  HRESULT ClearURLs() override;

 private:
  ~CFavoriteURLsManger() override = default;

  CProviderLink m_link;
};

}  // namespace corvane

#endif  // CORVANE_SERVING_FAVORITE_MANAGER_H_
