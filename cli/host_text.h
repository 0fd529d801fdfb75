// host_text.h: text helpers of the corvane host: BSTR to UTF-8, status codes
// as hex, and the decimal test that ID arguments must pass.

#ifndef CORVANE_CLI_HOST_TEXT_H_
#define CORVANE_CLI_HOST_TEXT_H_

#include <string>
#include <string_view>

#include "corvane/CorvaneDataProvider.h"

namespace corvane::cli {

// UTF-8 copy of a component string; null reads as empty.
std::string FromBstr(BSTR text);
// "0x80004005".
std::string HexStatus(HRESULT hr);
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
