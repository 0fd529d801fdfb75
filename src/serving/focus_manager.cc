#include "serving/focus_manager.h"

#include "platform/bstr.h"
#include "serving/url_array.h"
#include "serving/url_info.h"

namespace corvane {

HRESULT CFocusURLsManager::CreateInstance(const IID& riid, void** ppvObject) {
  CFocusURLsManager* manager = CreateObject<CFocusURLsManager>();
  if (manager == nullptr) return E_OUTOFMEMORY;
  HRESULT hr = manager->QueryInterface(riid, ppvObject);
  manager->Release();
  return hr;
}

// Columns: 0 ID, 1 Name, 2 URL.
HRESULT CFocusURLsManager::GetURLs(uint32_t uCount, IUnknown** lppURLs) {
  static_cast<void>(uCount);
  if (lppURLs == nullptr) return E_INVALIDARG;
  CCorvaneDB* db = m_link.Database();
  if (db == nullptr) return E_FAIL;
  CStorageWatch watch;
  ComPtr<CURLArray> result(CreateObject<CURLArray>());
  if (!result) return E_FAIL;
  StatementPtr stmt;
  if (FAILED(db->GetFocusURLs(&stmt)) || !stmt) return E_FAIL;
  while (stmt->Step()) {
    ComPtr<CURLInfo> info(CreateObject<CURLInfo>());
    if (!info) continue;
    info->SetInfo(static_cast<uint32_t>(stmt->ColumnInt64(0)), stmt->ColumnText16(1), stmt->ColumnText16(2), u"");
    result->Append(info->AsUnknown());
  }
  stmt.reset();
  if (db->StorageFailed(watch)) return E_FAIL;
  *lppURLs = result.Detach()->AsUnknown();
  return S_OK;
}

HRESULT CFocusURLsManager::AddURL(BSTR bstrURL, BSTR bstrName, uint32_t uReserved) {
  static_cast<void>(uReserved);
  if (bstrURL == nullptr || bstrName == nullptr) return E_INVALIDARG;
  CCorvaneDB* db = m_link.Database();
  if (db == nullptr) return E_FAIL;
  // The name comes first in the table operation, the URL first here.
  return db->AddFocusURL(BstrToString(bstrName), BstrToString(bstrURL));
}

HRESULT CFocusURLsManager::RemoveURL(BSTR bstrID, uint32_t uType) {
  if (bstrID == nullptr) return E_INVALIDARG;
  CCorvaneDB* db = m_link.Database();
  if (db == nullptr) return E_FAIL;
  if (uType == 0) return db->RemoveFocusByID(BstrToString(bstrID));
  if (uType == 1) return db->RemoveFocusURL(BstrToString(bstrID));
  return E_FAIL;
}

HRESULT CFocusURLsManager::ClearURLs() {
  CCorvaneDB* db = m_link.Database();
  if (db == nullptr) return E_FAIL;
  return db->ClearFocusURLs();
}

}  // namespace corvane
