// com_ref.h: the host's hold on the component's objects.
//
// ComRef owns one reference to an interface pointer and releases it when it
// goes; QueryAs asks an object for another interface. The host needs
// nothing more of reference counting than this.

#ifndef CORVANE_CLI_COM_REF_H_
#define CORVANE_CLI_COM_REF_H_

#include <utility>

#include "corvane/CorvaneDataProvider.h"

namespace corvane::cli {

template <class I>
class ComRef {
 public:
  ComRef() = default;
  // Takes over a reference that the caller owns.
  explicit ComRef(I* owned) : m_ptr(owned) {}
  ~ComRef() { Reset(); }
  ComRef(ComRef&& other) noexcept : m_ptr(std::exchange(other.m_ptr, nullptr)) {}
  ComRef& operator=(ComRef&& other) noexcept {
    if (this != &other) {
      Reset();
      m_ptr = std::exchange(other.m_ptr, nullptr);
    }
    return *this;
  }
  ComRef(const ComRef&) = delete;
  ComRef& operator=(const ComRef&) = delete;

  I* Get() const { return m_ptr; }
  I* operator->() const { return m_ptr; }
  explicit operator bool() const { return m_ptr != nullptr; }
  // For out arguments: releases what is held first.
  I** Put() {
    Reset();
    return &m_ptr;
  }

 private:
  void Reset() {
    if (m_ptr != nullptr) std::exchange(m_ptr, nullptr)->Release();
  }

  I* m_ptr = nullptr;
};

// The object's interface iid, or an empty ComRef when it has none.
template <class I>
ComRef<I> QueryAs(IUnknown* object, const IID& iid) {
  I* result = nullptr;
  if (object == nullptr || FAILED(object->QueryInterface(iid, reinterpret_cast<void**>(&result)))) return ComRef<I>();
  return ComRef<I>(result);
}

}  // namespace corvane::cli

#endif  // CORVANE_CLI_COM_REF_H_
