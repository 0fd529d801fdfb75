#include "serving/url_array.h"

namespace corvane {

HRESULT CURLArray::CreateInstance(const IID& riid, void** ppvObject) {
  CURLArray* array = CreateObject<CURLArray>();
  if (array == nullptr) return E_OUTOFMEMORY;
  HRESULT hr = array->QueryInterface(riid, ppvObject);
  array->Release();
  return hr;
}

CURLArray::~CURLArray() { static_cast<void>(Clear()); }

HRESULT CURLArray::Clear() {
  // Items are released first to last; an item's own destructor may not touch
  // this array, so the list is moved out before the releases.
  std::vector<IUnknown*> items;
  items.swap(m_items);
  for (IUnknown* item : items) item->Release();
  return S_OK;
}

HRESULT CURLArray::AddItem(IUnknown* lpItem) {
  if (lpItem == nullptr) return S_OK;
  lpItem->AddRef();
  m_items.push_back(lpItem);
  return S_OK;
}

HRESULT CURLArray::GetCount(uint32_t* lpuCount) {
  if (lpuCount == nullptr) return E_INVALIDARG;
  *lpuCount = static_cast<uint32_t>(m_items.size());
  return S_OK;
}

HRESULT CURLArray::GetItem(uint32_t uIndex, IUnknown** lppItem) {
  if (lppItem == nullptr || uIndex >= m_items.size()) return E_INVALIDARG;
  IUnknown* item = m_items[uIndex];
  item->AddRef();
  *lppItem = item;
  return S_OK;
}

}  // namespace corvane
