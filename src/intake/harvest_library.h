// harvest_library.h: finding and loading the extraction library.
//
// The library is libVisitHarvest.so in the folder of the component's own
// file, unless $CORVANE_HARVEST_LIBRARY names another file. It is loaded for
// one update and closed when this object goes.

#ifndef CORVANE_INTAKE_HARVEST_LIBRARY_H_
#define CORVANE_INTAKE_HARVEST_LIBRARY_H_

#include <string>

#include "corvane/VisitHarvest.h"

namespace corvane {

using CreateVisitHarvestObjFn = bool (*)(IExtractor**);
using GetDefautBrowserFn = uint32_t (*)();
using IsBrowserInstalledFn = bool (*)(uint32_t);

class CHarvestLibrary {
 public:
  CHarvestLibrary() = default;
  ~CHarvestLibrary();
  CHarvestLibrary(const CHarvestLibrary&) = delete;
  CHarvestLibrary& operator=(const CHarvestLibrary&) = delete;

  // True when the library is loaded, now or before.
  bool Load();
  bool IsLoaded() const { return m_handle != nullptr; }

  // The exports, looked up afresh on each call; null when missing.
  CreateVisitHarvestObjFn CreateFunction() const;
  GetDefautBrowserFn DefaultBrowserFunction() const;
  IsBrowserInstalledFn InstalledFunction() const;

  // The file Load opens.
  static std::string LibraryPath();

 private:
  void* Lookup(const char* name) const;

  void* m_handle = nullptr;
};

}  // namespace corvane

#endif  // CORVANE_INTAKE_HARVEST_LIBRARY_H_
