#include "serving/favorite_manager.h"

#include "platform/bstr.h"
#include "serving/url_array.h"
#include "serving/url_info.h"

namespace corvane {

HRESULT CFavoriteURLsManger::CreateInstance(const IID& riid, void** ppvObject) {
  CFavoriteURLsManger* manager = CreateObject<CFavoriteURLsManger>();
  if (manager == nullptr) return E_OUTOFMEMORY;
  HRESULT hr = manager->QueryInterface(riid, ppvObject);
  manager->Release();
  return hr;
}

// Columns: 0 rowid, 1 Name, 2 URL, 3 FixedURL, 4 Path, 5 HideDate.
HRESULT CFavoriteURLsManger::GetURLs(uint32_t uCount, IUnknown** lppURLs) {
  if (lppURLs == nullptr) return E_INVALIDARG;
  CCorvaneDB* db = m_link.Database();
  if (db == nullptr) return E_FAIL;
  CStorageWatch watch;
  ComPtr<CURLArray> result(CreateObject<CURLArray>());
  if (!result) return E_FAIL;
  StatementPtr stmt;
  if (FAILED(db->GetFavorites(uCount, &stmt)) || !stmt) return E_FAIL;
  while (stmt->Step()) {
    ComPtr<CURLInfo> info(CreateObject<CURLInfo>());
    if (!info) continue;
    info->SetInfo(static_cast<uint32_t>(stmt->ColumnInt64(0)), stmt->ColumnText16(1), stmt->ColumnText16(2),
                  stmt->ColumnText16(4));
    result->Append(info->AsUnknown());
  }
  stmt.reset();
  if (db->StorageFailed(watch)) return E_FAIL;
  return result->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(lppURLs));
}

HRESULT CFavoriteURLsManger::AddURL(BSTR bstrURL, BSTR bstrName, uint32_t uReserved) {
  static_cast<void>(bstrURL);
  static_cast<void>(bstrName);
  static_cast<void>(uReserved);
  return S_OK;
}

HRESULT CFavoriteURLsManger::RemoveURL(BSTR bstrID, uint32_t uType) {
  if (bstrID == nullptr) return E_INVALIDARG;
  CCorvaneDB* db = m_link.Database();
  if (db == nullptr) return E_FAIL;
  if (uType == 0) return db->HideFavoriteByID(BstrToString(bstrID));
  if (uType == 1) return db->HideFavorite(BstrToString(bstrID));
  return E_FAIL;
}

HRESULT CFavoriteURLsManger::ClearURLs() {
  CCorvaneDB* db = m_link.Database();
  if (db == nullptr) return E_FAIL;
  return db->ClearFavorites();
}

}  // namespace corvane
