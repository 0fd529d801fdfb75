#include "serving/common_use_manager.h"

#include "common/time_stamp.h"
#include "common/url_util.h"
#include "platform/bstr.h"

namespace corvane {
namespace {

// The two halves of the flag of a hide operation.
constexpr uint32_t kKeyKindMask = 0x0000FFFF;
constexpr uint32_t kKeyIsId = 0;
constexpr uint32_t kKeyIsURL = 1;

bool IsPermanent(uint32_t uFlag) { return (uFlag >> 16) == 0; }

}  // namespace

std::u16string SiteURL(const std::u16string& domain) {
  return IsMainDomain(domain) ? u"www." + domain : domain;
}

std::u16string StampOf(uint64_t timeNumber) {
  std::u16string stamp;
  static_cast<void>(TimeNumberToStamp(timeNumber, &stamp));
  return stamp;
}

HRESULT CCommonUseURLsManager::CreateInstance(const IID& riid, void** ppvObject) {
  CCommonUseURLsManager* manager = CreateObject<CCommonUseURLsManager>();
  if (manager == nullptr) return E_OUTOFMEMORY;
  HRESULT hr = manager->QueryInterface(riid, ppvObject);
  manager->Release();
  return hr;
}

HRESULT CCommonUseURLsManager::GetURLs(uint32_t uCount, IUnknown** lppURLs) {
  static_cast<void>(uCount);
  static_cast<void>(lppURLs);
  return E_NOTIMPL;
}

HRESULT CCommonUseURLsManager::AddURL(BSTR bstrURL, BSTR bstrName, uint32_t uReserved) {
  static_cast<void>(bstrURL);
  static_cast<void>(bstrName);
  static_cast<void>(uReserved);
  return S_OK;
}

HRESULT CCommonUseURLsManager::ClearURLs() { return S_OK; }

HRESULT CCommonUseURLsManager::RemoveURL(BSTR bstrID, uint32_t uType) {
  if (bstrID == nullptr) return E_INVALIDARG;
  CCorvaneDB* db = m_link.Database();
  if (db == nullptr) return E_FAIL;
  switch (uType & kKeyKindMask) {
    case kKeyIsId:
      return db->HideRecommendURLRow(BstrToString(bstrID), IsPermanent(uType));
    case kKeyIsURL:
      return db->HideRecommendURLRowByURL(BstrToString(bstrID), IsPermanent(uType));
    default:
      return E_FAIL;
  }
}

HRESULT CCommonUseURLsManager::HideRecommendDomain(BSTR bstrID, uint32_t uFlag) {
  if (bstrID == nullptr) return E_INVALIDARG;
  CCorvaneDB* db = m_link.Database();
  if (db == nullptr || (uFlag & kKeyKindMask) != kKeyIsId) return E_FAIL;
  return db->HideRecommendDomainRow(BstrToString(bstrID), IsPermanent(uFlag));
}

HRESULT CCommonUseURLsManager::HideSubDomain(BSTR bstrID, uint32_t uType) {
  if (bstrID == nullptr) return E_INVALIDARG;
  CCorvaneDB* db = m_link.Database();
  if (db == nullptr || (uType & kKeyKindMask) != kKeyIsId) return E_FAIL;
  return db->HideSubDomainRow(BstrToString(bstrID), IsPermanent(uType));
}

}  // namespace corvane
