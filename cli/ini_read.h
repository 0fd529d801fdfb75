// ini_read.h: one value of an INI file of the data folder, read-only.
//
// The component writes its INI files as UTF-8: "[section]" header lines and
// "key=value" lines below them. Section and key names compare without
// regard to ASCII case, blanks around names and values are dropped, and one
// pair of matching quotes around a value is removed. The host reads them
// that way and never writes them.

#ifndef CORVANE_CLI_INI_READ_H_
#define CORVANE_CLI_INI_READ_H_

#include <string>
#include <string_view>
#include <vector>

namespace corvane::cli {

// True with the value when the file holds the key in the section; the
// first one counts. False when the file, the section or the key is missing.
[[nodiscard]] bool ReadIniValue(const std::string& path, std::string_view section, std::string_view key,
                                std::string* lpValue);

// The keys of a section, in file order, each once.
std::vector<std::string> ReadIniKeys(const std::string& path, std::string_view section);

}  // namespace corvane::cli

#endif  // CORVANE_CLI_INI_READ_H_
