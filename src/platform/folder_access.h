// folder_access.h: keeps the data folder and its files usable by the person
// whose data they hold, whoever created them.
//
// GrantFolderAccess gives a user entry to the POSIX access list of a file or
// folder, keeping every other entry and replacing a former entry of that
// user; on a folder it writes the same as a default entry, so that files
// made in it later carry it too. The account "Users" that the system passes
// stands for the person whose home holds the data folder: the owner of the
// data folder's parent. When that person owns the object already, the owner
// entry gives every right and no named entry is added. An entry that an
// earlier version gave the shared group "users" is removed. A folder's
// default list, when it has none, is made from the owner's rights alone, so
// that what is made in the folder is private whatever the umask.
//
// The result is true when the lists were written; an account that does not
// resolve or a file system without access lists gives a debug line and
// false. Callers ignore the result.

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
