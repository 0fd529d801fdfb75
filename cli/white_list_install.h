// white_list_install.h: the sample white list that ships with the host.
//
// The component reads WhiteList.js from its data folder and never writes
// it. The host puts its sample there when the folder has none, so that a
// new user sees named sites from the first update. The sample is found
// beside the installed host (../share/corvane) or, in the build tree, in the
// source tree's data folder.

#ifndef CORVANE_CLI_WHITE_LIST_INSTALL_H_
#define CORVANE_CLI_WHITE_LIST_INSTALL_H_

#include <string>

namespace corvane::cli {

// The sample's path, or empty when neither place holds it.
std::string SampleWhiteListPath();
// Copies the sample into the data folder (which must exist) unless a
// WhiteList.js stands there. True when the data folder now holds one.
bool InstallSampleWhiteList();

}  // namespace corvane::cli

#endif  // CORVANE_CLI_WHITE_LIST_INSTALL_H_
