// cmd_report.cc: "report --html FILE": top sites, recent sites, favourites
// and visits per day over the analysed span, on one self-contained page.

#include <cstdio>
#include <fstream>
#include <memory>
#include <string>

#include "cli/data_folder.h"
#include "cli/options.h"
#include "cli/output.h"
#include "cli/report_html.h"
#include "cli/score_bands.h"
#include "cli/session.h"

namespace corvane::cli {
namespace {

constexpr uint32_t kReportSites = 30;
constexpr uint32_t kReportRecent = 10;

HRESULT GatherReport(ProviderSession& session, ReportData* lpData) {
  HRESULT hr = session.ListSites(kReportSites, &lpData->sites);
  // The white-listed domains come all at once, whatever the count asked for.
  if (lpData->sites.size() > kReportSites) lpData->sites.resize(kReportSites);
  if (SUCCEEDED(hr)) hr = session.ListRecent(kReportRecent, &lpData->recent);
  if (SUCCEEDED(hr)) hr = session.ListFavorites(0, &lpData->favorites);
  std::vector<DayGroup> days;
  if (SUCCEEDED(hr)) hr = session.ListHistory(0, std::string(), &days);
  if (FAILED(hr)) return hr;
  // The analysis looks at this many days with visits, newest first.
  lpData->visitsPerDay = VisitsPerDay(days, LoadScoreModel(DataFolderPath()).MaxDays());
  return session.GetValue("LastUpdate", &lpData->generated);
}

int RunReport(const GlobalOptions& global, const std::string& file) {
  ProviderSession session;
  ReportData data;
  HRESULT hr = session.Open(std::string());
  if (SUCCEEDED(hr)) hr = GatherReport(session, &data);
  if (FAILED(hr)) return ComponentFailure(session.Error());
  std::ofstream out(file, std::ios::binary | std::ios::trunc);
  out << BuildReportHtml(data);
  out.close();
  if (!out) return Failure("cannot write " + file);
  if (global.json) {
    Json::Value document(Json::objectValue);
    document["file"] = file;
    document["sites"] = static_cast<Json::UInt>(data.sites.size());
    document["days"] = static_cast<Json::UInt>(data.visitsPerDay.size());
    PrintJson(document, stdout);
  } else {
    std::printf("Wrote %s: %zu sites, %zu days\n", file.c_str(), data.sites.size(), data.visitsPerDay.size());
  }
  return kExitOk;
}

}  // namespace

void AddReportCommand(CLI::App& app, const GlobalOptions& global, CommandTable* lpTable) {
  auto file = std::make_shared<std::string>();
  CLI::App* sub = app.add_subcommand("report", "Write a self-contained HTML page of the sites and history");
  sub->add_option("--html", *file, "The page to write")->required();
  lpTable->emplace_back(sub, [&global, file] { return RunReport(global, *file); });
}

}  // namespace corvane::cli
