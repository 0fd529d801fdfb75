// url_info2.h: CURLInfo2, the record of the recommendation and recent
// listings: ID, Name and URL, plus three separate maps of named extra values
// (strings, numbers, objects).
//
// Keys compare exactly, by code unit. An insert never replaces a value that
// stands: RemoveExtraInfo first, then add again. The record holds one
// reference to each stored object and gives them up when it dies, so a
// "SubDomain" array lives exactly as long as somebody holds it.

#ifndef CORVANE_SERVING_URL_INFO2_H_
#define CORVANE_SERVING_URL_INFO2_H_

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

#include "corvane/CorvaneDataProvider.h"
#include "platform/com_object.h"

namespace corvane {

class CURLInfo2 final : public ComObject<IURLInfo2> {
 public:
  CURLInfo2() = default;

  static HRESULT CreateInstance(const IID& riid, void** ppvObject);

  // IURLInfo2. The getters of extra values give E_INVALIDARG for a null
  // argument and E_NOINTERFACE for a key that their map lacks.
  HRESULT GetID(uint32_t* lpuID) override;
  HRESULT GetName(BSTR* lpbstrName) override;
  // bFixed has no effect: the fixed form is the extra string "FixedURL".
  HRESULT GetURL(BSTR* lpbstrURL, int32_t bFixed) override;
  HRESULT GetExtraInfo(BSTR bstrName, BSTR* lpbstrValue) override;
  HRESULT GetExtraInfoULong(BSTR bstrName, uint32_t* lpuValue) override;
  HRESULT GetExtraInfoUnknown(BSTR bstrName, IUnknown** lppUnk) override;

  // Fillers, used by the managers only.
  // Replaces ID, Name and URL; false, storing nothing, for ID 0.
  [[nodiscard]] bool SetInfo(uint32_t uID, std::u16string_view name, std::u16string_view url);
  // False when the key stands already (the first value stays).
  bool AddExtraInfo(std::u16string_view key, std::u16string_view value);
  bool AddExtraInfoULong(std::u16string_view key, uint32_t uValue);
  // Takes one reference; a null object is ignored.
  void AddExtraInfoUnknown(std::u16string_view key, IUnknown* lpItem);
  // Removes the key from all three maps.
  void RemoveExtraInfo(std::u16string_view key);

  // The stored number, or `fallback` when the key is missing.
  uint32_t ExtraULongOr(std::u16string_view key, uint32_t fallback) const;

 private:
  ~CURLInfo2() override;

  uint32_t m_uID = 0;
  std::u16string m_strName;
  std::u16string m_strURL;
  std::map<std::u16string, std::u16string, std::less<>> m_mapStrings;
  std::map<std::u16string, uint32_t, std::less<>> m_mapNumbers;
  std::map<std::u16string, IUnknown*, std::less<>> m_mapObjects;
};

}  // namespace corvane

#endif  // CORVANE_SERVING_URL_INFO2_H_
