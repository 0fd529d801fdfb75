// cmd_demo.cc: "demo": a whole run on a sample profile. Writes a Chromium
// profile of a month of browsing into a temporary home, installs the sample
// white list, runs an update through the real extraction library (the one
// beside the component) and shows the update, the sites, the recent sites
// and the newest day of history.
//
// The demo never mixes its sample visits into a person's data: it runs in a
// new temporary data folder, removed at the end, or in --data-dir when that
// holds no database yet (and keeps it there, to explore with the other
// commands). A --data-dir with a database is refused.

#include <stdlib.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <string>
#include <system_error>

#include "cli/data_folder.h"
#include "cli/demo_profile.h"
#include "cli/options.h"
#include "cli/output.h"
#include "cli/session.h"
#include "cli/update_summary.h"

namespace corvane::cli {
namespace {

// What the demo shows of each listing.
constexpr uint32_t kDemoSites = 15;
constexpr uint32_t kDemoRecent = 8;
constexpr size_t kDemoVisits = 25;

// A fresh folder under the temporary folder, removed with its content.
class ScratchFolder {
 public:
  explicit ScratchFolder(const char* prefix) {
    std::string pattern = (std::filesystem::temp_directory_path(m_error) / prefix).string() + "XXXXXX";
    if (mkdtemp(pattern.data()) != nullptr) m_path = pattern;
  }
  ~ScratchFolder() {
    if (!m_path.empty()) std::filesystem::remove_all(m_path, m_error);
  }
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;
  const std::string& Path() const { return m_path; }

 private:
  std::error_code m_error;
  std::string m_path;
};

bool WriteSampleHome(const std::string& home, std::string* lpError) {
  if (!fixture::WriteChromiumProfile(home, DemoProfileSpec(), lpError)) return false;
  if (!fixture::WriteDefaultBrowser(home, fixture::Family::kChromium, lpError)) return false;
  // The extraction library finds profiles from these; the component's own
  // library (not a test stand-in) is the one to load.
  return setenv("HOME", home.c_str(), 1) == 0 && setenv("XDG_CONFIG_HOME", (home + "/.config").c_str(), 1) == 0 &&
         unsetenv("CORVANE_HARVEST_LIBRARY") == 0;
}

// Points the component at the demo's data folder; false with a message when
// --data-dir already holds a database.
bool ChooseDataFolder(const GlobalOptions& global, const ScratchFolder& scratch, std::string* lpError) {
  if (global.dataDir.empty()) {
    if (scratch.Path().empty() || setenv("CORVANE_APPDATA", scratch.Path().c_str(), 1) != 0) {
      *lpError = "cannot make a temporary data folder";
      return false;
    }
    return true;
  }
  std::error_code error;
  std::string database = DataFolderPath() + "/" + kDatabaseFile;
  if (std::filesystem::exists(database, error)) {
    *lpError = "the demo does not run on a data folder in use; " + database +
               " exists (run it without --data-dir, or give a new folder)";
    return false;
  }
  return true;
}

HRESULT ShowDemo(const GlobalOptions& global, ProviderSession& session, Json::Value* lpDocument) {
  std::vector<SiteRecord> sites, recent;
  std::vector<DayGroup> days;
  HRESULT hr = session.ListSites(kDemoSites, &sites);
  // The white-listed domains come all at once; a demo shows the first few.
  if (sites.size() > kDemoSites) sites.resize(kDemoSites);
  if (SUCCEEDED(hr)) hr = session.ListRecent(kDemoRecent, &recent);
  if (SUCCEEDED(hr)) hr = session.ListHistory(0, std::string(), &days);
  if (FAILED(hr)) return hr;
  if (days.size() > 1) days.resize(1);
  if (!days.empty() && days[0].visits.size() > kDemoVisits) days[0].visits.resize(kDemoVisits);
  if (global.json) {
    (*lpDocument)["browser"] = (*lpDocument)["update"]["ExtractBrowser"];
    (*lpDocument)["sites"] = SitesJson(sites);
    (*lpDocument)["recent"] = RecentJson(recent);
    (*lpDocument)["history"] = DaysJson(days);
    PrintJson(*lpDocument, stdout);
    return S_OK;
  }
  std::printf("\nSites\n");
  PrintSites(sites, TableFormat::kText, stdout);
  std::printf("\nRecent\n");
  PrintRecent(recent, TableFormat::kText, stdout);
  std::printf("\nHistory, newest day\n");
  PrintDays(days, TableFormat::kText, stdout);
  return S_OK;
}

int RunDemo(const GlobalOptions& global) {
  ScratchFolder home("corvane-demo-home-");
  ScratchFolder data("corvane-demo-data-");
  std::string error;
  if (home.Path().empty()) return Failure("cannot make a temporary folder");
  if (!ChooseDataFolder(global, data, &error)) return Failure(error);
  if (!WriteSampleHome(home.Path(), &error)) return Failure("cannot write the sample profile: " + error);
  bool kept = !global.dataDir.empty();
  Json::Value document(Json::objectValue);
  document["dataFolder"] = DataFolderPath();
  document["kept"] = kept;
  if (!global.json) {
    fixture::ProfileSpec spec = DemoProfileSpec();
    std::printf("Sample profile: %d days x %d visits in %s\n", spec.days, spec.visitsPerDay, home.Path().c_str());
    std::printf("Data folder:    %s (%s)\n", DataFolderPath().c_str(), kept ? "kept" : "removed at the end");
  }
  auto start = std::chrono::steady_clock::now();
  ProviderSession session;
  HRESULT hr = session.Open(std::string());
  if (SUCCEEDED(hr) && !session.Updated()) hr = session.ForceUpdate();
  if (FAILED(hr)) return ComponentFailure(session.Error());
  double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  document["update"] = ReadUpdateSummary(session, true, seconds);
  if (!global.json) PrintUpdateSummary(document["update"], stdout);
  hr = ShowDemo(global, session, &document);
  return FAILED(hr) ? ComponentFailure(session.Error()) : kExitOk;
}

}  // namespace

void AddDemoCommand(CLI::App& app, const GlobalOptions& global, CommandTable* lpTable) {
  CLI::App* sub = app.add_subcommand(
      "demo", "Run the whole system on a sample month of browsing, in a new temporary data folder");
  sub->footer(
      "The demo runs in a new temporary data folder and removes it at the end. With --data-dir it runs in\n"
      "that folder and keeps it, to explore with the other commands, but only if the folder holds no\n"
      "database yet: the sample visits never mix with real ones.");
  lpTable->emplace_back(sub, [&global] { return RunDemo(global); });
}

}  // namespace corvane::cli
