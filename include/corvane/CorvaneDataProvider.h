// CorvaneDataProvider.h: the whole binary boundary of libCorvaneDataProvider.so.
//
// A host loads the library (by path or by linking), asks DllGetClassObject for
// a class object, creates the provider with IClassFactory::CreateInstance and
// talks to it and to the managers it hands out through the interfaces below.
// Interfaces are abstract classes without virtual destructors; their slot
// orders, the GUID values and the exported C names are fixed. Usable from
// C++17 hosts; no other header of the project is needed.

#ifndef CORVANE_CORVANEDATAPROVIDER_H_
#define CORVANE_CORVANEDATAPROVIDER_H_

#include <cstdint>

using HRESULT = int32_t;
using ULONG = uint32_t;
using OLECHAR = char16_t;
using BSTR = OLECHAR*;

struct GUID {
  uint32_t Data1;
  uint16_t Data2;
  uint16_t Data3;
  uint8_t Data4[8];
};
using IID = GUID;
using CLSID = GUID;

inline constexpr bool operator==(const GUID& a, const GUID& b) {
  if (a.Data1 != b.Data1 || a.Data2 != b.Data2 || a.Data3 != b.Data3) return false;
  for (int i = 0; i < 8; ++i) {
    if (a.Data4[i] != b.Data4[i]) return false;
  }
  return true;
}
inline constexpr bool operator!=(const GUID& a, const GUID& b) { return !(a == b); }

// Status values: negative is failure.
inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT S_FALSE = 1;
inline constexpr HRESULT E_NOTIMPL = static_cast<HRESULT>(0x80004001u);
inline constexpr HRESULT E_NOINTERFACE = static_cast<HRESULT>(0x80004002u);
inline constexpr HRESULT E_POINTER = static_cast<HRESULT>(0x80004003u);
inline constexpr HRESULT E_ABORT = static_cast<HRESULT>(0x80004004u);
inline constexpr HRESULT E_FAIL = static_cast<HRESULT>(0x80004005u);
inline constexpr HRESULT E_INVALIDARG = static_cast<HRESULT>(0x80070057u);
inline constexpr HRESULT E_OUTOFMEMORY = static_cast<HRESULT>(0x8007000Eu);
inline constexpr HRESULT CLASS_E_NOAGGREGATION = static_cast<HRESULT>(0x80040110u);
inline constexpr HRESULT CLASS_E_CLASSNOTAVAILABLE = static_cast<HRESULT>(0x80040111u);

inline constexpr bool SUCCEEDED(HRESULT hr) { return hr >= 0; }
inline constexpr bool FAILED(HRESULT hr) { return hr < 0; }

