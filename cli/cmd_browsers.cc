// cmd_browsers.cc: "browsers": the browsers whose history the extraction
// library can read on this machine, and the default one. Exits 0 when it
// found at least one, so that a script can choose between "update" and
// "demo" by the same rules the update itself follows.

#include <cstdio>
#include <string>

#include "cli/harvest_probe.h"
#include "cli/options.h"
#include "cli/output.h"

namespace corvane::cli {
namespace {

int RunBrowsers(const GlobalOptions& global) {
  BrowserFindings findings;
  std::string error;
  if (!ProbeBrowsers(&findings, &error)) return Failure(error);
  if (global.json) {
    Json::Value document(Json::objectValue);
    document["library"] = findings.library;
    document["default"] = findings.defaultBrowser == 0 ? "" : BrowserName(findings.defaultBrowser);
    document["installed"] = Json::Value(Json::arrayValue);
    for (uint32_t browser : findings.installed) document["installed"].append(BrowserName(browser));
    PrintJson(document, stdout);
  } else {
    for (uint32_t browser : findings.installed) {
      std::printf("%s%s\n", BrowserName(browser), browser == findings.defaultBrowser ? " (default)" : "");
    }
  }
  if (findings.installed.empty()) return Failure("no browser that " + findings.library + " reads is installed");
  return kExitOk;
}

}  // namespace

void AddBrowsersCommand(CLI::App& app, const GlobalOptions& global, CommandTable* lpTable) {
  CLI::App* sub = app.add_subcommand(
      "browsers",
      "List the browsers whose history the extraction library finds here; exit status 1 when there is none");
  lpTable->emplace_back(sub, [&global] { return RunBrowsers(global); });
}

}  // namespace corvane::cli
