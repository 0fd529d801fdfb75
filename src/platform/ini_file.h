// ini_file.h: profile files (INI) with the reading rules that the system's
// stored state and settings rely on.
//
// One section per "[name]" header line, "key=value" lines below it. Section
// and key names compare without regard to ASCII case, blanks around names and
// values are dropped, and one pair of matching quotes around a value is
// removed. Lines that are neither are kept as they stand and otherwise
// ignored, so a damaged file still yields the keys it holds. Lines end in
// "\n", "\r\n" or a lone "\r"; a UTF-8 byte-order mark at the start is
// skipped. A missing file reads as defaults, and the first write creates it.
// Every write replaces the whole file atomically (a new file beside it, then
// rename), so a crash leaves the old file or the new one; the new file gets
// its permissions as any new file does (umask, the folder's default ACL).
// Files are UTF-8.

#ifndef CORVANE_PLATFORM_INI_FILE_H_
#define CORVANE_PLATFORM_INI_FILE_H_

#include <cstddef>
#include <string>
#include <string_view>

namespace corvane {

// The value of the key, or the default when the file, the section or the key
// is missing. Like a fixed buffer of bufferChars characters with its
// terminator, the result holds at most bufferChars - 1 characters, and ends
// at the first zero character. A file that can't be read reads as defaults.
std::u16string ReadProfileString(std::u16string_view path, std::u16string_view section, std::u16string_view key,
                                 std::u16string_view defaultValue, size_t bufferChars);

// Sets the key to the value; a null value deletes every line of the key in
// the section. Line breaks in a value become blanks so that a value can never
// start a line of its own. False when the file exists but can't be read, or
// could not be written; the old file then stands.
[[nodiscard]] bool WriteProfileString(std::u16string_view path, std::u16string_view section,
                                      std::u16string_view key, const std::u16string* value);

}  // namespace corvane

#endif  // CORVANE_PLATFORM_INI_FILE_H_
