#include "cli/host_text.h"

#include <cstdio>

namespace corvane::cli {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

// The code point that starts at text[*lpAt], moving *lpAt past it.
char32_t NextFromUtf8(std::string_view text, size_t* lpAt) {
  unsigned char lead = static_cast<unsigned char>(text[(*lpAt)++]);
  if (lead < 0x80) return lead;
  int more = lead < 0xC2 ? -1 : lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : lead < 0xF5 ? 3 : -1;
  if (more < 0 || *lpAt + static_cast<size_t>(more) > text.size()) return kReplacement;
  char32_t code = lead & (0x3F >> more);
  for (int i = 0; i < more; ++i) {
    unsigned char next = static_cast<unsigned char>(text[*lpAt]);
    if ((next & 0xC0) != 0x80) return kReplacement;
    code = (code << 6) | (next & 0x3F);
    ++*lpAt;
  }
  // Overlong forms, surrogates and values past U+10FFFF are not text.
  static constexpr char32_t kSmallest[] = {0, 0x80, 0x800, 0x10000};
  if (code < kSmallest[more] || (code >= 0xD800 && code < 0xE000) || code > 0x10FFFF) return kReplacement;
  return code;
}

void AppendUtf8(char32_t code, std::string* lpOut) {
  if (code < 0x80) {
    lpOut->push_back(static_cast<char>(code));
  } else if (code < 0x800) {
    lpOut->push_back(static_cast<char>(0xC0 | (code >> 6)));
    lpOut->push_back(static_cast<char>(0x80 | (code & 0x3F)));
  } else if (code < 0x10000) {
    lpOut->push_back(static_cast<char>(0xE0 | (code >> 12)));
    lpOut->push_back(static_cast<char>(0x80 | ((code >> 6) & 0x3F)));
    lpOut->push_back(static_cast<char>(0x80 | (code & 0x3F)));
  } else {
    lpOut->push_back(static_cast<char>(0xF0 | (code >> 18)));
    lpOut->push_back(static_cast<char>(0x80 | ((code >> 12) & 0x3F)));
    lpOut->push_back(static_cast<char>(0x80 | ((code >> 6) & 0x3F)));
    lpOut->push_back(static_cast<char>(0x80 | (code & 0x3F)));
  }
}

}  // namespace

std::u16string Utf8ToUtf16(std::string_view utf8) {
  std::u16string out;
  out.reserve(utf8.size());
  for (size_t at = 0; at < utf8.size();) {
    char32_t code = NextFromUtf8(utf8, &at);
    if (code < 0x10000) {
      out.push_back(static_cast<char16_t>(code));
    } else {
      out.push_back(static_cast<char16_t>(0xD800 + ((code - 0x10000) >> 10)));
      out.push_back(static_cast<char16_t>(0xDC00 + ((code - 0x10000) & 0x3FF)));
    }
  }
  return out;
}

std::string Utf16ToUtf8(std::u16string_view utf16) {
  std::string out;
  out.reserve(utf16.size());
  for (size_t at = 0; at < utf16.size(); ++at) {
    char32_t code = utf16[at];
    bool high = code >= 0xD800 && code < 0xDC00;
    if (high && at + 1 < utf16.size() && utf16[at + 1] >= 0xDC00 && utf16[at + 1] < 0xE000) {
      code = 0x10000 + ((code - 0xD800) << 10) + (utf16[++at] - 0xDC00);
    } else if (code >= 0xD800 && code < 0xE000) {
      code = kReplacement;
    }
    AppendUtf8(code, &out);
  }
  return out;
}

std::wstring Utf8ToWide(std::string_view utf8) {
  std::wstring out;
  out.reserve(utf8.size());
  for (size_t at = 0; at < utf8.size();) out.push_back(static_cast<wchar_t>(NextFromUtf8(utf8, &at)));
  return out;
}

std::string FromBstr(BSTR text) {
  if (text == nullptr) return std::string();
  return Utf16ToUtf8(std::u16string_view(text, SysStringLen(text)));
}

std::string HexStatus(HRESULT hr) {
  char buffer[16];
  std::snprintf(buffer, sizeof(buffer), "0x%08X", static_cast<unsigned>(hr));
  return buffer;
}

std::string StatusText(HRESULT hr) {
  static const std::pair<HRESULT, const char*> kWords[] = {
      {E_FAIL, "failed"},           {E_INVALIDARG, "invalid argument"}, {E_POINTER, "null pointer"},
      {E_OUTOFMEMORY, "out of memory"}, {E_NOINTERFACE, "no such interface"}, {E_NOTIMPL, "not implemented"},
      {CLASS_E_CLASSNOTAVAILABLE, "no such class"}};
  for (const auto& [code, words] : kWords) {
    if (code == hr) return std::string(words) + " (" + HexStatus(hr) + ")";
  }
  return "status " + HexStatus(hr);
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
  std::u16string wide = Utf8ToUtf16(utf8);
  m_bstr = SysAllocStringLen(wide.data(), static_cast<uint32_t>(wide.size()));
}

OwnedBstr::~OwnedBstr() { SysFreeString(m_bstr); }

BSTR* OwnedBstr::Put() {
  SysFreeString(m_bstr);
  m_bstr = nullptr;
  return &m_bstr;
}

}  // namespace corvane::cli
