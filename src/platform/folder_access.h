// folder_access.h: keeps the data folder and its files writable for every
// user of the machine.
//
// GrantFolderAccess adds an allow entry for the group named by the account
// ("Users" becomes the group "users") to the POSIX access list of a file or
// folder, keeping all other entries; on a folder it adds the same as a
// default entry, so that new files inherit it. The result is true when the
// list was written; a group that does not resolve or a file system without
// access lists gives a debug line and false. Callers ignore the result.

#ifndef CORVANE_PLATFORM_FOLDER_ACCESS_H_
#define CORVANE_PLATFORM_FOLDER_ACCESS_H_

#include <cstdint>
#include <string_view>

namespace corvane {

// The account and mask that the system always passes.
inline constexpr char16_t kUsersAccount[] = u"Users";
inline constexpr uint32_t kGenericAll = 0x10000000;

bool GrantFolderAccess(std::u16string_view path, std::u16string_view account, uint32_t mask);

}  // namespace corvane

#endif  // CORVANE_PLATFORM_FOLDER_ACCESS_H_
