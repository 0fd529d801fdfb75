// cmd_browsers.cc: "browsers", every browser profile found here with what
// it holds and whether an update reads it; and "sources", which writes the
// choice of profiles to Harvest.ini. Both use the extraction library's own
// discovery, linked into the host, so that they see what an update sees.
// "browsers" exits 0 when at least one profile has a history, so that a
// script can choose between "update" and "demo".

#include <algorithm>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "cli/options.h"
#include "cli/output.h"
#include "cli/sources_report.h"
#include "harvest/sources.h"

namespace corvane::cli {
namespace {

int RunBrowsers(const GlobalOptions& global) {
  const SourcesReport report = BuildSourcesReport();
  if (global.json) {
    PrintJson(ToJson(report), stdout);
  } else if (!report.profiles.empty()) {
    PrintSourcesReport(report, stdout);
  }
  const bool any = std::any_of(report.profiles.begin(), report.profiles.end(),
                               [](const ProfileRow& row) { return row.visits > 0; });
  if (!any) return Failure(report.profiles.empty() ? NothingFoundMessage(report) : "no profile found here has a history yet");
  return kExitOk;
}

// "all", "default", or names of profiles found here.
int RunSources(const GlobalOptions& global, const std::vector<std::string>& names) {
  std::string value;
  for (const std::string& name : names) value += (value.empty() ? "" : ", ") + name;
  const harvest::SourceChoice choice = harvest::ParseSourceChoice(value);
  if (!choice.problems.empty()) return UsageError(choice.problems.front() + ": see 'corvane browsers'");
  const SourcesReport found = BuildSourcesReport();
  for (const std::string& name : choice.names) {
    if (std::none_of(found.profiles.begin(), found.profiles.end(), [&](const ProfileRow& row) { return row.source == name; })) {
      return UsageError("'" + name + "' names no profile found here: see 'corvane browsers'");
    }
  }
  std::string error;
  if (!harvest::WriteSourceChoice(value, &error)) return Failure(error);
  if (global.json) {
    Json::Value document(Json::objectValue);
    document["read"] = value;
    document["harvestIni"] = harvest::HarvestIniPath();
    PrintJson(document, stdout);
  } else {
    std::printf("Updates read: %s (%s)\n", value.c_str(), harvest::HarvestIniPath().c_str());
  }
  return kExitOk;
}

}  // namespace

void AddBrowsersCommand(CLI::App& app, const GlobalOptions& global, CommandTable* lpTable) {
  CLI::App* sub = app.add_subcommand(
      "browsers",
      "List every browser profile found here: visits, bookmarks, and whether an update reads it; exit status 1 when "
      "none has a history");
  lpTable->emplace_back(sub, [&global] { return RunBrowsers(global); });

  auto names = std::make_shared<std::vector<std::string>>();
  sub = app.add_subcommand("sources", "Choose the profiles an update reads: all, default, or names that "
                                      "'corvane browsers' lists (written to Harvest.ini)");
  sub->add_option("WHAT", *names, "all | default | browser:profile ...")->required();
  lpTable->emplace_back(sub, [&global, names] { return RunSources(global, *names); });
}

}  // namespace corvane::cli
