#include "common/utf.h"

namespace corvane {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool IsHighSurrogate(char16_t c) { return c >= 0xD800 && c <= 0xDBFF; }
bool IsLowSurrogate(char16_t c) { return c >= 0xDC00 && c <= 0xDFFF; }

// Reads one code point from UTF-16 at *i and advances *i.
char32_t NextCodePoint16(std::u16string_view text, size_t* i) {
  char16_t c = text[(*i)++];
  if (IsHighSurrogate(c) && *i < text.size() && IsLowSurrogate(text[*i])) {
    char16_t low = text[(*i)++];
    return 0x10000 + ((static_cast<char32_t>(c) - 0xD800) << 10) + (low - 0xDC00);
  }
  if (IsHighSurrogate(c) || IsLowSurrogate(c)) return kReplacement;
  return c;
}

void AppendUtf8(char32_t cp, std::string* out) {
  if (cp < 0x80) {
    out->push_back(static_cast<char>(cp));
  } else if (cp < 0x800) {
    out->push_back(static_cast<char>(0xC0 | (cp >> 6)));
    out->push_back(static_cast<char>(0x80 | (cp & 0x3F)));
  } else if (cp < 0x10000) {
    out->push_back(static_cast<char>(0xE0 | (cp >> 12)));
    out->push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
    out->push_back(static_cast<char>(0x80 | (cp & 0x3F)));
  } else {
    out->push_back(static_cast<char>(0xF0 | (cp >> 18)));
    out->push_back(static_cast<char>(0x80 | ((cp >> 12) & 0x3F)));
    out->push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
    out->push_back(static_cast<char>(0x80 | (cp & 0x3F)));
  }
}

// Reads one code point from UTF-8 at *i and advances *i; malformed input
// yields U+FFFD and consumes one byte.
char32_t NextCodePoint8(std::string_view text, size_t* i) {
  unsigned char c = static_cast<unsigned char>(text[(*i)++]);
  if (c < 0x80) return c;
  int extra = 0;
  char32_t cp = 0;
  char32_t min = 0;
  if ((c & 0xE0) == 0xC0) {
    extra = 1, cp = c & 0x1F, min = 0x80;
  } else if ((c & 0xF0) == 0xE0) {
    extra = 2, cp = c & 0x0F, min = 0x800;
  } else if ((c & 0xF8) == 0xF0) {
    extra = 3, cp = c & 0x07, min = 0x10000;
  } else {
    return kReplacement;
  }
  size_t j = *i;
  for (int k = 0; k < extra; ++k, ++j) {
    if (j >= text.size()) return kReplacement;
    unsigned char cc = static_cast<unsigned char>(text[j]);
    if ((cc & 0xC0) != 0x80) return kReplacement;
    cp = (cp << 6) | (cc & 0x3F);
  }
  if (cp < min || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) return kReplacement;
  *i = j;
  return cp;
}

void AppendUtf16(char32_t cp, std::u16string* out) {
  if (cp < 0x10000) {
    out->push_back(static_cast<char16_t>(cp));
    return;
  }
  cp -= 0x10000;
  out->push_back(static_cast<char16_t>(0xD800 + (cp >> 10)));
  out->push_back(static_cast<char16_t>(0xDC00 + (cp & 0x3FF)));
}

}  // namespace

std::string ToUtf8(std::u16string_view text) {
  std::string out;
  out.reserve(text.size());
  for (size_t i = 0; i < text.size();) AppendUtf8(NextCodePoint16(text, &i), &out);
  return out;
}

std::u16string FromUtf8(std::string_view text) {
  std::u16string out;
  out.reserve(text.size());
  for (size_t i = 0; i < text.size();) AppendUtf16(NextCodePoint8(text, &i), &out);
  return out;
}

std::wstring ToWide(std::u16string_view text) {
  std::wstring out;
  out.reserve(text.size());
  for (size_t i = 0; i < text.size();) out.push_back(static_cast<wchar_t>(NextCodePoint16(text, &i)));
  return out;
}

size_t U16Length(const char16_t* text) {
  if (text == nullptr) return 0;
  size_t n = 0;
  while (text[n] != 0) ++n;
  return n;
}

std::u16string U16(const char16_t* text) {
  return text == nullptr ? std::u16string() : std::u16string(text, U16Length(text));
}

}  // namespace corvane
