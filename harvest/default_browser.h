// default_browser.h: the user's default web browser from the XDG
// mimeapps.list chain (x-scheme-handler/http), read without starting any
// process. Only browsers that this library reads are named; which ones,
// and their desktop files, the catalogue says (browser_catalog.h).

#ifndef CORVANE_HARVEST_DEFAULT_BROWSER_H_
#define CORVANE_HARVEST_DEFAULT_BROWSER_H_

#include <cstdint>
#include <string>
#include <vector>

namespace corvane::harvest {

// The mimeapps.list files in the order in which they are asked.
std::vector<std::string> MimeAppsFiles();

// The folders that hold the desktop files of installed applications.
std::vector<std::string> ApplicationFolders();

// The browser value of a desktop file name; 0 for one we don't read.
uint32_t BrowserOfDesktopFile(const std::string& desktopFile);

// The desktop file of the default browser by the rule below, whether we
// read that browser or not; empty when no file names an installed one.
std::string DefaultDesktopFile();

// One rule: the files are asked in order, and in the first file whose
// x-scheme-handler/http names an installed desktop file (one found in an
// application folder), the first installed entry is the default: its
// browser value, 0 for a browser we don't read. A file without the key or
// without an installed entry passes on to the next. When no file names an
// installed entry, 0: a name alone, with no desktop file behind it, says
// nothing about what runs here.
uint32_t DefaultBrowserFromMimeApps();

}  // namespace corvane::harvest

#endif  // CORVANE_HARVEST_DEFAULT_BROWSER_H_
