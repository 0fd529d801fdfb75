// cmd_demo.cc: "demo": a whole run on a sample profile. Writes a Chromium
// profile of a month of browsing into a temporary home, installs the sample
// white list, runs an update through the real extraction library (the one
// beside the component) and shows the sites, the recent sites and the
// newest day of history.

#include <stdlib.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <system_error>

#include "cli/options.h"
#include "cli/output.h"
#include "cli/session.h"
#include "harvest/fixture/profile_fixture.h"

namespace corvane::cli {
namespace {

// A modest month of browsing, so that the demo runs in seconds.
fixture::ProfileSpec DemoSpec() {
  fixture::ProfileSpec spec;
  spec.seed = 7;
  spec.days = 30;
  spec.visitsPerDay = 300;
  spec.distinctUrls = 3000;
  spec.hosts = 300;
  spec.bookmarks = 40;
  spec.endTime = "now";  // no visit from the demo's future
  return spec;
}

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
  if (!fixture::WriteChromiumProfile(home, DemoSpec(), lpError)) return false;
  if (!fixture::WriteDefaultBrowser(home, fixture::Family::kChromium, lpError)) return false;
  // The extraction library finds profiles from these; the component's own
  // library (not a test stand-in) is the one to load.
  return setenv("HOME", home.c_str(), 1) == 0 && setenv("XDG_CONFIG_HOME", (home + "/.config").c_str(), 1) == 0 &&
         unsetenv("CORVANE_HARVEST_LIBRARY") == 0;
}

HRESULT ShowDemo(const GlobalOptions& global, ProviderSession& session) {
  std::vector<SiteRecord> sites, recent;
  std::vector<DayGroup> days;
  HRESULT hr = session.ListSites(15, &sites);
  // The white-listed domains come all at once; a demo shows the first few.
  if (sites.size() > 15) sites.resize(15);
  if (SUCCEEDED(hr)) hr = session.ListRecent(8, &recent);
  if (SUCCEEDED(hr)) hr = session.ListHistory(0, std::string(), &days);
  if (FAILED(hr)) return hr;
  if (days.size() > 1) days.resize(1);
  if (!days.empty() && days[0].visits.size() > 25) days[0].visits.resize(25);
  std::string browser;
  static_cast<void>(session.GetValue("ExtractBrowser", &browser));
  if (global.json) {
    Json::Value document(Json::objectValue);
    document["browser"] = browser;
    document["sites"] = ToJson(sites);
    document["recent"] = ToJson(recent);
    document["history"] = ToJson(days);
    PrintJson(document, stdout);
    return S_OK;
  }
  std::printf("Browser read: %s\n\nSites\n", browser.c_str());
  PrintSites(sites, stdout);
  std::printf("\nRecent\n");
  PrintRecent(recent, stdout);
  std::printf("\nHistory, newest day\n");
  PrintDays(days, stdout);
  return S_OK;
}

int RunDemo(const GlobalOptions& global) {
  ScratchFolder home("corvane-demo-home-");
  ScratchFolder data("corvane-demo-data-");
  if (home.Path().empty()) return Failure("cannot make a temporary folder");
  std::string error;
  if (!WriteSampleHome(home.Path(), &error)) return Failure("cannot write the sample profile: " + error);
  if (global.dataDir.empty() && setenv("CORVANE_APPDATA", data.Path().c_str(), 1) != 0) {
    return Failure("cannot set the data folder");
  }
  if (!global.json) std::printf("Sample profile: 30 days x 300 visits in %s\n", home.Path().c_str());
  bool due = DailyUpdateDue();
  ProviderSession session;
  HRESULT hr = session.Open(std::string());
  if (SUCCEEDED(hr) && !due) hr = session.ForceUpdate();
  if (SUCCEEDED(hr)) hr = ShowDemo(global, session);
  return FAILED(hr) ? ComponentFailure(session.Error()) : kExitOk;
}

}  // namespace

void AddDemoCommand(CLI::App& app, const GlobalOptions& global, CommandTable* lpTable) {
  CLI::App* sub = app.add_subcommand("demo", "Run the whole system on a sample month of browsing");
  lpTable->emplace_back(sub, [&global] { return RunDemo(global); });
}

}  // namespace corvane::cli
