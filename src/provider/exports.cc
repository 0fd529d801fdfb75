// The exported functions of libCorvaneDataProvider.so: the class objects,
// the unload test, registration, and the BSTR functions.

#include "common/text_util.h"
#include "common/utf.h"
#include "corvane/CorvaneDataProvider.h"
#include "platform/bstr.h"
#include "platform/module_lock.h"
#include "provider/class_factory.h"
#include "provider/dll_install.h"

#define CORVANE_EXPORT extern "C" __attribute__((visibility("default")))

CORVANE_EXPORT BSTR SysAllocString(const OLECHAR* psz) {
  if (psz == nullptr) return nullptr;
  return corvane::BstrAlloc(std::u16string_view(psz, corvane::U16Length(psz)));
}

// A null pch gives cch zero characters; a length whose bytes do not fit the
// prefix, or memory that runs out, gives null.
CORVANE_EXPORT BSTR SysAllocStringLen(const OLECHAR* pch, uint32_t cch) { return corvane::BstrAllocLen(pch, cch); }

CORVANE_EXPORT void SysFreeString(BSTR bstr) { corvane::BstrFree(bstr); }

CORVANE_EXPORT uint32_t SysStringLen(BSTR bstr) { return corvane::BstrLength(bstr); }

CORVANE_EXPORT HRESULT DllGetClassObject(const CLSID& rclsid, const IID& riid, void** ppv) {
  if (ppv == nullptr) return E_POINTER;
  *ppv = nullptr;
  IClassFactory* factory = corvane::FindClassObject(rclsid);
  if (factory == nullptr) return CLASS_E_CLASSNOTAVAILABLE;
  return factory->QueryInterface(riid, ppv);
}

CORVANE_EXPORT HRESULT DllCanUnloadNow() { return corvane::ModuleLockCount() == 0 ? S_OK : S_FALSE; }

// There is no registry: hosts load the library by path.
CORVANE_EXPORT HRESULT DllRegisterServer() { return S_OK; }
CORVANE_EXPORT HRESULT DllUnregisterServer() { return S_OK; }

CORVANE_EXPORT HRESULT DllInstall(int32_t bInstall, const OLECHAR* pszCmdLine) {
  return corvane::InstallServer(bInstall, pszCmdLine, &DllRegisterServer, &DllUnregisterServer);
}
