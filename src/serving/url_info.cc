#include "serving/url_info.h"

#include "platform/bstr.h"

namespace corvane {

HRESULT CURLInfo::CreateInstance(const IID& riid, void** ppvObject) {
  CURLInfo* info = CreateObject<CURLInfo>();
  if (info == nullptr) return E_OUTOFMEMORY;
  HRESULT hr = info->QueryInterface(riid, ppvObject);
  info->Release();
  return hr;
}

HRESULT CURLInfo::GetID(uint32_t* lpuID) {
  if (lpuID == nullptr) return E_INVALIDARG;
  *lpuID = m_uID;
  return S_OK;
}

HRESULT CURLInfo::GetName(BSTR* lpbstrName) {
  if (lpbstrName == nullptr) return E_INVALIDARG;
  return BstrOut(m_strName, lpbstrName);
}

HRESULT CURLInfo::GetURL(BSTR* lpbstrURL) {
  if (lpbstrURL == nullptr) return E_INVALIDARG;
  return BstrOut(m_strURL, lpbstrURL);
}

HRESULT CURLInfo::GetPath(BSTR* lpbstrPath) {
  if (lpbstrPath == nullptr) return E_INVALIDARG;
  return BstrOut(m_strPath, lpbstrPath);
}

HRESULT CURLInfo::GetLastVisitTime(BSTR* lpbstrLastVisitTime) {
  if (lpbstrLastVisitTime == nullptr) return E_INVALIDARG;
  return BstrOut(m_strLastVisitTime, lpbstrLastVisitTime);
}

void CURLInfo::SetInfo(uint32_t uID, std::u16string_view name, std::u16string_view url, std::u16string_view path) {
  m_uID = uID;
  m_strName.assign(name);
  m_strURL.assign(url);
  m_strPath.assign(path);
}

void CURLInfo::SetInfo(uint32_t uID, std::u16string_view name, std::u16string_view url, std::u16string_view path,
                       std::u16string_view lastVisitTime) {
  SetInfo(uID, name, url, path);
  m_strLastVisitTime.assign(lastVisitTime);
}

}  // namespace corvane
