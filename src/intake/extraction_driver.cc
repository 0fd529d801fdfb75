#include "intake/extraction_driver.h"

#include "common/debug_log.h"
#include "common/utf.h"
#include "intake/browser_table.h"
#include "store/corvane_db.h"

namespace corvane {
namespace {

constexpr char16_t kDefBrowser[] = u"DefBrowser";
constexpr char16_t kHistoryExtractCount[] = u"HitoryExtractCount";
constexpr char16_t kFavoriteExtractCount[] = u"FavoriteExtractCount";
constexpr char16_t kAddHistoryCount[] = u"AddHistoryCount";
constexpr char16_t kIEHistoryAdded[] = u"IEHistoryAdded";
constexpr char16_t kIEHistoryAddedBK[] = u"IEHistoryAddedBK";

std::string NameOf(uint32_t uBrowser) { return ToUtf8(BrowserName(uBrowser)); }

}  // namespace

CExtractionDriver::CExtractionDriver(CCorvaneDB* pDB) : m_pDB(pDB) {}

CExtractionDriver::~CExtractionDriver() {
  if (m_pExtractor != nullptr) {
    m_pExtractor->FreeItems();
    m_pExtractor->Destroy();
    m_pExtractor = nullptr;
  }
  // m_library closes the library after this.
}

HRESULT CExtractionDriver::LoadExtractor() {
  if (m_pExtractor != nullptr) return S_FALSE;
  if (!m_library.Load()) return E_FAIL;
  CreateVisitHarvestObjFn create = m_library.CreateFunction();
  if (create == nullptr) return E_FAIL;
  IExtractor* extractor = nullptr;
  if (!create(&extractor) || extractor == nullptr) return E_FAIL;
  m_pExtractor = extractor;
  return S_OK;
}

uint32_t CExtractionDriver::GetDefaultBrowser() {
  GetDefautBrowserFn get = m_library.DefaultBrowserFunction();
  uint32_t browser = get != nullptr ? get() : BROWSER_NONE;
  static_cast<void>(m_pDB->SetConfig(kDefBrowser, BrowserName(browser)));
  return browser;
}

bool CExtractionDriver::IsInstalled(uint32_t uBrowser) const {
  // Looked up afresh for each browser, as a library may lack the export.
  IsBrowserInstalledFn installed = m_library.InstalledFunction();
  return installed != nullptr && installed(uBrowser);
}

// Another browser than IE is about to be read: THistory is no longer fed by
// IE, so the IE-only path may come back later.
void CExtractionDriver::ForgetIEVisits() {
  static_cast<void>(m_pDB->DeleteConfig(kIEHistoryAdded));
  static_cast<void>(m_pDB->DeleteConfig(kIEHistoryAddedBK));
}

bool CExtractionDriver::DeliversHistory(uint32_t uBrowser) {
  static_cast<void>(m_pExtractor->Extract(uBrowser, EXTRACT_HISTORY));
  if (m_pExtractor->GetCount() != 0) return true;
  m_pExtractor->FreeItems();
  return false;
}

void CExtractionDriver::ExtractHistory(uint32_t* lpBrowser) {
  if (m_pExtractor == nullptr || lpBrowser == nullptr) return;
  uint32_t browser = *lpBrowser;
  if (browser != BROWSER_NONE && browser != BROWSER_IE) ForgetIEVisits();
  if (browser != BROWSER_NONE && DeliversHistory(browser)) {
    StoreHistory(browser);
    DebugLog("!!!! ExtractHistory(%s)) OK1\r\n", NameOf(browser).c_str());
    return;
  }
  for (uint32_t candidate : FallbackOrder()) {
    if (!IsInstalled(candidate)) continue;
    if (candidate != BROWSER_IE) ForgetIEVisits();
    if (!DeliversHistory(candidate)) continue;
    StoreHistory(candidate);
    *lpBrowser = candidate;
    DebugLog("!!!! ExtractHistory(%s)) OK2\r\n", NameOf(candidate).c_str());
    return;
  }
  // Nobody delivered: store the (empty) delivery of the browser as it came
  // in, so that the counters say so.
  DebugLog("!!!! ExtractHistory(%s)) OK3\r\n", NameOf(browser).c_str());
  static_cast<void>(m_pExtractor->Extract(browser, EXTRACT_HISTORY));
  StoreHistory(browser);
}

void CExtractionDriver::StoreHistory(uint32_t uBrowser) {
  int32_t count = static_cast<int32_t>(m_pExtractor->GetCount());
  static_cast<void>(m_pDB->SetConfigInt(kHistoryExtractCount, count));
  if (uBrowser == BROWSER_IE) {
    static_cast<void>(m_pDB->MergeIEHistory(m_pExtractor));
    std::u16string added;
    static_cast<void>(m_pDB->GetConfig(kIEHistoryAdded, &added, u""));
    // Until a merge has added visits to THistory, the counter shows how
    // many items IE delivered.
    if (added.empty()) static_cast<void>(m_pDB->SetConfigInt(kAddHistoryCount, count));
  } else {
    static_cast<void>(m_pDB->AddNewHistory(m_pExtractor));
  }
  m_pExtractor->FreeItems();
}

void CExtractionDriver::ExtractFavorites(uint32_t uBrowser) {
  if (m_pExtractor == nullptr) return;
  static_cast<void>(m_pExtractor->Extract(uBrowser, EXTRACT_FAVORITES));
  static_cast<void>(m_pDB->SetConfigInt(kFavoriteExtractCount, static_cast<int32_t>(m_pExtractor->GetCount())));
  static_cast<void>(m_pDB->AddFavorites(m_pExtractor));
  m_pExtractor->FreeItems();
}

}  // namespace corvane
