#include "serving/provider_link.h"

#include "common/text_util.h"

namespace corvane {

HRESULT CProviderLink::Attach(IUnknown* provider, bool bReadBrowser) {
  if (provider == nullptr) return E_INVALIDARG;
  ICorvaneDataProviderInner* inner = nullptr;
  HRESULT hr = provider->QueryInterface(IID_ICorvaneDataProviderInner, reinterpret_cast<void**>(&inner));
  if (FAILED(hr)) return hr;
  m_pInner.Reset(inner);
  if (bReadBrowser) {
    std::u16string browser;
    static_cast<void>(Database()->GetConfig(u"ExtractBrowser", &browser, u""));
    m_bIEBrowser = AsciiEqualsIgnoreCase(browser, u"IE");
  }
  return S_OK;
}

CCorvaneDB* CProviderLink::Database() const {
  if (!m_pInner) return nullptr;
  CCorvaneDB* db = nullptr;
  static_cast<void>(m_pInner->GetCorvaneDB(reinterpret_cast<IUnknown**>(&db)));
  return db;
}

}  // namespace corvane
