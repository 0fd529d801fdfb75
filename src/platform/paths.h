// paths.h: file and folder steps on UTF-16 paths.
//
// The system keeps paths as UTF-16 text; the file system takes UTF-8. These
// are the few operations the system needs, each reporting success as a bool
// and never throwing.

#ifndef CORVANE_PLATFORM_PATHS_H_
#define CORVANE_PLATFORM_PATHS_H_

#include <filesystem>
#include <string>
#include <string_view>

namespace corvane {

std::filesystem::path ToFsPath(std::u16string_view path);

// base + "/" + more, with exactly one separator between them.
std::u16string PathJoin(std::u16string_view base, std::u16string_view more);

// Adds ".ini"-style extension unless the last element already has one.
std::u16string PathAddExtension(std::u16string_view path, std::u16string_view extension);

bool PathFileExists(std::u16string_view path);

// Creates the folder and any missing parents; true when it exists afterwards.
bool CreateDirectories(std::u16string_view path);

// Removes a file; true when it is gone afterwards.
bool DeleteFileAt(std::u16string_view path);

}  // namespace corvane

#endif  // CORVANE_PLATFORM_PATHS_H_
