#include "harvest/profile_locator.h"

#include <json/json.h>

#include <cstdlib>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <sstream>
#include <vector>

#include "common/debug_log.h"
#include "harvest/small_file.h"

namespace corvane::harvest {
namespace {

namespace fs = std::filesystem;

std::string Env(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr ? value : "";
}

std::string Home() { return Env("HOME"); }

std::string ConfigHome() {
  std::string config = Env("XDG_CONFIG_HOME");
  return config.empty() ? Home() + "/.config" : config;
}

bool Exists(const std::string& path) {
  std::error_code error;
  return !path.empty() && fs::exists(path, error);
}

std::vector<std::string> ChromiumUserDataFolders() {
  std::string home = Home();
  std::string config = ConfigHome();
  std::vector<std::string> folders;
  std::string chromeConfig = Env("CHROME_CONFIG_HOME");
  if (!chromeConfig.empty()) folders.push_back(chromeConfig + "/google-chrome");
  for (const char* name : {"google-chrome", "google-chrome-beta", "google-chrome-unstable", "chromium"}) {
    folders.push_back(config + "/" + name);
  }
  folders.push_back(home + "/.var/app/com.google.Chrome/config/google-chrome");
  folders.push_back(home + "/snap/chromium/common/chromium");
  folders.push_back(home + "/.var/app/org.chromium.Chromium/config/chromium");
  return folders;
}

// A small file's text; empty, with a debug line when the file is there,
// when it can't be read as one.
std::string ReadText(const std::string& path, size_t maxBytes) {
  std::string text;
  SmallFileStatus status = ReadSmallFile(path, maxBytes, &text);
  if (status != SmallFileStatus::kRead && status != SmallFileStatus::kMissing) {
    DebugLog("harvest: %s skipped: %s\n", path.c_str(), SmallFileStatusText(status));
  }
  return text;
}

Json::Value ReadJson(const std::string& path) {
  std::string text = ReadText(path, kMaxLocalStateBytes);
  Json::Value root;
  if (text.empty()) return root;
  Json::CharReaderBuilder builder;
  builder["stackLimit"] = 64;
  std::string errors;
  try {
    std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    if (!reader->parse(text.data(), text.data() + text.size(), &root, &errors)) return Json::Value();
  } catch (const std::exception&) {
    return Json::Value();
  }
  return root;
}

// The profile of a user-data folder that was used last.
std::string LastUsedProfile(const std::string& userData) {
  Json::Value state = ReadJson(userData + "/Local State");
  const Json::Value& profile = state.isObject() ? state["profile"] : Json::Value::nullSingleton();
  auto usable = [&](const std::string& name) {
    return !name.empty() && name != "Guest Profile" && name != "System Profile" && Exists(userData + "/" + name);
  };
  if (profile.isObject() && profile["last_used"].isString() && usable(profile["last_used"].asString())) {
    return userData + "/" + profile["last_used"].asString();
  }
  std::string best;
  double bestTime = -1;
  const Json::Value& cache = profile.isObject() ? profile["info_cache"] : Json::Value::nullSingleton();
  if (cache.isObject()) {
    for (const std::string& name : cache.getMemberNames()) {
      const Json::Value& active = cache[name]["active_time"];
      double time = active.isNumeric() ? active.asDouble() : 0;
      if (usable(name) && time > bestTime) {
        best = name;
        bestTime = time;
      }
    }
  }
  if (!best.empty()) return userData + "/" + best;
  return usable("Default") ? userData + "/Default" : std::string();
}

// Sections of an INI file: name to key-value pairs, in file order.
using IniSections = std::vector<std::pair<std::string, std::map<std::string, std::string>>>;

IniSections ReadIni(const std::string& path) {
  IniSections sections;
  std::istringstream in(ReadText(path, kMaxIniBytes));
  for (std::string line; std::getline(in, line);) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (line.size() >= 2 && line.front() == '[' && line.back() == ']') {
      sections.emplace_back(line.substr(1, line.size() - 2), std::map<std::string, std::string>());
    } else if (size_t equals = line.find('='); equals != std::string::npos && !sections.empty()) {
      sections.back().second[line.substr(0, equals)] = line.substr(equals + 1);
    }
  }
  return sections;
}

std::string ProfilePath(const std::string& root, const std::string& path, bool relative) {
  return relative ? root + "/" + path : path;
}

// An installation's default names its profile relative to the root, or as
// a full path.
std::string InstallDefault(const std::string& root, const std::map<std::string, std::string>& keys) {
  auto found = keys.find("Default");
  if (found == keys.end() || found->second.empty()) return std::string();
  std::string path = ProfilePath(root, found->second, found->second.front() != '/');
  return Exists(path) ? path : std::string();
}

// The profiles a root offers: the default of each installation, from
// installs.ini and profiles.ini; when no installation names one that is
// there, the profile marked Default=1, else the first.
std::vector<std::string> FirefoxCandidatesIn(const std::string& root) {
  std::vector<std::string> candidates;
  for (const auto& [name, keys] : ReadIni(root + "/installs.ini")) {
    if (std::string path = InstallDefault(root, keys); !path.empty()) candidates.push_back(path);
  }
  IniSections profiles = ReadIni(root + "/profiles.ini");
  for (const auto& [name, keys] : profiles) {
    if (name.rfind("Install", 0) != 0) continue;
    if (std::string path = InstallDefault(root, keys); !path.empty()) candidates.push_back(path);
  }
  if (!candidates.empty()) return candidates;
  std::string first;
  for (const auto& [name, keys] : profiles) {
    if (name.rfind("Profile", 0) != 0 || keys.count("Path") == 0) continue;
    auto relative = keys.find("IsRelative");
    std::string path = ProfilePath(root, keys.at("Path"), relative == keys.end() || relative->second != "0");
    if (!Exists(path)) continue;
    auto isDefault = keys.find("Default");
    if (isDefault != keys.end() && isDefault->second == "1") return {path};
    if (first.empty()) first = path;
  }
  if (!first.empty()) candidates.push_back(first);
  return candidates;
}

// When a profile's history was written last: places.sqlite, or the
// write-ahead log beside it when that is newer (the browser writes there
// first). Nothing for a profile without places.sqlite.
std::optional<fs::file_time_type> PlacesWritten(const std::string& profile) {
  std::error_code error;
  std::string places = profile + "/places.sqlite";
  if (!fs::exists(places, error)) return std::nullopt;
  fs::file_time_type written = fs::last_write_time(places, error);
  if (error) written = fs::file_time_type::min();
  fs::file_time_type log = fs::last_write_time(places + "-wal", error);
  if (!error && log > written) written = log;
  return written;
}

}  // namespace

