// VisitHarvest.h: the contract between the Corvane data provider and an
// extraction library (libVisitHarvest.so or any other implementation).
//
// The provider loads the library once per update, asks it for the default
// browser and for the browsers that are installed, and reads history visits
// (kind 1) and favourites (kind 2) through IExtractor and IExtractItem.
// Everything here is a fixed binary boundary: slot orders, field orders and
// the exported C names must not change.

#ifndef CORVANE_VISITHARVEST_H_
#define CORVANE_VISITHARVEST_H_

#include <cstdint>

// A local wall-clock reading. The same eight fields in the same order as the
// calendar record of the provider's time functions; wDayOfWeek 0 is Sunday.
struct SYSTEMTIME {
  uint16_t wYear;
  uint16_t wMonth;
  uint16_t wDayOfWeek;
  uint16_t wDay;
  uint16_t wHour;
  uint16_t wMinute;
  uint16_t wSecond;
  uint16_t wMilliseconds;
};
static_assert(sizeof(SYSTEMTIME) == 16, "SYSTEMTIME is eight 16-bit fields");

// Browser values: one bit each; 0 means that no browser is known.
inline constexpr uint32_t BROWSER_NONE = 0x0;
inline constexpr uint32_t BROWSER_IE = 0x1;
inline constexpr uint32_t BROWSER_CHROME = 0x2;
inline constexpr uint32_t BROWSER_360 = 0x4;
inline constexpr uint32_t BROWSER_QQ = 0x8;
inline constexpr uint32_t BROWSER_LIEBAO = 0x10;
inline constexpr uint32_t BROWSER_MAXHON = 0x20;
inline constexpr uint32_t BROWSER_FIREFOX = 0x40;
inline constexpr uint32_t BROWSER_SOUGOU = 0x80;
inline constexpr uint32_t BROWSER_THEWORLD = 0x100;
inline constexpr uint32_t BROWSER_BAIDU = 0x200;
inline constexpr uint32_t BROWSER_HAO123 = 0x400;
inline constexpr uint32_t BROWSER_2345 = 0x800;

// What Extract reads.
inline constexpr uint32_t EXTRACT_HISTORY = 1;
inline constexpr uint32_t EXTRACT_FAVORITES = 2;

// One delivered entry. It belongs to the extractor and lives until the
// extractor's FreeItems; texts are zero-terminated UTF-16 and live as long.
class IExtractItem {
 public:
  virtual uint32_t GetKind() = 0;                          // slot 1: not called by the provider
  virtual uint32_t GetBrowser() = 0;                       // slot 2
  virtual uint32_t GetTypedCount() = 0;                    // slot 3: not called by the provider
  virtual void GetVisitTime(SYSTEMTIME* lpTime) = 0;       // slot 4: history only
  virtual const char16_t* GetName() = 0;                   // slot 5
  virtual const char16_t* GetURL() = 0;                    // slot 6
  virtual const char16_t* GetPath() = 0;                   // slot 7: favourites only
  virtual int32_t GetVisitCount() = 0;                     // slot 8: history only
};

// The extraction object that CreateVisitHarvestObj hands out; the caller owns
// it and ends it with Destroy.
class IExtractor {
 public:
  virtual void Destroy() = 0;                                        // slot 1
  virtual uint32_t GetCount() = 0;                                   // slot 2
  virtual uint32_t GetBrowser() = 0;                                 // slot 3: not called by the provider
  virtual bool GetNextItem(IExtractItem** lppItem) = 0;              // slot 4
  virtual bool GetItem(uint32_t uIndex, IExtractItem** lppItem) = 0; // slot 5: not called by the provider
  virtual void FreeItems() = 0;                                      // slot 6
  virtual bool Extract(uint32_t uBrowser, uint32_t uKind) = 0;       // slot 7
};

extern "C" {
// Makes an extraction object; true on success.
bool CreateVisitHarvestObj(IExtractor** lppExtractor);
// The user's default browser, 0 when none is known. (The name is part of the
// boundary as it stands.)
uint32_t GetDefautBrowser();
// True when the browser has data on this machine.
bool IsBrowserInstalled(uint32_t uBrowser);
}

// Types of the exports, for hosts that look them up with dlsym.
using PFN_CreateVisitHarvestObj = bool (*)(IExtractor**);
using PFN_GetDefautBrowser = uint32_t (*)();
using PFN_IsBrowserInstalled = bool (*)(uint32_t);

#endif  // CORVANE_VISITHARVEST_H_
