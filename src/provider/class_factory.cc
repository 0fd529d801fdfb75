#include "provider/class_factory.h"

#include <memory>

#include "platform/module_lock.h"
#include "provider/class_catalogue.h"

namespace corvane {

HRESULT CClassFactory::QueryInterface(const IID& riid, void** ppvObject) {
  if (ppvObject == nullptr) return E_POINTER;
  *ppvObject = nullptr;
  if (riid != IID_IUnknown && riid != IID_IClassFactory) return E_NOINTERFACE;
  *ppvObject = static_cast<IClassFactory*>(this);
  AddRef();
  return S_OK;
}

// Class objects live as long as the library; the count is kept for hosts
// that balance their calls, and never frees anything.
ULONG CClassFactory::AddRef() { return m_cRef.fetch_add(1) + 1; }
ULONG CClassFactory::Release() { return m_cRef.fetch_sub(1) - 1; }

HRESULT CClassFactory::CreateInstance(IUnknown* pOuter, const IID& riid, void** ppvObject) {
  if (ppvObject == nullptr) return E_POINTER;
  *ppvObject = nullptr;
  if (pOuter != nullptr) return CLASS_E_NOAGGREGATION;
  return m_create(riid, ppvObject);
}

HRESULT CClassFactory::LockServer(int32_t fLock) {
  if (fLock != 0) {
    ModuleLock();
  } else {
    ModuleUnlock();
  }
  return S_OK;
}

IClassFactory* FindClassObject(const CLSID& rclsid) {
  const std::vector<ClassEntry>& classes = ClassCatalogue();
  for (size_t i = 0; i < classes.size(); ++i) {
    if (classes[i].clsid != rclsid) continue;
    // One class object per class, made on first use; the static's guarded
    // initialisation makes two threads get the same one.
    static const std::vector<std::unique_ptr<CClassFactory>> factories = [] {
      std::vector<std::unique_ptr<CClassFactory>> made;
      for (const ClassEntry& entry : ClassCatalogue()) made.push_back(std::make_unique<CClassFactory>(entry.create));
      return made;
    }();
    return factories[i].get();
  }
  return nullptr;
}

}  // namespace corvane
