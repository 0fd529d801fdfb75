#include "harvest/default_browser.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <sstream>

#include "common/debug_log.h"
#include "corvane/VisitHarvest.h"
#include "harvest/browser_catalog.h"
#include "harvest/small_file.h"

namespace corvane::harvest {
namespace {

std::string Env(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr ? value : "";
}

std::vector<std::string> Split(const std::string& text, char separator) {
  std::vector<std::string> parts;
  std::stringstream in(text);
  for (std::string part; std::getline(in, part, separator);) {
    if (!part.empty()) parts.push_back(part);
  }
  return parts;
}

std::string Lower(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
  return text;
}

// The value of x-scheme-handler/http in [Default Applications]; false when
// the file or the key is missing. A file that is there but can't be read as
// one (a FIFO, a device, a huge file) counts as missing, with a debug line.
bool ReadHttpHandler(const std::string& path, std::string* lpValue) {
  std::string text;
  SmallFileStatus status = ReadSmallFile(path, kMaxIniBytes, &text);
  if (status != SmallFileStatus::kRead) {
    if (status != SmallFileStatus::kMissing) {
      DebugLog("harvest: %s skipped: %s\n", path.c_str(), SmallFileStatusText(status));
    }
    return false;
  }
  std::istringstream in(text);
  bool inDefaults = false;
  for (std::string line; std::getline(in, line);) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (!line.empty() && line.front() == '[') {
      inDefaults = line == "[Default Applications]";
      continue;
    }
    if (inDefaults && line.rfind("x-scheme-handler/http=", 0) == 0) {
      *lpValue = line.substr(std::string("x-scheme-handler/http=").size());
      return true;
    }
  }
  return false;
}

bool IsInstalled(const std::string& desktopFile, const std::vector<std::string>& folders) {
  if (desktopFile.find('/') != std::string::npos) return false;
  std::error_code error;
  for (const std::string& folder : folders) {
    if (std::filesystem::is_regular_file(folder + "/" + desktopFile, error)) return true;
  }
  return false;
}

}  // namespace

std::vector<std::string> MimeAppsFiles() {
  std::string home = Env("HOME");
  std::string configHome = Env("XDG_CONFIG_HOME");
  if (configHome.empty()) configHome = home + "/.config";
  std::string configDirs = Env("XDG_CONFIG_DIRS");
  if (configDirs.empty()) configDirs = "/etc/xdg";
  std::vector<std::string> desktops = Split(Lower(Env("XDG_CURRENT_DESKTOP")), ':');
  std::vector<std::string> files;
  std::vector<std::string> configFolders = {configHome};
  for (const std::string& folder : Split(configDirs, ':')) configFolders.push_back(folder);
  for (const std::string& folder : configFolders) {
    for (const std::string& desktop : desktops) files.push_back(folder + "/" + desktop + "-mimeapps.list");
    files.push_back(folder + "/mimeapps.list");
  }
  for (const std::string& folder : ApplicationFolders()) files.push_back(folder + "/mimeapps.list");
  return files;
}

std::vector<std::string> ApplicationFolders() {
  std::string dataHome = Env("XDG_DATA_HOME");
  if (dataHome.empty()) dataHome = Env("HOME") + "/.local/share";
  std::string dataDirs = Env("XDG_DATA_DIRS");
  if (dataDirs.empty()) dataDirs = "/usr/local/share:/usr/share";
  std::vector<std::string> folders = {dataHome + "/applications"};
  for (const std::string& folder : Split(dataDirs, ':')) folders.push_back(folder + "/applications");
  return folders;
}

uint32_t BrowserOfDesktopFile(const std::string& desktopFile) {
  const std::vector<std::string> products = ProductsOfDesktopFile(desktopFile);
  const Product* product = products.empty() ? nullptr : FindProduct(products.front());
  return product != nullptr ? FamilyValue(product->family) : BROWSER_NONE;
}

std::string DefaultDesktopFile() {
  std::vector<std::string> applications = ApplicationFolders();
  for (const std::string& file : MimeAppsFiles()) {
    std::string value;
    if (!ReadHttpHandler(file, &value)) continue;
    // The first installed entry is the default, whether we read it or not;
    // a list with no installed entry passes on to the next file.
    for (const std::string& desktop : Split(value, ';')) {
      if (IsInstalled(desktop, applications)) return desktop;
    }
  }
  return std::string();
}

uint32_t DefaultBrowserFromMimeApps() {
  const std::string desktop = DefaultDesktopFile();
  if (desktop.empty()) {
    DebugLog("harvest: no mimeapps.list names an installed browser for x-scheme-handler/http\n");
    return BROWSER_NONE;
  }
  const uint32_t browser = BrowserOfDesktopFile(desktop);
  if (browser == BROWSER_NONE) DebugLog("harvest: the default browser %s is none we read\n", desktop.c_str());
  return browser;
}

}  // namespace corvane::harvest
