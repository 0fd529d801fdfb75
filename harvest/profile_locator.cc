#include "harvest/profile_locator.h"

#include <json/json.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <vector>

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

Json::Value ReadJson(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  Json::Value root;
  Json::CharReaderBuilder builder;
  builder["stackLimit"] = 64;
  std::string errors;
  try {
    if (!in || !Json::parseFromStream(builder, in, &root, &errors)) return Json::Value();
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
  std::ifstream in(path);
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

std::string FirefoxProfileIn(const std::string& root) {
  // The default of an installation, from installs.ini or profiles.ini.
  for (const auto& [name, keys] : ReadIni(root + "/installs.ini")) {
    if (std::string path = InstallDefault(root, keys); !path.empty()) return path;
  }
  IniSections profiles = ReadIni(root + "/profiles.ini");
  for (const auto& [name, keys] : profiles) {
    if (name.rfind("Install", 0) != 0) continue;
    if (std::string path = InstallDefault(root, keys); !path.empty()) return path;
  }
  std::string first;
  for (const auto& [name, keys] : profiles) {
    if (name.rfind("Profile", 0) != 0 || keys.count("Path") == 0) continue;
    auto relative = keys.find("IsRelative");
    std::string path = ProfilePath(root, keys.at("Path"), relative == keys.end() || relative->second != "0");
    if (!Exists(path)) continue;
    auto isDefault = keys.find("Default");
    if (isDefault != keys.end() && isDefault->second == "1") return path;
    if (first.empty()) first = path;
  }
  return first;
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
  std::string legacy = home + "/.mozilla/firefox";
  const std::string kRoots[] = {legacy, ConfigHome() + "/mozilla/firefox", home + "/snap/firefox/common/.mozilla/firefox",
                                home + "/.var/app/org.mozilla.firefox/.mozilla/firefox"};
  for (const std::string& root : kRoots) {
    if (!Exists(root + "/profiles.ini")) continue;
    std::string profile = FirefoxProfileIn(root);
    if (!profile.empty() && Exists(profile + "/places.sqlite")) return profile;
  }
  return std::string();
}

}  // namespace corvane::harvest
