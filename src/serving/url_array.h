// url_array.h: CURLArray, the ordered list of objects that every manager
// hands to the host.
//
// The array holds one reference to each item it stores, in order of
// addition; the same object added twice stands twice, with two references.
// Arrays may hold arrays (the history's days, a domain's "SubDomain" list).
// Single-threaded like every object of the component.

#ifndef CORVANE_SERVING_URL_ARRAY_H_
#define CORVANE_SERVING_URL_ARRAY_H_

#include <cstddef>
#include <vector>

#include "corvane/CorvaneDataProvider.h"
#include "platform/com_object.h"

namespace corvane {

class CURLArray final : public ComObject<IURLArray> {
 public:
  CURLArray() = default;

  // Builds an array and queries it for riid (the class object's way in).
  static HRESULT CreateInstance(const IID& riid, void** ppvObject);

  // IURLArray
  HRESULT Clear() override;
  // A null item is ignored; S_OK either way.
  HRESULT AddItem(IUnknown* lpItem) override;
  HRESULT GetCount(uint32_t* lpuCount) override;
  // E_INVALIDARG for an index at or past the end, *lppItem untouched.
  HRESULT GetItem(uint32_t uIndex, IUnknown** lppItem) override;

  // Appends without the COM indirection; same rules as AddItem.
  void Append(IUnknown* lpItem) { static_cast<void>(AddItem(lpItem)); }
  size_t Size() const { return m_items.size(); }

 private:
  ~CURLArray() override;

  std::vector<IUnknown*> m_items;
};

}  // namespace corvane

#endif  // CORVANE_SERVING_URL_ARRAY_H_
