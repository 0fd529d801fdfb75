#include "cli/host_text.h"

#include <cstdio>

#include "common/utf.h"

namespace corvane::cli {

std::string FromBstr(BSTR text) {
  if (text == nullptr) return std::string();
  return ToUtf8(std::u16string_view(text, SysStringLen(text)));
}

std::string HexStatus(HRESULT hr) {
  char buffer[16];
  std::snprintf(buffer, sizeof(buffer), "0x%08X", static_cast<unsigned>(hr));
  return buffer;
}

bool IsDecimalNumber(std::string_view text) {
  if (text.empty() || text.size() > 10) return false;
  unsigned long long value = 0;
  for (char c : text) {
    if (c < '0' || c > '9') return false;
    value = value * 10 + static_cast<unsigned>(c - '0');
  }
  return value <= 0xFFFFFFFFull;
}

OwnedBstr::OwnedBstr(std::string_view utf8) {
  std::u16string wide = FromUtf8(utf8);
  m_bstr = SysAllocStringLen(wide.data(), static_cast<uint32_t>(wide.size()));
}

OwnedBstr::~OwnedBstr() { SysFreeString(m_bstr); }

BSTR* OwnedBstr::Put() {
  SysFreeString(m_bstr);
  m_bstr = nullptr;
  return &m_bstr;
}

}  // namespace corvane::cli
