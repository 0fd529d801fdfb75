#include "common/text_util.h"

#include <limits>

namespace corvane {
namespace {

bool IsScanSpace(char16_t c) { return c == u' ' || (c >= u'\t' && c <= u'\r'); }
bool IsDigit(char16_t c) { return c >= u'0' && c <= u'9'; }

}  // namespace

std::u16string AsciiLowerCopy(std::u16string_view text) {
  std::u16string result(text);
  for (char16_t& c : result) c = AsciiToLower(c);
  return result;
}

bool AsciiEqualsIgnoreCase(std::u16string_view a, std::u16string_view b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i) {
    if (AsciiToLower(a[i]) != AsciiToLower(b[i])) return false;
  }
  return true;
}

int AsciiCompareIgnoreCaseN(std::u16string_view a, std::u16string_view b, size_t n) {
  for (size_t i = 0; i < n; ++i) {
    const int ca = i < a.size() ? AsciiToLower(a[i]) : 0;
    const int cb = i < b.size() ? AsciiToLower(b[i]) : 0;
    if (ca != cb) return ca - cb;
    if (ca == 0) return 0;
  }
  return 0;
}

size_t AsciiFindIgnoreCase(std::u16string_view haystack, std::u16string_view needle, size_t from) {
  if (from > haystack.size() || needle.size() > haystack.size() - from) return std::u16string_view::npos;
  const size_t last = haystack.size() - needle.size();
  for (size_t pos = from; pos <= last; ++pos) {
    if (AsciiEqualsIgnoreCase(haystack.substr(pos, needle.size()), needle)) return pos;
  }
  return std::u16string_view::npos;
}

bool ScanInt16(std::u16string_view text, size_t* pos, int16_t* value) {
  size_t i = *pos;
  while (i < text.size() && IsScanSpace(text[i])) ++i;
  const bool negative = i < text.size() && text[i] == u'-';
  if (i < text.size() && (text[i] == u'+' || text[i] == u'-')) ++i;
  const size_t firstDigit = i;
  // Magnitude capped at 2^63 so that both saturated ends are reachable.
  constexpr uint64_t kCap = uint64_t{1} << 63;
  uint64_t magnitude = 0;
  for (; i < text.size() && IsDigit(text[i]); ++i) {
    const uint64_t digit = text[i] - u'0';
    magnitude = magnitude > (kCap - digit) / 10 ? kCap : magnitude * 10 + digit;
  }
  if (i == firstDigit) return false;
  int64_t number = std::numeric_limits<int64_t>::min();
  if (!negative) {
    number = magnitude >= kCap ? std::numeric_limits<int64_t>::max() : static_cast<int64_t>(magnitude);
  } else if (magnitude < kCap) {
    number = -static_cast<int64_t>(magnitude);
  }
  *value = static_cast<int16_t>(static_cast<uint16_t>(number));
  *pos = i;
  return true;
}

}  // namespace corvane
