#include "harvest/profile_locator.h"

#include <json/json.h>

#include <cstdlib>
#include <filesystem>
#include <algorithm>
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

bool Exists(const std::string& path) {
  std::error_code error;
  return !path.empty() && fs::exists(path, error);
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

std::optional<fs::file_time_type> HistoryWritten(const BrowserProfile& profile) {
  if (profile.product->family == Family::kFirefox) return PlacesWritten(profile.folder);
  std::error_code error;
  fs::file_time_type written = fs::last_write_time(profile.folder + "/History", error);
  if (error) return std::nullopt;
  return written;
}

bool IsSkippedProfile(const std::string& name) { return name == "Guest Profile" || name == "System Profile"; }

// The folder names of a user-data folder's profiles: those Local State
// lists, then any other folder with a History, each once.
std::vector<std::string> ChromiumProfileNames(const std::string& userData, const Json::Value& cache) {
  std::vector<std::string> names;
  auto add = [&](const std::string& name) {
    if (name.empty() || IsSkippedProfile(name) || std::find(names.begin(), names.end(), name) != names.end()) return;
    if (Exists(userData + "/" + name)) names.push_back(name);
  };
  if (cache.isObject()) {
    for (const std::string& name : cache.getMemberNames()) add(name);
  }
  std::error_code error;
  std::vector<std::string> found;
  for (const fs::directory_entry& entry : fs::directory_iterator(userData, error)) {
    if (entry.is_directory(error) && Exists(entry.path().string() + "/History")) found.push_back(entry.path().filename());
  }
  std::sort(found.begin(), found.end());
  for (const std::string& name : found) add(name);
  return names;
}

// The profile used last: the one Local State names, else the most
// recently active, else "Default".
std::string ChromiumUsedLast(const Json::Value& profile, const std::vector<std::string>& names) {
  auto listed = [&](const std::string& name) { return std::find(names.begin(), names.end(), name) != names.end(); };
  if (profile.isObject() && profile["last_used"].isString() && listed(profile["last_used"].asString())) {
    return profile["last_used"].asString();
  }
  std::string best;
  double bestTime = -1;
  const Json::Value& cache = profile.isObject() ? profile["info_cache"] : Json::Value::nullSingleton();
  for (const std::string& name : names) {
    const Json::Value& active = cache.isObject() ? cache[name]["active_time"] : Json::Value::nullSingleton();
    const double time = active.isNumeric() ? active.asDouble() : 0;
    if (cache.isObject() && cache.isMember(name) && time > bestTime) {
      best = name;
      bestTime = time;
    }
  }
  if (!best.empty()) return best;
  return listed("Default") ? "Default" : std::string();
}

void AddChromiumProfiles(const Product& product, const std::string& userData, std::vector<BrowserProfile>* lpOut) {
  if (product.profileIsUserData) {
    if (Exists(userData + "/History") || Exists(userData + "/Bookmarks")) {
      lpOut->push_back(BrowserProfile{&product, userData, "Default", "Default", true});
    }
    return;
  }
  const Json::Value state = ReadJson(userData + "/Local State");
  const Json::Value& profile = state.isObject() ? state["profile"] : Json::Value::nullSingleton();
  const Json::Value& cache = profile.isObject() ? profile["info_cache"] : Json::Value::nullSingleton();
  const std::vector<std::string> names = ChromiumProfileNames(userData, cache);
  const std::string usedLast = ChromiumUsedLast(profile, names);
  for (const std::string& name : names) {
    const Json::Value& label = cache.isObject() ? cache[name]["name"] : Json::Value::nullSingleton();
    lpOut->push_back(
        BrowserProfile{&product, userData + "/" + name, name, label.isString() ? label.asString() : name, name == usedLast});
  }
}

// The defaults of a root's installations, in file order.
std::vector<std::string> InstallDefaults(const std::string& root, const IniSections& profiles) {
  std::vector<std::string> defaults;
  for (const auto& [name, keys] : ReadIni(root + "/installs.ini")) {
    if (std::string path = InstallDefault(root, keys); !path.empty()) defaults.push_back(path);
  }
  for (const auto& [name, keys] : profiles) {
    if (name.rfind("Install", 0) != 0) continue;
    if (std::string path = InstallDefault(root, keys); !path.empty()) defaults.push_back(path);
  }
  return defaults;
}

std::string FirefoxUsedLast(const std::vector<std::string>& defaults, const std::vector<BrowserProfile>& profiles,
                            const std::string& markedDefault) {
  std::string best;
  fs::file_time_type bestTime = fs::file_time_type::min();
  for (const std::string& path : defaults) {
    std::optional<fs::file_time_type> written = PlacesWritten(path);
    if (!written || (!best.empty() && *written <= bestTime)) continue;
    best = path;
    bestTime = *written;
  }
  if (!best.empty()) return best;
  if (!markedDefault.empty()) return markedDefault;
  return profiles.empty() ? std::string() : profiles.front().folder;
}

void AddFirefoxProfiles(const Product& product, const std::string& root, std::vector<BrowserProfile>* lpOut) {
  const IniSections sections = ReadIni(root + "/profiles.ini");
  std::vector<BrowserProfile> profiles;
  std::string markedDefault;
  for (const auto& [section, keys] : sections) {
    if (section.rfind("Profile", 0) != 0 || keys.count("Path") == 0) continue;
    auto relative = keys.find("IsRelative");
    const std::string path = ProfilePath(root, keys.at("Path"), relative == keys.end() || relative->second != "0");
    if (!Exists(path)) continue;
    auto named = keys.find("Name");
    std::string name = named != keys.end() && !named->second.empty() ? named->second : fs::path(path).filename().string();
    // Two profiles of one name: the second is named by its folder.
    for (const BrowserProfile& other : profiles) {
      if (other.name == name) name = fs::path(path).filename().string();
    }
    auto isDefault = keys.find("Default");
    if (markedDefault.empty() && isDefault != keys.end() && isDefault->second == "1") markedDefault = path;
    profiles.push_back(BrowserProfile{&product, path, name, name, false});
  }
  // An installation's default is a profile even where profiles.ini does
  // not list it.
  const std::vector<std::string> defaults = InstallDefaults(root, sections);
  for (const std::string& path : defaults) {
    if (std::none_of(profiles.begin(), profiles.end(), [&](const BrowserProfile& p) { return p.folder == path; })) {
      const std::string name = fs::path(path).filename().string();
      profiles.push_back(BrowserProfile{&product, path, name, name, false});
    }
  }
  const std::string usedLast = FirefoxUsedLast(defaults, profiles, markedDefault);
  for (BrowserProfile& profile : profiles) {
    profile.usedLast = profile.folder == usedLast;
    lpOut->push_back(std::move(profile));
  }
}

}  // namespace

