// url_info.h: CURLInfo, the fixed-field record of the favourite, focus and
// history listings.
//
// A manager fills it once with SetInfo before handing it on; the host can
// only read it. Nothing in it refers back to the database.

#ifndef CORVANE_SERVING_URL_INFO_H_
#define CORVANE_SERVING_URL_INFO_H_

#include <array>

#include <string>
#include <string_view>

#include "corvane/CorvaneDataProvider.h"
#include "platform/com_object.h"

namespace corvane {

class CURLInfo final : public ComObject<IURLInfo> {
 public:
  CURLInfo() = default;

  static HRESULT CreateInstance(const IID& riid, void** ppvObject);

  // IURLInfo: each gives S_OK, or E_INVALIDARG for a null out argument.
  HRESULT GetID(uint32_t* lpuID) override;
  HRESULT GetName(BSTR* lpbstrName) override;
  HRESULT GetURL(BSTR* lpbstrURL) override;
  HRESULT GetPath(BSTR* lpbstrPath) override;
  HRESULT GetLastVisitTime(BSTR* lpbstrLastVisitTime) override;

  // Fillers: any ID is taken, 0 too (the title of a history day).
  void SetInfo(uint32_t uID, std::u16string_view name, std::u16string_view url, std::u16string_view path);
  void SetInfo(uint32_t uID, std::u16string_view name, std::u16string_view url, std::u16string_view path,
               std::u16string_view lastVisitTime);

 private:
  ~CURLInfo() override = default;

  // Name, URL, path and last visit time one after the other: a history
  // search hands out thousands of records at a keystroke, and one block
  // each costs a quarter of the allocations of four.
  std::u16string_view Field(size_t index) const;

  uint32_t m_uID = 0;
  std::u16string m_strFields;
  std::array<size_t, 4> m_fieldEnds{};
};

}  // namespace corvane

#endif  // CORVANE_SERVING_URL_INFO_H_
