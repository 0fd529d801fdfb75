#include "harvest/sources.h"

#include <algorithm>
#include <set>

#include "common/text_util.h"
#include "common/utf.h"
#include "corvane/VisitHarvest.h"
#include "platform/app_data.h"
#include "platform/ini_file.h"
#include "platform/paths.h"

namespace corvane::harvest {
namespace {

constexpr char16_t kHarvestIni[] = u"Harvest.ini";
constexpr char16_t kSources[] = u"Sources";
constexpr char16_t kRead[] = u"Read";
constexpr char16_t kLastRead[] = u"LastRead";
// Room for a few dozen profiles.
constexpr size_t kValueChars = 8192;

std::string Trim(const std::string& text) {
  const size_t begin = text.find_first_not_of(" \t");
  if (begin == std::string::npos) return std::string();
  return text.substr(begin, text.find_last_not_of(" \t") - begin + 1);
}

std::vector<std::string> Split(const std::string& text, char separator) {
  std::vector<std::string> parts;
  size_t start = 0;
  while (start <= text.size()) {
    size_t end = text.find(separator, start);
    if (end == std::string::npos) end = text.size();
    parts.push_back(text.substr(start, end - start));
    start = end + 1;
  }
  return parts;
}

const char16_t* KindKey(uint32_t kind) { return kind == EXTRACT_HISTORY ? u"History" : u"Favorites"; }

}  // namespace

std::string HarvestIniPath() {
  std::u16string appData;
  if (!GetAppDataFolder(&appData)) return std::string();
  return ToUtf8(PathJoin(PathJoin(appData, kDataFolderName), kHarvestIni));
}

SourceChoice ParseSourceChoice(const std::string& value) {
  SourceChoice choice;
  choice.withDefault = false;
  for (const std::string& part : Split(value, ',')) {
    const std::string entry = Trim(part);
    if (entry.empty()) continue;
    if (AsciiEqualsIgnoreCase(FromUtf8(entry), u"default")) {
      choice.withDefault = true;
    } else if (AsciiEqualsIgnoreCase(FromUtf8(entry), u"all")) {
      choice.all = true;
    } else if (entry.find(':') == std::string::npos || entry.front() == ':' || entry.back() == ':') {
      choice.problems.push_back("'" + entry + "' is no browser:profile name");
    } else if (FindProduct(entry.substr(0, entry.find(':'))) == nullptr) {
      choice.problems.push_back("'" + entry + "' names no browser this library reads");
    } else {
      choice.names.push_back(entry);
    }
  }
  if (!choice.all && choice.names.empty()) choice.withDefault = true;
  return choice;
}

SourceChoice ReadSourceChoice() {
  const std::string path = HarvestIniPath();
  if (path.empty()) return SourceChoice();
  return ParseSourceChoice(ToUtf8(ReadProfileString(FromUtf8(path), kSources, kRead, u"default", kValueChars)));
}

bool WriteSourceChoice(const std::string& value, std::string* lpError) {
  std::u16string folder;
  const std::string path = HarvestIniPath();
  const std::u16string text = FromUtf8(value);
  if (path.empty() || !GetDataFolder(&folder) || !WriteProfileString(FromUtf8(path), kSources, kRead, &text)) {
    *lpError = "can't write " + (path.empty() ? std::string("Harvest.ini: no data folder") : path);
    return false;
  }
  return true;
}

std::vector<const BrowserProfile*> ChosenProfiles(const SourceChoice& choice, const std::vector<BrowserProfile>& profiles,
                                                  Family family, const std::vector<std::string>& defaultProducts,
                                                  std::vector<std::string>* lpProblems) {
  lpProblems->insert(lpProblems->end(), choice.problems.begin(), choice.problems.end());
  std::set<const BrowserProfile*> chosen;
  for (const std::string& name : choice.names) {
    auto found = std::find_if(profiles.begin(), profiles.end(),
                              [&](const BrowserProfile& profile) { return profile.SourceName() == name; });
    if (found == profiles.end()) {
      lpProblems->push_back("'" + name + "' names no profile found here");
    } else {
      chosen.insert(&*found);
    }
  }
  if (choice.all) {
    for (const BrowserProfile& profile : profiles) chosen.insert(&profile);
  }
  // A list whose every entry failed reads what the default reads.
  if (choice.withDefault || chosen.empty()) {
    if (const BrowserProfile* fallback = DefaultProfile(profiles, family, defaultProducts)) chosen.insert(fallback);
  }
  std::vector<const BrowserProfile*> ordered;
  for (const BrowserProfile& profile : profiles) {
    if (chosen.count(&profile) != 0) ordered.push_back(&profile);
  }
  return ordered;
}

void RecordLastRead(uint32_t kind, const ReadCounts& counts) {
  const std::string path = HarvestIniPath();
  if (path.empty()) return;
  std::string value;
  for (const auto& [name, count] : counts) value += (value.empty() ? "" : "; ") + std::to_string(count) + " " + name;
  const std::u16string text = FromUtf8(value);
  // What was read is said for a host; a file that can't take it changes
  // nothing of the delivery.
  static_cast<void>(WriteProfileString(FromUtf8(path), kLastRead, KindKey(kind), &text));
}

ReadCounts LastRead(uint32_t kind) {
  ReadCounts counts;
  const std::string path = HarvestIniPath();
  if (path.empty()) return counts;
  const std::string value = ToUtf8(ReadProfileString(FromUtf8(path), kLastRead, KindKey(kind), u"", kValueChars));
  for (const std::string& part : Split(value, ';')) {
    const std::string entry = Trim(part);
    const size_t space = entry.find(' ');
    if (space == std::string::npos) continue;
    counts.emplace_back(entry.substr(space + 1), static_cast<uint32_t>(std::strtoul(entry.c_str(), nullptr, 10)));
  }
  return counts;
}

}  // namespace corvane::harvest
