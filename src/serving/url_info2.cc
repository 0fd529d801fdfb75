#include "serving/url_info2.h"

#include "platform/bstr.h"

namespace corvane {

HRESULT CURLInfo2::CreateInstance(const IID& riid, void** ppvObject) {
  CURLInfo2* info = CreateObject<CURLInfo2>();
  if (info == nullptr) return E_OUTOFMEMORY;
  HRESULT hr = info->QueryInterface(riid, ppvObject);
  info->Release();
  return hr;
}

CURLInfo2::~CURLInfo2() {
  for (auto& entry : m_mapObjects) entry.second->Release();
}

HRESULT CURLInfo2::GetID(uint32_t* lpuID) {
  if (lpuID == nullptr) return E_INVALIDARG;
  *lpuID = m_uID;
  return S_OK;
}

HRESULT CURLInfo2::GetName(BSTR* lpbstrName) {
  if (lpbstrName == nullptr) return E_INVALIDARG;
  return BstrOut(m_strName, lpbstrName);
}

HRESULT CURLInfo2::GetURL(BSTR* lpbstrURL, int32_t bFixed) {
  static_cast<void>(bFixed);
  if (lpbstrURL == nullptr) return E_INVALIDARG;
  return BstrOut(m_strURL, lpbstrURL);
}

HRESULT CURLInfo2::GetExtraInfo(BSTR bstrName, BSTR* lpbstrValue) {
  if (bstrName == nullptr || lpbstrValue == nullptr) return E_INVALIDARG;
  auto it = m_mapStrings.find(BstrToString(bstrName));
  if (it == m_mapStrings.end()) return E_NOINTERFACE;
  return BstrOut(it->second, lpbstrValue);
}

HRESULT CURLInfo2::GetExtraInfoULong(BSTR bstrName, uint32_t* lpuValue) {
  if (bstrName == nullptr || lpuValue == nullptr) return E_INVALIDARG;
  auto it = m_mapNumbers.find(BstrToString(bstrName));
  if (it == m_mapNumbers.end()) return E_NOINTERFACE;
  *lpuValue = it->second;
  return S_OK;
}

HRESULT CURLInfo2::GetExtraInfoUnknown(BSTR bstrName, IUnknown** lppUnk) {
  if (bstrName == nullptr || lppUnk == nullptr) return E_INVALIDARG;
  auto it = m_mapObjects.find(BstrToString(bstrName));
  if (it == m_mapObjects.end()) return E_NOINTERFACE;
  return it->second->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(lppUnk));
}

bool CURLInfo2::SetInfo(uint32_t uID, std::u16string_view name, std::u16string_view url) {
  if (uID == 0) return false;
  m_uID = uID;
  m_strName.assign(name);
  m_strURL.assign(url);
  return true;
}

bool CURLInfo2::AddExtraInfo(std::u16string_view key, std::u16string_view value) {
  return m_mapStrings.emplace(std::u16string(key), std::u16string(value)).second;
}

bool CURLInfo2::AddExtraInfoULong(std::u16string_view key, uint32_t uValue) {
  return m_mapNumbers.emplace(std::u16string(key), uValue).second;
}

void CURLInfo2::AddExtraInfoUnknown(std::u16string_view key, IUnknown* lpItem) {
  if (lpItem == nullptr) return;
  auto [it, inserted] = m_mapObjects.emplace(std::u16string(key), lpItem);
  if (inserted) it->second->AddRef();
}

void CURLInfo2::RemoveExtraInfo(std::u16string_view key) {
  if (auto it = m_mapStrings.find(key); it != m_mapStrings.end()) m_mapStrings.erase(it);
  if (auto it = m_mapNumbers.find(key); it != m_mapNumbers.end()) m_mapNumbers.erase(it);
  if (auto it = m_mapObjects.find(key); it != m_mapObjects.end()) {
    IUnknown* object = it->second;
    m_mapObjects.erase(it);
    object->Release();
  }
}

uint32_t CURLInfo2::ExtraULongOr(std::u16string_view key, uint32_t fallback) const {
  auto it = m_mapNumbers.find(key);
  return it == m_mapNumbers.end() ? fallback : it->second;
}

}  // namespace corvane