std::string FindChromiumProfile() {
  std::string best;
  fs::file_time_type bestTime = fs::file_time_type::min();
  for (const std::string& userData : ChromiumUserDataFolders()) {
    std::string profile = LastUsedProfile(userData);
    std::error_code error;
    if (profile.empty() || !fs::exists(profile + "/History", error)) continue;
    fs::file_time_type written = fs::last_write_time(profile + "/History", error);
    if (best.empty() || (!error && written > bestTime)) {
      best = profile;
      bestTime = written;
    }
  }
  return best;
}

std::string FindFirefoxProfile() {
  std::string home = Home();
  const std::string kRoots[] = {home + "/.mozilla/firefox", ConfigHome() + "/mozilla/firefox",
                                home + "/snap/firefox/common/.mozilla/firefox",
                                home + "/.var/app/org.mozilla.firefox/.mozilla/firefox"};
  // Every installation (a distribution's package, a snap, a flatpak, ESR
  // beside the release) has its own default profile; the one used last is
  // the one whose history was written last. On a tie the earlier root and
  // installation win.
  std::string best;
  fs::file_time_type bestTime = fs::file_time_type::min();
  for (const std::string& root : kRoots) {
    if (!Exists(root + "/profiles.ini")) continue;
    for (const std::string& profile : FirefoxCandidatesIn(root)) {
      std::optional<fs::file_time_type> written = PlacesWritten(profile);
      if (!written || (!best.empty() && *written <= bestTime)) continue;
      best = profile;
      bestTime = *written;
    }
  }
  return best;
}

}  // namespace corvane::harvest