// GUIDs of the library, the classes and the interfaces.
inline constexpr GUID IID_IUnknown = {0x00000000, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};
inline constexpr GUID IID_IClassFactory = {0x00000001, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};
inline constexpr GUID LIBID_CorvaneDataProviderLib = {0x40C6AF05, 0xE30F, 0x42AF, {0x9F, 0xEC, 0x9B, 0x65, 0x3B, 0x26, 0xF8, 0x49}};
inline constexpr GUID APPID_CorvaneDataProvider = {0x3E738307, 0xC159, 0x4621, {0x95, 0x9C, 0xB8, 0x82, 0x41, 0x07, 0xB0, 0xD3}};
inline constexpr GUID CLSID_CorvaneDataProviderObject = {0xD26FCC89, 0x85BF, 0x4723, {0x8F, 0xFD, 0xD4, 0xA0, 0x4A, 0x1F, 0xC0, 0x58}};
inline constexpr GUID CLSID_CommonUseURLsManager = {0xECCFB414, 0xDFFE, 0x4BF9, {0x87, 0x10, 0x5F, 0x11, 0x6A, 0x94, 0x01, 0x36}};
inline constexpr GUID CLSID_FocusURLsManager = {0x9C774F6F, 0x762C, 0x419B, {0x82, 0x9A, 0x6F, 0x61, 0xD1, 0x7A, 0x74, 0xC9}};
inline constexpr GUID CLSID_HistoryURLsManager = {0x61BE2761, 0xAF2E, 0x4D55, {0x80, 0x7D, 0x5B, 0x28, 0x7F, 0x54, 0xD6, 0x0A}};
inline constexpr GUID CLSID_FavoriteURLsManger = {0x50587754, 0x2335, 0x4817, {0xA5, 0x5A, 0xA5, 0xF9, 0xC4, 0x7B, 0xF7, 0x14}};
inline constexpr GUID CLSID_URLArray = {0xF39868DA, 0xFB89, 0x458A, {0xAE, 0x56, 0xDC, 0x81, 0x49, 0x23, 0x9C, 0x02}};
inline constexpr GUID CLSID_URLInfo = {0x0502F669, 0x8224, 0x42F8, {0xA2, 0x92, 0xCB, 0x35, 0xD3, 0xB1, 0x74, 0x54}};
inline constexpr GUID CLSID_URLInfo2 = {0x89AD079B, 0x8F78, 0x4A82, {0x88, 0x7E, 0x92, 0xAA, 0xF2, 0x8D, 0xD7, 0x26}};
inline constexpr GUID IID_ICorvaneDataProviderObject = {0x10CD7DE2, 0x3E7C, 0x4F5A, {0xB2, 0xF8, 0x23, 0x0E, 0xB6, 0x11, 0x3F, 0xD5}};
inline constexpr GUID IID_ICorvaneDataProviderInner = {0xF048B264, 0x6BFA, 0x4161, {0x92, 0x47, 0x7E, 0x47, 0x9B, 0xCF, 0x90, 0x8D}};
inline constexpr GUID IID_IURLsManager = {0xF9F09040, 0x98E4, 0x4B40, {0x84, 0x03, 0x62, 0x5A, 0xB1, 0x18, 0x01, 0xDB}};
inline constexpr GUID IID_ICommonUseURLsManager = {0x35AEEEA4, 0x52A8, 0x453D, {0x84, 0x56, 0x10, 0x6C, 0xDB, 0xD5, 0xE2, 0x35}};
inline constexpr GUID IID_IFocusURLsManager = {0x8CAFB09C, 0x3A32, 0x44AF, {0xA9, 0x79, 0x76, 0xDC, 0x4A, 0x8A, 0xFD, 0xBB}};
inline constexpr GUID IID_IHistoryURLsManager = {0x791D466D, 0x88C6, 0x4688, {0xAA, 0x91, 0x40, 0xD3, 0x20, 0xFC, 0x15, 0x48}};
inline constexpr GUID IID_IFavoriteURLsManger = {0x6697C1D1, 0x48F7, 0x4A31, {0xBF, 0x4B, 0x1C, 0xFF, 0x59, 0xA7, 0x60, 0xCA}};
inline constexpr GUID IID_IURLArray = {0x8855B79F, 0xF20B, 0x4E26, {0xBE, 0x34, 0x1C, 0x68, 0x01, 0xF4, 0x00, 0xA8}};
inline constexpr GUID IID_IURLInfo = {0xACA530C4, 0xD032, 0x42CE, {0x9F, 0x43, 0xCE, 0x0C, 0x76, 0xF6, 0x34, 0x32}};
inline constexpr GUID IID_IURLInfo2 = {0x85B3069C, 0xB0B2, 0x44D0, {0xA1, 0x44, 0xF5, 0xF2, 0x08, 0x2E, 0xA1, 0x1B}};

class IUnknown {
 public:
  virtual HRESULT QueryInterface(const IID& riid, void** ppvObject) = 0;
  virtual ULONG AddRef() = 0;
  virtual ULONG Release() = 0;
};

class IClassFactory : public IUnknown {
 public:
  virtual HRESULT CreateInstance(IUnknown* pOuter, const IID& riid, void** ppvObject) = 0;
  virtual HRESULT LockServer(int32_t fLock) = 0;
};

// The provider. Initialize takes null, or a parameter text of commands
// "-Name=value" separated by blanks (a value with blanks in double quotes):
// "-Settings=<settings text>" saves a scoring set when it is newer than the
// stored one, "-ForceSettings=<settings text>" saves it over a stored
// version of 0; a settings text is "Name@..|Default@..|Ver@..|Score@..|
// Setting@..". Initialize then makes the data folder, opens (or rebuilds) the
// database and runs the day's first update. GetURLsManager gives, by ID:
//   1  the recommendations and recent take-ups (ICommonUseURLsManager)
//   2  the sites the host pinned (IURLsManager: AddURL pins, RemoveURL unpins)
//   3  the history by day, with search (IHistoryURLsManager)
//   4  the favourites (IURLsManager)
// and E_NOINTERFACE for any other. ForceUpdateData runs an update now.
// GetValue reads a key of DBConfig.ini: "LastUpdate", "ExtractBrowser",
// the counters of the last update, and the notes "Recovered",
// "WhiteListRefused", "SettingsRefused" and "DBConfigDamaged"
// ("<stamp>|<sentence>"); a missing key fails.
class ICorvaneDataProviderObject : public IUnknown {
 public:
  virtual HRESULT Initialize(BSTR bstrParam) = 0;
  virtual HRESULT Uninitialize() = 0;
  virtual HRESULT GetURLsManager(uint32_t uManagerID, IUnknown** lppURLsMgr) = 0;
  virtual HRESULT ForceUpdateData() = 0;
  virtual HRESULT GetValue(BSTR bstrKey, BSTR* lpbstrValue) = 0;
};

