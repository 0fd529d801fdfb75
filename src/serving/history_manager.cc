#include "serving/history_manager.h"

#include "common/time_stamp.h"
#include "platform/bstr.h"
#include "serving/date_groups.h"

namespace corvane {
namespace {

// Browser 0: every browser's rows.
constexpr uint32_t kAllBrowsers = 0;

}  // namespace

HRESULT CHistoryURLsManager::CreateInstance(const IID& riid, void** ppvObject) {
  CHistoryURLsManager* manager = CreateObject<CHistoryURLsManager>();
  if (manager == nullptr) return E_OUTOFMEMORY;
  HRESULT hr = manager->QueryInterface(riid, ppvObject);
  manager->Release();
  return hr;
}

HRESULT CHistoryURLsManager::HandOutGroups(const CStorageWatch& watch, const CHistoryRows& rows, IUnknown** lppURLs) {
  ComPtr<CURLArray> groups;
  if (FAILED(BuildDateGroups(rows, LocalDayNumberToday(), &groups))) return E_FAIL;
  CCorvaneDB* db = m_link.Database();
  if (db != nullptr && db->StorageFailed(watch)) return E_FAIL;
  return groups->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(lppURLs));
}

HRESULT CHistoryURLsManager::GetURLs(uint32_t uCount, IUnknown** lppURLs) {
  if (lppURLs == nullptr) return E_INVALIDARG;
  CCorvaneDB* db = m_link.Database();
  if (db == nullptr) return E_FAIL;
  CStorageWatch watch;
  StatementPtr stmt;
  HRESULT hr = m_link.IsIEBrowser() ? db->GetIEHistory(uCount, &stmt) : db->GetHistory(uCount, &stmt);
  if (FAILED(hr) || !stmt) return E_FAIL;
  CHistoryRows rows;
  static_cast<void>(rows.ReadAll(stmt.get()));  // in the order of the listing
  return HandOutGroups(watch, rows, lppURLs);
}

HRESULT CHistoryURLsManager::SearchURLs(BSTR bstrSearch, IUnknown** lppURLs) {
  if (bstrSearch == nullptr || lppURLs == nullptr) return E_INVALIDARG;
  CCorvaneDB* db = m_link.Database();
  if (db == nullptr) return E_FAIL;
  const std::u16string text = BstrToString(bstrSearch);
  db->SizeCacheFor(true);
  CStorageWatch watch;
  CHistoryRows rows;
  HRESULT hr = m_link.IsIEBrowser() ? db->SearchIEHistory(text, &rows) : db->SearchHistory(text, &rows, kAllBrowsers);
  return FAILED(hr) ? E_FAIL : HandOutGroups(watch, rows, lppURLs);
}

HRESULT CHistoryURLsManager::AddURL(BSTR bstrURL, BSTR bstrName, uint32_t uReserved) {
  static_cast<void>(bstrURL);
  static_cast<void>(bstrName);
  static_cast<void>(uReserved);
  return S_OK;
}

HRESULT CHistoryURLsManager::RemoveURL(BSTR bstrID, uint32_t uType) {
  if (bstrID == nullptr) return E_INVALIDARG;
  CCorvaneDB* db = m_link.Database();
  if (db == nullptr) return E_FAIL;
  const std::u16string key = BstrToString(bstrID);
  // uType is compared as a whole: no half of it means anything here.
  if (uType == 0) return m_link.IsIEBrowser() ? db->HideIEHistoryByID(key) : db->HideHistoryByID(key, kAllBrowsers);
  if (uType == 1) return m_link.IsIEBrowser() ? db->HideIEHistory(key) : db->HideHistory(key, kAllBrowsers);
  return E_FAIL;
}

HRESULT CHistoryURLsManager::ClearURLs() {
  CCorvaneDB* db = m_link.Database();
  if (db == nullptr) return E_FAIL;
  return db->ClearHistory();
}

}  // namespace corvane
