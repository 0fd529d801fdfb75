// update_driver.h: one update of the tables from what the browser holds.
//
// The provider builds a CUpdateDriver on the stack for each update cycle,
// inside the cycle's transaction, calls Run once and destroys it; the
// destructor unloads the extraction library. Run extracts history and
// favourites through the extraction library, classifies the visits, scores
// them and rebuilds every table that the managers read, then records the
// counters in DBConfig.ini. The driver owns nothing but the loaded library;
// the database and the settings belong to the provider and outlive it.

#ifndef CORVANE_ANALYSIS_UPDATE_DRIVER_H_
#define CORVANE_ANALYSIS_UPDATE_DRIVER_H_

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

#include "corvane/CorvaneDataProvider.h"
#include "intake/extraction_driver.h"
#include "store/prepared_url.h"

namespace corvane {

class CCorvaneDB;
class CScoreSettings;

// The last accepted visit per host, as a time number; hosts that differ in
// case are different keys.
using HostTimeMap = std::map<std::u16string, uint64_t>;

class CUpdateDriver {
 public:
  CUpdateDriver(CCorvaneDB* pDB, CScoreSettings* pSettings);
  ~CUpdateDriver();
  CUpdateDriver(const CUpdateDriver&) = delete;
  CUpdateDriver& operator=(const CUpdateDriver&) = delete;

  // The whole update; negative when the extraction library can't be loaded
  // or the analysis can't read its dates.
  HRESULT Run();

  // ---- Extraction (update_driver.cc, delegating to the intake) ----
  HRESULT LoadExtractor();
  uint32_t GetDefaultBrowser();
  // In: the default browser; out: the browser that delivered.
  void ExtractHistory(uint32_t* lpBrowser);
  void ExtractFavorites(uint32_t uBrowser);

  // ---- Analysis ----
  // Classifies the visits of THistory into TPreparedURL, then builds the
  // scored, recommendation and recent tables (analyze_proc.cc).
  HRESULT AnalyzeProc(uint32_t uBrowser);
  // The first days with IE as the source (analyze_ie_only.cc).
  HRESULT AnalyzeIEOnly();
  // TRecommendURL, TRecommendDomain, TZS and TSubDomain from h2 and z
  // (build_recommend_tables.cc); always S_OK.
  HRESULT BuildRecommendTables();
  // Distinct-URL counters of the scored tables (update_driver.cc).
  void WriteCounters(bool bIEOnly);

  // The rule of one second (analyze_proc.cc).
  static bool IsRepeatVisit(std::u16string_view visitStamp, std::u16string_view fixedURL, HostTimeMap* lpHosts);
  // 0 added, 1 merged into a known record, E_ABORT a repeat (analyze_proc.cc).
  static HRESULT AddLastURL(int32_t nDayIndex, const CPreparedURL& last, PreparedMap* lpMap, HostTimeMap* lpHosts);

 private:
  CCorvaneDB* m_pDB;
  CScoreSettings* m_pSettings;
  CExtractionDriver m_extraction;
};

}  // namespace corvane

#endif  // CORVANE_ANALYSIS_UPDATE_DRIVER_H_
