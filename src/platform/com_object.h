// com_object.h: reference counting and interface lookup for the component's
// classes.
//
// A class derives from ComObject<I1, I2, ...> with the interfaces it offers,
// in order. QueryInterface answers IID_IUnknown and each listed interface;
// the reference count is a plain integer, since each object belongs to the
// one thread that uses it. Objects start with one reference (the creator's)
// and hold a lock on the module while they live.

#ifndef CORVANE_PLATFORM_COM_OBJECT_H_
#define CORVANE_PLATFORM_COM_OBJECT_H_

#include <new>

#include "corvane/CorvaneDataProvider.h"
#include "platform/module_lock.h"

namespace corvane {

template <class Interface>
struct InterfaceId;

#define CORVANE_INTERFACE_ID(Interface) \
  template <>                           \
  struct InterfaceId<Interface> {       \
    static constexpr const IID& value = IID_##Interface; \
  }

CORVANE_INTERFACE_ID(IUnknown);
CORVANE_INTERFACE_ID(IClassFactory);
CORVANE_INTERFACE_ID(ICorvaneDataProviderObject);
CORVANE_INTERFACE_ID(ICorvaneDataProviderInner);
CORVANE_INTERFACE_ID(IURLsManager);
CORVANE_INTERFACE_ID(ICommonUseURLsManager);
CORVANE_INTERFACE_ID(IFocusURLsManager);
CORVANE_INTERFACE_ID(IFavoriteURLsManger);
CORVANE_INTERFACE_ID(IHistoryURLsManager);
CORVANE_INTERFACE_ID(IURLArray);
CORVANE_INTERFACE_ID(IURLInfo);
CORVANE_INTERFACE_ID(IURLInfo2);

#undef CORVANE_INTERFACE_ID

template <class First, class... Rest>
class ComObject : public First, public Rest... {
 public:
  ComObject(const ComObject&) = delete;
  ComObject& operator=(const ComObject&) = delete;

  HRESULT QueryInterface(const IID& riid, void** ppvObject) override {
    if (ppvObject == nullptr) return E_POINTER;
    *ppvObject = nullptr;
    if (riid == IID_IUnknown) {
      *ppvObject = static_cast<IUnknown*>(static_cast<First*>(this));
    } else if (!FindInterface<First, Rest...>(riid, ppvObject)) {
      return E_NOINTERFACE;
    }
    AddRef();
    return S_OK;
  }

  ULONG AddRef() override { return ++m_cRef; }

  ULONG Release() override {
    ULONG count = --m_cRef;
    if (count == 0) delete this;
    return count;
  }

  // The object as its base interface, without a new reference.
  IUnknown* AsUnknown() { return static_cast<IUnknown*>(static_cast<First*>(this)); }

 protected:
  ComObject() { ModuleLock(); }
  virtual ~ComObject() { ModuleUnlock(); }

 private:
  template <class I, class... More>
  bool FindInterface(const IID& riid, void** ppvObject) {
    if (riid == InterfaceId<I>::value) {
      *ppvObject = static_cast<I*>(this);
      return true;
    }
    if constexpr (sizeof...(More) > 0) {
      return FindInterface<More...>(riid, ppvObject);
    } else {
      return false;
    }
  }

  ULONG m_cRef = 1;
};

// Builds a T with one reference; null when memory runs out.
template <class T, class... Args>
T* CreateObject(Args&&... args) {
  return new (std::nothrow) T(static_cast<Args&&>(args)...);
}

// Holds one reference and releases it at the end of the scope.
template <class I>
class ComPtr {
 public:
  ComPtr() = default;
  explicit ComPtr(I* p) : m_p(p) {}  // takes over one reference
  ComPtr(const ComPtr&) = delete;
  ComPtr& operator=(const ComPtr&) = delete;
  ComPtr(ComPtr&& other) noexcept : m_p(other.Detach()) {}
  ComPtr& operator=(ComPtr&& other) noexcept {
    Reset(other.Detach());
    return *this;
  }
  ~ComPtr() { Reset(); }

  I* Get() const { return m_p; }
  I* operator->() const { return m_p; }
  explicit operator bool() const { return m_p != nullptr; }
  I** Put() {
    Reset();
    return &m_p;
  }
  I* Detach() {
    I* p = m_p;
    m_p = nullptr;
    return p;
  }
  void Reset(I* p = nullptr) {
    if (m_p != nullptr) m_p->Release();
    m_p = p;
  }

 private:
  I* m_p = nullptr;
};

}  // namespace corvane

#endif  // CORVANE_PLATFORM_COM_OBJECT_H_
