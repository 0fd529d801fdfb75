// class_factory.h: the class objects behind DllGetClassObject.
//
// Each creatable class has one class object, made on the first request and
// kept until the library unloads. Its reference count is atomic and does not
// lock the module; LockServer moves the module's lock count, and an unlock
// without a lock of LockServer to match changes nothing. Outer objects
// (aggregation) are refused with CLASS_E_NOAGGREGATION.

#ifndef CORVANE_PROVIDER_CLASS_FACTORY_H_
#define CORVANE_PROVIDER_CLASS_FACTORY_H_

#include <atomic>

#include "corvane/CorvaneDataProvider.h"

namespace corvane {

// Builds a new object and queries it for riid; the object's own reference
// is dropped, so the caller holds exactly the one from the query.
using CreateInstanceFn = HRESULT (*)(const IID& riid, void** ppvObject);

class CClassFactory final : public IClassFactory {
 public:
  explicit CClassFactory(CreateInstanceFn create) : m_create(create) {}

  HRESULT QueryInterface(const IID& riid, void** ppvObject) override;
  ULONG AddRef() override;
  ULONG Release() override;
  HRESULT CreateInstance(IUnknown* pOuter, const IID& riid, void** ppvObject) override;
  HRESULT LockServer(int32_t fLock) override;

 private:
  CreateInstanceFn m_create;
  std::atomic<ULONG> m_cRef{1};
};

// The class object of a class, or null for a class the library lacks.
IClassFactory* FindClassObject(const CLSID& rclsid);

}  // namespace corvane

#endif  // CORVANE_PROVIDER_CLASS_FACTORY_H_
