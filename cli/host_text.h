// host_text.h: text helpers of the corvane host: UTF-8 to and from the
// component's UTF-16 strings, status codes as hex, and the decimal test that
// ID arguments must pass.

#ifndef CORVANE_CLI_HOST_TEXT_H_
#define CORVANE_CLI_HOST_TEXT_H_

#include <string>
#include <string_view>

#include "corvane/CorvaneDataProvider.h"

namespace corvane::cli {

// Conversions that never fail: a byte that is no part of a valid UTF-8
// sequence, and a lone surrogate, become U+FFFD.
std::u16string Utf8ToUtf16(std::string_view utf8);
std::string Utf16ToUtf8(std::u16string_view utf16);
// One wchar_t per code point, for the wide regular expressions.
std::wstring Utf8ToWide(std::string_view utf8);

// UTF-8 copy of a component string; null reads as empty.
std::string FromBstr(BSTR text);
// "0x80004005".
std::string HexStatus(HRESULT hr);
// The status in words with its code: "failed (0x80004005)".
std::string StatusText(HRESULT hr);
// True for a non-empty run of ASCII digits that fits 32 bits.
[[nodiscard]] bool IsDecimalNumber(std::string_view text);

// A component string that frees itself.
class OwnedBstr {
 public:
  OwnedBstr() = default;
  explicit OwnedBstr(std::string_view utf8);
  ~OwnedBstr();
  OwnedBstr(const OwnedBstr&) = delete;
  OwnedBstr& operator=(const OwnedBstr&) = delete;
  BSTR Get() const { return m_bstr; }
  BSTR* Put();
  std::string Utf8() const { return FromBstr(m_bstr); }

 private:
  BSTR m_bstr = nullptr;
};

}  // namespace corvane::cli

#endif  // CORVANE_CLI_HOST_TEXT_H_