// Internal to the component: GetCorvaneDB writes a plain pointer to the
// database object, takes no reference, and must not be released.
class ICorvaneDataProviderInner : public IUnknown {
 public:
  virtual HRESULT GetCorvaneDB(IUnknown** lppURLsMgr) = 0;
};

class IURLsManager : public IUnknown {
 public:
  virtual HRESULT GetURLs(uint32_t uCount, IUnknown** lppURLs) = 0;
  virtual HRESULT AddURL(BSTR bstrURL, BSTR bstrName, uint32_t uReserved) = 0;
  virtual HRESULT RemoveURL(BSTR bstrID, uint32_t uType) = 0;
  virtual HRESULT ClearURLs() = 0;
};

class ICommonUseURLsManager : public IUnknown {
 public:
  virtual HRESULT GetRecomURLs(uint32_t uStart, uint32_t uCount, IUnknown** lppUnkArray, uint32_t uType) = 0;
  virtual HRESULT HideRecommendDomain(BSTR bstrID, uint32_t uFlag) = 0;
  virtual HRESULT HideSubDomain(BSTR bstrID, uint32_t uType) = 0;
  virtual HRESULT GetRecentHistory(uint32_t uStart, uint32_t uCount, IUnknown** lppArray, uint32_t uType) = 0;
};

class IFocusURLsManager : public IUnknown {};

class IFavoriteURLsManger : public IUnknown {};

class IHistoryURLsManager : public IUnknown {
 public:
  virtual HRESULT SearchURLs(BSTR bstrSearch, IUnknown** lppURLs) = 0;
};

class IURLArray : public IUnknown {
 public:
  virtual HRESULT Clear() = 0;
  virtual HRESULT AddItem(IUnknown* lpItem) = 0;
  virtual HRESULT GetCount(uint32_t* lpuCount) = 0;
  virtual HRESULT GetItem(uint32_t uIndex, IUnknown** lppItem) = 0;
};

class IURLInfo : public IUnknown {
 public:
  virtual HRESULT GetID(uint32_t* lpuID) = 0;
  virtual HRESULT GetName(BSTR* lpbstrName) = 0;
  virtual HRESULT GetURL(BSTR* lpbstrURL) = 0;
  virtual HRESULT GetPath(BSTR* lpbstrPath) = 0;
  virtual HRESULT GetLastVisitTime(BSTR* lpbstrLastVisitTime) = 0;
};

class IURLInfo2 : public IUnknown {
 public:
  virtual HRESULT GetID(uint32_t* lpuID) = 0;
  virtual HRESULT GetName(BSTR* lpbstrName) = 0;
  virtual HRESULT GetURL(BSTR* lpbstrURL, int32_t bFixed) = 0;
  virtual HRESULT GetExtraInfo(BSTR bstrName, BSTR* lpbstrValue) = 0;
  virtual HRESULT GetExtraInfoULong(BSTR bstrName, uint32_t* lpuValue) = 0;
  virtual HRESULT GetExtraInfoUnknown(BSTR bstrName, IUnknown** lppUnk) = 0;
};

extern "C" {
// Counted UTF-16 strings: the byte length stands in the 4 bytes before the
// text and a terminator follows it. A null BSTR is the empty string.
BSTR SysAllocString(const OLECHAR* psz);
BSTR SysAllocStringLen(const OLECHAR* pch, uint32_t cch);
void SysFreeString(BSTR bstr);
uint32_t SysStringLen(BSTR bstr);

HRESULT DllGetClassObject(const CLSID& rclsid, const IID& riid, void** ppv);
HRESULT DllCanUnloadNow();
HRESULT DllRegisterServer();
HRESULT DllUnregisterServer();
HRESULT DllInstall(int32_t bInstall, const OLECHAR* pszCmdLine);
}

// Types of the exports, for hosts that look them up with dlsym.
using PFN_DllGetClassObject = HRESULT (*)(const CLSID&, const IID&, void**);
using PFN_DllCanUnloadNow = HRESULT (*)();
using PFN_DllInstall = HRESULT (*)(int32_t, const OLECHAR*);
using PFN_SysAllocString = BSTR (*)(const OLECHAR*);
using PFN_SysAllocStringLen = BSTR (*)(const OLECHAR*, uint32_t);
using PFN_SysFreeString = void (*)(BSTR);
using PFN_SysStringLen = uint32_t (*)(BSTR);

#endif  // CORVANE_CORVANEDATAPROVIDER_H_
