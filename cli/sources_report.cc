#include "cli/sources_report.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <sstream>

#include "cli/output.h"
#include "corvane/VisitHarvest.h"
#include "harvest/default_browser.h"
#include "harvest/item_store.h"
#include "harvest/profile_readers.h"
#include "harvest/sources.h"

namespace corvane::cli {
namespace {

using harvest::BrowserProfile;
using harvest::Family;

long Count(const BrowserProfile& profile, uint32_t kind) {
  harvest::ItemStore store;
  store.StartSource(harvest::FamilyValue(profile.product->family));
  const bool chromium = profile.product->family == Family::kChromium;
  const bool read = kind == EXTRACT_HISTORY
                        ? (chromium ? harvest::ReadChromiumHistory(profile.folder, &store)
                                    : harvest::ReadFirefoxHistory(profile.folder, &store))
                        : (chromium ? harvest::ReadChromiumBookmarks(profile.folder, &store)
                                    : harvest::ReadFirefoxBookmarks(profile.folder, &store));
  if (read) return static_cast<long>(store.Size());
  // A profile that never kept a bookmark has no Bookmarks file.
  std::error_code error;
  return kind == EXTRACT_FAVORITES && chromium && !std::filesystem::exists(profile.folder + "/Bookmarks", error) ? 0 : -1;
}

// The profiles an update reads: those chosen for the default browser's
// family when they give visits, else those of the first family, in the
// component's order, that does; as the component falls back.
std::vector<const BrowserProfile*> ReadByUpdate(const std::vector<BrowserProfile>& profiles,
                                                const harvest::SourceChoice& choice,
                                                const std::vector<std::string>& defaultProducts,
                                                const std::vector<ProfileRow>& rows,
                                                std::vector<std::string>* lpProblems) {
  std::vector<Family> order = {Family::kChromium, Family::kFirefox};
  Family first;
  if (harvest::FamilyOfValue(harvest::DefaultBrowserFromMimeApps(), &first) && first == Family::kFirefox) {
    order = {Family::kFirefox, Family::kChromium};
  }
  for (Family family : order) {
    std::vector<std::string> problems;
    std::vector<const BrowserProfile*> chosen = harvest::ChosenProfiles(choice, profiles, family, defaultProducts, &problems);
    if (lpProblems->empty()) *lpProblems = problems;
    for (const BrowserProfile* profile : chosen) {
      if (rows[static_cast<size_t>(profile - profiles.data())].visits > 0) return chosen;
    }
  }
  return {};
}

std::string WhyNotRead(const BrowserProfile& profile, const ProfileRow& row, const harvest::SourceChoice& choice) {
  if (row.visits < 0) return "its history can't be read (damaged, locked or missing)";
  if (!choice.names.empty() || choice.all) return "not named in Harvest.ini";
  if (!profile.usedLast) return std::string("not the profile ") + profile.product->name + " used last";
  return "Harvest.ini reads the default browser's profile only";
}

}  // namespace

SourcesReport BuildSourcesReport() {
  SourcesReport report;
  report.harvestIni = harvest::HarvestIniPath();
  const harvest::SourceChoice choice = harvest::ReadSourceChoice();
  report.choice = choice.all ? "all" : choice.names.empty() ? "default" : "";
  for (const std::string& name : choice.names) report.choice += (report.choice.empty() ? "" : ", ") + name;
  report.defaultBrowser = harvest::DefaultDesktopFile();
  const std::vector<BrowserProfile> profiles = harvest::FindProfiles();
  for (const BrowserProfile& profile : profiles) {
    report.profiles.push_back(ProfileRow{profile.SourceName(), profile.product->name, profile.label, profile.folder,
                                         Count(profile, EXTRACT_HISTORY), Count(profile, EXTRACT_FAVORITES), false, ""});
  }
  for (const harvest::Product& product : harvest::Products()) {
    const std::string folder = harvest::ProductFolder(product);
    std::error_code error;
    bool any = false;
    for (const BrowserProfile& profile : profiles) any = any || profile.product == &product;
    if (!any && !folder.empty() && std::filesystem::is_directory(folder, error)) report.emptyFolders.push_back(folder);
  }
  const std::vector<const BrowserProfile*> read = ReadByUpdate(
      profiles, choice, harvest::ProductsOfDesktopFile(report.defaultBrowser), report.profiles, &report.problems);
  for (size_t i = 0; i < profiles.size(); ++i) {
    ProfileRow& row = report.profiles[i];
    row.read = std::find(read.begin(), read.end(), &profiles[i]) != read.end();
    row.why = row.read ? (report.choice == "default" ? "the default" : "chosen in Harvest.ini")
                       : WhyNotRead(profiles[i], row, choice);
  }
  return report;
}

Json::Value ToJson(const SourcesReport& report) {
  Json::Value document(Json::objectValue);
  document["harvestIni"] = report.harvestIni;
  document["read"] = report.choice;
  document["defaultBrowser"] = report.defaultBrowser;
  document["problems"] = Json::Value(Json::arrayValue);
  for (const std::string& problem : report.problems) document["problems"].append(problem);
  document["profiles"] = Json::Value(Json::arrayValue);
  for (const ProfileRow& row : report.profiles) {
    Json::Value profile(Json::objectValue);
    profile["name"] = row.source;
    profile["browser"] = row.browser;
    profile["label"] = row.label;
    profile["folder"] = row.folder;
    profile["visits"] = static_cast<Json::Int64>(row.visits);
    profile["bookmarks"] = static_cast<Json::Int64>(row.bookmarks);
    profile["read"] = row.read;
    profile["why"] = row.why;
    document["profiles"].append(profile);
  }
  document["emptyFolders"] = Json::Value(Json::arrayValue);
  for (const std::string& folder : report.emptyFolders) document["emptyFolders"].append(folder);
  return document;
}

void PrintSourcesReport(const SourcesReport& report, std::FILE* out) {
  TextTable table({"NAME", "BROWSER", "VISITS", "BOOKMARKS", "READ", "FOLDER"});
  auto number = [](long value) { return value < 0 ? std::string("-") : std::to_string(value); };
  for (const ProfileRow& row : report.profiles) {
    table.AddRow({row.source, row.browser + (row.label != row.source.substr(row.source.find(':') + 1) ? " (" + row.label + ")" : ""),
                  number(row.visits), number(row.bookmarks), row.read ? "yes: " + row.why : "no: " + row.why,
                  row.folder});
  }
  table.Print(out);
  for (const std::string& folder : report.emptyFolders) std::fprintf(out, "No profile yet in %s\n", folder.c_str());
  std::fprintf(out, "Sources: %s (%s)\n", report.choice.c_str(), report.harvestIni.c_str());
  for (const std::string& problem : report.problems) std::fprintf(out, "Harvest.ini: %s: passed over\n", problem.c_str());
}

namespace {

// The browser programs on the PATH, by the names their packages install.
std::string InstalledPrograms() {
  static const char* const kPrograms[] = {"google-chrome", "chromium", "brave-browser", "microsoft-edge", "vivaldi",
                                          "opera", "firefox", "firefox-esr", "librewolf", "waterfox"};
  const char* path = std::getenv("PATH");
  std::string found;
  for (const char* program : kPrograms) {
    std::istringstream folders(path != nullptr ? path : "");
    for (std::string folder; std::getline(folders, folder, ':');) {
      if (folder.empty() || access((folder + "/" + program).c_str(), X_OK) != 0) continue;
      found += (found.empty() ? "" : ", ") + std::string(program);
      break;
    }
  }
  return found;
}

}  // namespace

std::string NothingFoundMessage(const SourcesReport& report) {
  const char* home = std::getenv("HOME");
  if (!report.emptyFolders.empty()) {
    return "a browser is installed (" + report.emptyFolders.front() + ") but has no profile with a history yet";
  }
  std::string message = std::string("no browser profile found under ") + (home != nullptr ? home : "$HOME") +
                        ": looked for Chrome, Chromium, Brave, Edge, Vivaldi, Opera, Firefox, LibreWolf and Waterfox "
                        "in ~/.config, ~/.mozilla, ~/.librewolf, ~/.waterfox, ~/snap and ~/.var/app";
  const std::string installed = InstalledPrograms();
  if (!installed.empty()) message += "; installed but never started here: " + installed;
  return message;
}

std::string LastReadText() {
  std::string text;
  for (const auto& [name, count] : harvest::LastRead(EXTRACT_HISTORY)) {
    text += (text.empty() ? "" : ", ") + std::to_string(count) + (text.empty() ? " visits from " : " from ") + name;
  }
  return text;
}

Json::Value LastReadJson() {
  Json::Value sources(Json::arrayValue);
  for (const auto& [name, count] : harvest::LastRead(EXTRACT_HISTORY)) {
    Json::Value source(Json::objectValue);
    source["name"] = name;
    source["visits"] = count;
    sources.append(source);
  }
  return sources;
}

}  // namespace corvane::cli