std::string BrowserProfile::HistoryFile() const {
  return folder + (product->family == Family::kChromium ? "/History" : "/places.sqlite");
}

std::vector<BrowserProfile> FindProfiles() {
  std::vector<BrowserProfile> profiles;
  for (const Product& product : Products()) {
    const std::string folder = ProductFolder(product);
    if (folder.empty() || !Exists(folder)) continue;
    if (product.family == Family::kChromium) {
      AddChromiumProfiles(product, folder, &profiles);
    } else if (Exists(folder + "/profiles.ini")) {
      AddFirefoxProfiles(product, folder, &profiles);
    }
  }
  return profiles;
}

const BrowserProfile* DefaultProfile(const std::vector<BrowserProfile>& profiles, Family family,
                                     const std::vector<std::string>& defaultProducts) {
  for (const std::string& id : defaultProducts) {
    for (const BrowserProfile& profile : profiles) {
      if (profile.usedLast && profile.product->id == id && profile.product->family == family &&
          HistoryWritten(profile)) {
        return &profile;
      }
    }
  }
  // On a tie the product earlier in the catalogue wins.
  const BrowserProfile* best = nullptr;
  fs::file_time_type bestTime = fs::file_time_type::min();
  for (const BrowserProfile& profile : profiles) {
    if (!profile.usedLast || profile.product->family != family) continue;
    std::optional<fs::file_time_type> written = HistoryWritten(profile);
    if (!written || (best != nullptr && *written <= bestTime)) continue;
    best = &profile;
    bestTime = *written;
  }
  return best;
}

}  // namespace corvane::harvest
