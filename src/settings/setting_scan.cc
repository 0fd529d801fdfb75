#include "settings/setting_scan.h"

#include <charconv>
#include <cmath>
#include <limits>

#include "settings/score_settings.h"

namespace corvane {
namespace {

bool IsScanSpace(char16_t c) { return c == u' ' || (c >= u'\t' && c <= u'\r'); }

bool IsDigit(char16_t c) { return c >= u'0' && c <= u'9'; }

// Walks a text the way a scanf pattern does: each step either matches and
// moves on or fails, and the number of converted fields is counted.
class Scanner {
 public:
  explicit Scanner(std::u16string_view text) : m_text(text) {}

  int Converted() const { return m_converted; }

  // A character of the pattern itself: matched exactly, no space skipped.
  bool Literal(char16_t c) {
    if (m_pos >= m_text.size() || m_text[m_pos] != c) return false;
    ++m_pos;
    return true;
  }

  bool Int(int32_t* lpValue) {
    int64_t value = 0;
    if (!ReadInteger(&value)) return false;
    // The C library converts to a long first and then keeps the low 32 bits.
    *lpValue = static_cast<int32_t>(value);
    ++m_converted;
    return true;
  }

  bool UInt(uint32_t* lpValue) {
    int32_t value = 0;
    if (!Int(&value)) return false;
    *lpValue = static_cast<uint32_t>(value);
    return true;
  }

  bool Float(float* lpValue) {
    SkipSpace();
    bool negative = false;
    if (m_pos < m_text.size() && (m_text[m_pos] == u'+' || m_text[m_pos] == u'-')) {
      negative = m_text[m_pos] == u'-';
      ++m_pos;
    }
    std::string ascii = AsciiRun();
    if (ascii.empty() || ascii[0] == '+' || ascii[0] == '-') return false;
    double value = 0.0;
    auto [end, error] = std::from_chars(ascii.data(), ascii.data() + ascii.size(), value);
    if (error != std::errc()) return false;
    m_pos += static_cast<size_t>(end - ascii.data());
    *lpValue = ToFloat(negative ? -value : value);
    ++m_converted;
    return true;
  }

  // "%[^}]" with a width: one or more characters other than "}".
  bool NotBrace(std::u16string* lpText, size_t maxChars) {
    size_t begin = m_pos;
    while (m_pos < m_text.size() && m_text[m_pos] != u'}' && m_pos - begin < maxChars) ++m_pos;
    if (m_pos == begin) return false;
    lpText->assign(m_text.substr(begin, m_pos - begin));
    ++m_converted;
    return true;
  }

 private:
  void SkipSpace() {
    while (m_pos < m_text.size() && IsScanSpace(m_text[m_pos])) ++m_pos;
  }

  // Sign and digits, saturating at the range of a 64-bit long as strtol does.
  bool ReadInteger(int64_t* lpValue) {
    SkipSpace();
    bool negative = false;
    if (m_pos < m_text.size() && (m_text[m_pos] == u'+' || m_text[m_pos] == u'-')) {
      negative = m_text[m_pos] == u'-';
      ++m_pos;
    }
    if (m_pos >= m_text.size() || !IsDigit(m_text[m_pos])) return false;
    constexpr uint64_t kLimit = static_cast<uint64_t>(std::numeric_limits<int64_t>::max()) + 1;
    uint64_t magnitude = 0;
    for (; m_pos < m_text.size() && IsDigit(m_text[m_pos]); ++m_pos) {
      uint64_t digit = static_cast<uint64_t>(m_text[m_pos] - u'0');
      magnitude = magnitude > (kLimit - digit) / 10 ? kLimit : magnitude * 10 + digit;
    }
    if (negative) {
      *lpValue = magnitude >= kLimit ? std::numeric_limits<int64_t>::min() : -static_cast<int64_t>(magnitude);
    } else {
      *lpValue = magnitude >= kLimit ? std::numeric_limits<int64_t>::max() : static_cast<int64_t>(magnitude);
    }
    return true;
  }

  // The ASCII characters from here up to the next separator of the grammars;
  // the number converter takes the longest valid prefix of them.
  std::string AsciiRun() const {
    std::string run;
    for (size_t i = m_pos; i < m_text.size(); ++i) {
      char16_t c = m_text[i];
      if (c >= 0x80 || c == u',' || c == u'{' || c == u'}') break;
      run.push_back(static_cast<char>(c));
    }
    return run;
  }

  static float ToFloat(double value) {
    if (std::isfinite(value) && std::fabs(value) > std::numeric_limits<float>::max()) {
      return value < 0 ? -std::numeric_limits<float>::infinity() : std::numeric_limits<float>::infinity();
    }
    return static_cast<float>(value);
  }

  std::u16string_view m_text;
  size_t m_pos = 0;
  int m_converted = 0;
};

}  // namespace

int ScanScoreRowFields(std::u16string_view piece, ScoreRow* lpRow, std::u16string* lpParamList,
                       std::u16string* lpReservedList) {
  Scanner scan(piece);
  static_cast<void>(scan.Literal(u'{') && scan.UInt(&lpRow->DayFrom) && scan.Literal(u',') &&
                    scan.UInt(&lpRow->DayTo) && scan.Literal(u',') && scan.Int(&lpRow->DayScore) &&
                    scan.Literal(u',') && scan.Int(&lpRow->VisitScore) && scan.Literal(u',') &&
                    scan.Int(&lpRow->FavoritePercent) && scan.Literal(u',') && scan.Float(&lpRow->RecencyWeight) &&
                    scan.Literal(u',') && scan.Int(&lpRow->ParamCount) && scan.Literal(u',') && scan.Literal(u'{') &&
                    scan.NotBrace(lpParamList, kMaxInnerListChars) && scan.Literal(u'}') && scan.Literal(u',') &&
                    scan.Literal(u'{') && scan.NotBrace(lpReservedList, kMaxInnerListChars));
  return scan.Converted();
}

int ScanReservedList(std::u16string_view list, std::array<int32_t, 8>* lpValues) {
  Scanner scan(list);
  for (size_t i = 0; i < lpValues->size(); ++i) {
    if (i > 0 && !scan.Literal(u',')) break;
    if (!scan.Int(&(*lpValues)[i])) break;
  }
  return scan.Converted();
}

int ScanSettingValue(std::u16string_view text, int32_t* lpFirst, int32_t* lpSecond, int32_t* lpThird) {
  Scanner scan(text);
  static_cast<void>(scan.Literal(u'{') && scan.Int(lpFirst) && scan.Literal(u',') && scan.Literal(u'{') &&
                    scan.Int(lpSecond) && scan.Literal(u',') && scan.Int(lpThird));
  return scan.Converted();
}

int32_t DecimalToInt(std::u16string_view text) {
  Scanner scan(text);
  int32_t value = 0;
  return scan.Int(&value) ? value : 0;
}

}  // namespace corvane
