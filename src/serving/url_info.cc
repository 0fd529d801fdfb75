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
  return BstrOut(Field(0), lpbstrName);
}

HRESULT CURLInfo::GetURL(BSTR* lpbstrURL) {
  if (lpbstrURL == nullptr) return E_INVALIDARG;
  return BstrOut(Field(1), lpbstrURL);
}

HRESULT CURLInfo::GetPath(BSTR* lpbstrPath) {
  if (lpbstrPath == nullptr) return E_INVALIDARG;
  return BstrOut(Field(2), lpbstrPath);
}

HRESULT CURLInfo::GetLastVisitTime(BSTR* lpbstrLastVisitTime) {
  if (lpbstrLastVisitTime == nullptr) return E_INVALIDARG;
  return BstrOut(Field(3), lpbstrLastVisitTime);
}

void CURLInfo::SetInfo(uint32_t uID, std::u16string_view name, std::u16string_view url, std::u16string_view path) {
  SetInfo(uID, name, url, path, Field(3));
}

void CURLInfo::SetInfo(uint32_t uID, std::u16string_view name, std::u16string_view url, std::u16string_view path,
                       std::u16string_view lastVisitTime) {
  m_uID = uID;
  std::u16string fields;
  fields.reserve(name.size() + url.size() + path.size() + lastVisitTime.size());
  size_t index = 0;
  for (std::u16string_view field : {name, url, path, lastVisitTime}) {
    fields.append(field);
    m_fieldEnds[index++] = fields.size();
  }
  m_strFields = std::move(fields);
}

std::u16string_view CURLInfo::Field(size_t index) const {
  const size_t begin = index == 0 ? 0 : m_fieldEnds[index - 1];
  return std::u16string_view(m_strFields).substr(begin, m_fieldEnds[index] - begin);
}

}  // namespace corvane
