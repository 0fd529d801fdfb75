#include "analysis/update_driver.h"

#include "intake/browser_table.h"
#include "settings/score_settings.h"
#include "store/corvane_db.h"
#include "store/schema.h"

namespace corvane {
namespace {

constexpr char16_t kDefBrowser[] = u"DefBrowser";
constexpr char16_t kExtractBrowser[] = u"ExtractBrowser";
constexpr char16_t kAddHistoryCount[] = u"AddHistoryCount";
constexpr char16_t kIEHistoryAdded[] = u"IEHistoryAdded";
constexpr char16_t kBuildOftenTable[] = u"BuildOftenTable";

// The keys of WriteCounters, in the order in which they are written.
constexpr const char16_t* kCounterKeys[] = {u"H2", u"E3inH2", u"E3", u"H1", u"E2inH1", u"E2"};

}  // namespace

CUpdateDriver::CUpdateDriver(CCorvaneDB* pDB, CScoreSettings* pSettings)
    : m_pDB(pDB), m_pSettings(pSettings), m_extraction(pDB) {}

// m_extraction frees the extraction object and closes the library.
CUpdateDriver::~CUpdateDriver() = default;

HRESULT CUpdateDriver::Run() {
  static_cast<void>(m_pDB->DeleteConfig(kDefBrowser));
  static_cast<void>(m_pDB->DeleteConfig(kExtractBrowser));
  static_cast<void>(m_pDB->DeleteConfig(kAddHistoryCount));
  if (FAILED(LoadExtractor())) return E_FAIL;
  uint32_t browser = GetDefaultBrowser();
  ExtractHistory(&browser);
  static_cast<void>(m_pDB->SetConfig(kExtractBrowser, BrowserName(browser)));
  ExtractFavorites(browser);
  static_cast<void>(m_pDB->PutBackSalvagedMarks(CCorvaneDB::MarkStage::kVisitsAndFavorites));
  std::u16string ieAdded;
  static_cast<void>(m_pDB->GetConfig(kIEHistoryAdded, &ieAdded, u""));
  // Until IE visits have reached THistory, all that is known of them lies
  // in TIEHistory.
  bool ieOnly = browser == BROWSER_IE && ieAdded.empty();
  static_cast<void>(m_pDB->DeleteConfig(kBuildOftenTable));
  // The normal path run on IE visits works in IE mode too.
  m_pSettings->SetIEMode(browser == BROWSER_IE);
  HRESULT hr = ieOnly ? AnalyzeIEOnly() : AnalyzeProc(browser);
  if (SUCCEEDED(hr)) static_cast<void>(m_pDB->PutBackSalvagedMarks(CCorvaneDB::MarkStage::kRankings));
  if (SUCCEEDED(hr)) WriteCounters(ieOnly);
  return hr;
}

HRESULT CUpdateDriver::LoadExtractor() { return m_extraction.LoadExtractor(); }

uint32_t CUpdateDriver::GetDefaultBrowser() { return m_extraction.GetDefaultBrowser(); }

void CUpdateDriver::ExtractHistory(uint32_t* lpBrowser) { m_extraction.ExtractHistory(lpBrowser); }

void CUpdateDriver::ExtractFavorites(uint32_t uBrowser) { m_extraction.ExtractFavorites(uBrowser); }

// "H1" and "E2inH1" describe the recent table j1, as "H2" and "E3inH2"
// describe the long-standing table h2: j1 is the builders' other scored
// table, and e2 (the first sites of each recent day) is to j1 what e3 is to
// h2. Reporting a table that no builder creates would leave the keys
// meaningless.
void CUpdateDriver::WriteCounters(bool bIEOnly) {
  if (bIEOnly) {
    for (const char16_t* key : kCounterKeys) static_cast<void>(m_pDB->SetConfigInt(key, -1));
    return;
  }
  int32_t count = 0;
  if (SUCCEEDED(m_pDB->CountDistinctURLs(schema::kH2, &count))) static_cast<void>(m_pDB->SetConfigInt(u"H2", count));
  int32_t overlap = 0;
  int32_t total = 0;
  if (SUCCEEDED(m_pDB->CountURLsIn(schema::kH2, schema::kE3, &overlap, &total))) {
    static_cast<void>(m_pDB->SetConfigInt(u"E3inH2", overlap));
    static_cast<void>(m_pDB->SetConfigInt(u"E3", total));
  }
  count = 0;
  if (SUCCEEDED(m_pDB->CountDistinctURLs(schema::kJ1, &count))) static_cast<void>(m_pDB->SetConfigInt(u"H1", count));
  overlap = 0;
  total = 0;
  if (SUCCEEDED(m_pDB->CountURLsIn(schema::kJ1, schema::kE2, &overlap, &total))) {
    static_cast<void>(m_pDB->SetConfigInt(u"E2inH1", overlap));
    static_cast<void>(m_pDB->SetConfigInt(u"E2", total));
  }
}

}  // namespace corvane
