// data_folder_rights.h: the data folder and its files are their owner's
// alone, as a browser keeps its profile.
//
// The folder holds the person's browsing history, their pins and hides. It
// is made with mode 0700; on every start the folder, every file directly in
// it and the folder's default list lose whatever rights the owning group and
// other accounts had, and an entry that an earlier version gave the shared
// group "users" is removed. Then each gets the entry of the person whose
// home holds the folder (GrantFolderAccess), so that a folder that root made
// for a person stays theirs. Files made later inherit the folder's default
// list: private whatever the umask of the host.

#ifndef CORVANE_PLATFORM_DATA_FOLDER_RIGHTS_H_
#define CORVANE_PLATFORM_DATA_FOLDER_RIGHTS_H_

#include <string_view>

namespace corvane {

// Creates the folder with mode 0700 and any missing parents as usual; true
// when it is a folder afterwards.
bool CreatePrivateFolder(std::u16string_view path);

// Narrows the folder and its files as above and gives the person their
// entry. Returns how many of them were open to other accounts before; a
// debug line names the folder when any was.
int KeepDataFolderPrivate(std::u16string_view folder);

}  // namespace corvane

#endif  // CORVANE_PLATFORM_DATA_FOLDER_RIGHTS_H_
