// app_data.h: where the system keeps its per-user files.
//
// The application-data folder is $CORVANE_APPDATA when it is set and not
// empty, else $XDG_DATA_HOME, else $HOME/.local/share. The data folder is
// that plus "CorvaneApp"; the database, DBConfig.ini, the settings files and
// WhiteList.js lie directly in it.

#ifndef CORVANE_PLATFORM_APP_DATA_H_
#define CORVANE_PLATFORM_APP_DATA_H_

#include <string>

namespace corvane {

inline constexpr char16_t kDataFolderName[] = u"CorvaneApp";

// False when none of the variables names a folder; the folder itself is not
// created here.
bool GetAppDataFolder(std::u16string* lpPath);

// The data folder, created (mode 0700) with its parents when missing (a failure to create
// it is not reported: callers find out when they write). False only when
// there is no application-data folder.
bool GetDataFolder(std::u16string* lpPath);

}  // namespace corvane

#endif  // CORVANE_PLATFORM_APP_DATA_H_
