// provider_link.h: how a manager reaches the provider's database.
//
// A manager keeps one reference to the provider's inner interface, so that
// the provider and its database outlive the manager, and asks it for the
// database on every call. A manager created directly by its class id has
// no provider: Database() is then null and the manager's calls fail.

#ifndef CORVANE_SERVING_PROVIDER_LINK_H_
#define CORVANE_SERVING_PROVIDER_LINK_H_

#include "corvane/CorvaneDataProvider.h"
#include "platform/com_object.h"
#include "store/corvane_db.h"

namespace corvane {

class CProviderLink {
 public:
  // Queries the provider for its inner interface and keeps that reference.
  // With bReadBrowser, also remembers whether DBConfig "ExtractBrowser"
  // names IE, as it stands now.
  [[nodiscard]] HRESULT Attach(IUnknown* provider, bool bReadBrowser);

  // The provider's database, or null when no provider is attached.
  CCorvaneDB* Database() const;
  bool IsIEBrowser() const { return m_bIEBrowser; }

 private:
  ComPtr<ICorvaneDataProviderInner> m_pInner;
  bool m_bIEBrowser = false;
};

}  // namespace corvane

#endif  // CORVANE_SERVING_PROVIDER_LINK_H_
