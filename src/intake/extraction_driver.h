// extraction_driver.h: one update's dealings with the extraction library.
//
// It loads the library, asks it for the default browser, reads the history
// of that browser or, when it delivers nothing, of the first installed
// browser of the fallback order that does, and stores what came: visits
// into THistory (the IE snapshot through the merge) and favourites into
// TFavorite. It writes the extraction counters of DBConfig.ini on the way.
// The library and its extraction object live as long as this object.

#ifndef CORVANE_INTAKE_EXTRACTION_DRIVER_H_
#define CORVANE_INTAKE_EXTRACTION_DRIVER_H_

#include <cstdint>

#include "corvane/CorvaneDataProvider.h"
#include "corvane/VisitHarvest.h"
#include "intake/harvest_library.h"

namespace corvane {

class CCorvaneDB;

class CExtractionDriver {
 public:
  explicit CExtractionDriver(CCorvaneDB* pDB);
  ~CExtractionDriver();
  CExtractionDriver(const CExtractionDriver&) = delete;
  CExtractionDriver& operator=(const CExtractionDriver&) = delete;

  // S_OK loaded, S_FALSE already loaded, E_FAIL when the library, its
  // factory or the object can't be had.
  HRESULT LoadExtractor();
  // The library's default browser (0 without the export); writes
  // "DefBrowser".
  uint32_t GetDefaultBrowser();
  // In: the default browser; out: the browser whose history was stored.
  void ExtractHistory(uint32_t* lpBrowser);
  void ExtractFavorites(uint32_t uBrowser);

 private:
  // Extracts the browser's history; true when it delivered items. An empty
  // delivery is freed at once.
  bool DeliversHistory(uint32_t uBrowser);
  bool IsInstalled(uint32_t uBrowser) const;
  void ForgetIEVisits();
  void StoreHistory(uint32_t uBrowser);

  CCorvaneDB* m_pDB;
  CHarvestLibrary m_library;
  IExtractor* m_pExtractor = nullptr;
};

}  // namespace corvane

#endif  // CORVANE_INTAKE_EXTRACTION_DRIVER_H_
