// data_folder.h: where the component keeps its files, and whether it can.
//
// The data folder is "CorvaneApp" in the application-data folder:
// $CORVANE_APPDATA, else $XDG_DATA_HOME, else $HOME/.local/share, the
// order the component documents. The host checks the folder before it
// creates the provider, so that a folder the component could not write
// gives one clear line instead of the component's own failures, and no
// file in it is touched.

#ifndef CORVANE_CLI_DATA_FOLDER_H_
#define CORVANE_CLI_DATA_FOLDER_H_

#include <string>

namespace corvane::cli {

// File names in the data folder, as the component documents them.
inline constexpr char kDatabaseFile[] = "CorvaneAppDB.db";
inline constexpr char kConfigFile[] = "DBConfig.ini";
inline constexpr char kSettingsFile[] = "Settings.ini";
inline constexpr char kWhiteListFile[] = "WhiteList.js";

// The data folder's path; empty when no application-data folder is known.
// Nothing is created.
std::string DataFolderPath();

// Creates the data folder when it is missing and checks that the component
// can write there: a folder, a file can be made in it, and the database,
// when there is one, opens for writing. False with one line naming the
// folder or file and the cause. Only a probe file of the host's own is
// made, and removed again. A new folder is made with mode 0700; an existing
// one whose folder or files give any right to other accounts sets
// *lpOpenToOthers (the component narrows them when it starts).
[[nodiscard]] bool PrepareDataFolder(std::string* lpError, bool* lpOpenToOthers);

}  // namespace corvane::cli

#endif  // CORVANE_CLI_DATA_FOLDER_H_
