// setting_scan.h: the conversions that read numbers out of settings text.
//
// The settings grammars are written as scanf patterns; these functions give
// the same results on UTF-16 text without a fixed buffer or a locale: each
// reports how many fields converted before the first mismatch, and each field
// that converted is already stored when a later one fails. A number is an
// optional sign and decimal digits after optional white space; a value too
// large for 32 bits wraps the way the C library's conversion does. Nothing
// here fails on any input.

#ifndef CORVANE_SETTINGS_SETTING_SCAN_H_
#define CORVANE_SETTINGS_SETTING_SCAN_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace corvane {

struct ScoreRow;

// Longest inner list of a score row: a buffer of 260 characters with its
// terminator.
inline constexpr size_t kMaxInnerListChars = 259;

// "{%d,%d,%d,%d,%d,%f,%d,{%[^}]},{%[^}]}}": the seven numbers go into the row,
// the two inner lists into the texts. Result: fields converted, 0 to 9.
int ScanScoreRowFields(std::u16string_view piece, ScoreRow* lpRow, std::u16string* lpParamList,
                       std::u16string* lpReservedList);

// "%d,%d,%d,%d,%d,%d,%d,%d". Result: fields converted, 0 to 8; whatever
// follows the eighth number is not looked at.
int ScanReservedList(std::u16string_view list, std::array<int32_t, 8>* lpValues);

// "{%d,{%d,%d}}". Result: fields converted, 0 to 3.
int ScanSettingValue(std::u16string_view text, int32_t* lpFirst, int32_t* lpSecond, int32_t* lpThird);

// A decimal integer at the start of the text; 0 when there is none.
int32_t DecimalToInt(std::u16string_view text);

}  // namespace corvane

#endif  // CORVANE_SETTINGS_SETTING_SCAN_H_
