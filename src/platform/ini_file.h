// ini_file.h: profile files (INI) with the reading rules that the system's
// stored state and settings rely on.
//
// One section per "[name]" header line, "key=value" lines below it. Section
// and key names compare without regard to ASCII case, blanks around names and
// values are dropped, and one pair of matching quotes around a value is
// removed. Lines that are neither are kept as they stand and otherwise
// ignored, so a damaged file still yields the keys it holds. A missing file
// reads as defaults, and the first write creates it. Every write replaces the
// whole file atomically (temporary file, then rename), so a crash leaves the
// old file or the new one. Files are UTF-8.

#ifndef CORVANE_PLATFORM_INI_FILE_H_
#define CORVANE_PLATFORM_INI_FILE_H_

#include <cstddef>
#include <string>
#include <string_view>

namespace corvane {

// The value of the key, or the default when the file, the section or the key
// is missing. Like a fixed buffer of bufferChars characters with its
// terminator, the result holds at most bufferChars - 1 characters.
std::u16string ReadProfileString(std::u16string_view path, std::u16string_view section, std::u16string_view key,
                                 std::u16string_view defaultValue, size_t bufferChars);

// Sets the key to the value; a null value deletes the key. Line breaks in a
// value become blanks so that a value can never start a line of its own.
// False when the file could not be written; the old file then stands.
[[nodiscard]] bool WriteProfileString(std::u16string_view path, std::u16string_view section,
                                      std::u16string_view key, const std::u16string* value);

}  // namespace corvane

#endif  // CORVANE_PLATFORM_INI_FILE_H_
