#include "provider/class_factory.h"

#include <atomic>
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

namespace {

// The locks that LockServer holds on the module, over all class objects. An
// unlock gives back one of these and nothing else: without a matching lock
// it would take a live object's lock, or drive the module's count below 0,
// where DllCanUnloadNow would never say S_OK again.
std::atomic<long> g_serverLocks{0};

bool TakeBackServerLock() {
  long held = g_serverLocks.load();
  while (held > 0) {
    if (g_serverLocks.compare_exchange_weak(held, held - 1)) return true;
  }
  return false;
}

}  // namespace

HRESULT CClassFactory::LockServer(int32_t fLock) {
  if (fLock != 0) {
    ModuleLock();
    g_serverLocks.fetch_add(1);
  } else if (TakeBackServerLock()) {
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
