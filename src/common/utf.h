// utf.h: conversions between the UTF-16 text of the system and the UTF-8 of
// file names, the white-list file, INI files and SQL run through Exec.
// Invalid sequences become U+FFFD; nothing here fails.

#ifndef CORVANE_COMMON_UTF_H_
#define CORVANE_COMMON_UTF_H_

#include <string>
#include <string_view>

namespace corvane {

std::string ToUtf8(std::u16string_view text);
std::u16string FromUtf8(std::string_view text);

// For std::wregex, whose wchar_t is 32 bits wide on Linux.
std::wstring ToWide(std::u16string_view text);

// Length of a zero-terminated UTF-16 text; 0 for null.
size_t U16Length(const char16_t* text);

// A copy of a zero-terminated UTF-16 text; empty for null.
std::u16string U16(const char16_t* text);

}  // namespace corvane

#endif  // CORVANE_COMMON_UTF_H_
