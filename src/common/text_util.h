// text_util.h: ASCII-only case folding, comparison and number scanning on
// UTF-16 text.
//
// Hosts, schemes and command names are compared without regard to case, and
// all of them are expected to be ASCII; characters outside A-Z are never
// folded, so the results do not depend on a locale.

#ifndef CORVANE_COMMON_TEXT_UTIL_H_
#define CORVANE_COMMON_TEXT_UTIL_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace corvane {

// 'A'..'Z' become 'a'..'z'; every other character is returned unchanged.
constexpr char16_t AsciiToLower(char16_t c) {
  return (c >= u'A' && c <= u'Z') ? static_cast<char16_t>(c + (u'a' - u'A')) : c;
}

std::u16string AsciiLowerCopy(std::u16string_view text);

[[nodiscard]] bool AsciiEqualsIgnoreCase(std::u16string_view a, std::u16string_view b);

// Compares at most the first n characters, folding ASCII case. The end of a
// text counts as a terminating zero, so a text that is a proper prefix of the
// other within the first n characters sorts first. Negative, zero or
// positive, like a C string compare.
[[nodiscard]] int AsciiCompareIgnoreCaseN(std::u16string_view a, std::u16string_view b, size_t n);

// Position of the first occurrence of needle at or after from, folding ASCII
// case; npos when there is none. An empty needle is found at from when from
// is within the haystack.
[[nodiscard]] size_t AsciiFindIgnoreCase(std::u16string_view haystack, std::u16string_view needle,
                                         size_t from = 0);

// Reads one number at *pos the way scanf's "%hd" does: blanks skipped, an
// optional sign, at least one decimal digit. The value saturates like
// strtol and is then cut to 16 bits. On success advances *pos behind the
// digits; on failure leaves *pos and *value alone.
[[nodiscard]] bool ScanInt16(std::u16string_view text, size_t* pos, int16_t* value);

}  // namespace corvane

#endif  // CORVANE_COMMON_TEXT_UTIL_H_
