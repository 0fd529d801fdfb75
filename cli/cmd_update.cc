// cmd_update.cc: "update" (Initialize, optionally a forced update, with the
// counters of the run) and "value" (one key of DBConfig.ini).

#include <chrono>
#include <cstdio>
#include <memory>
#include <string>

#include "cli/data_folder.h"
#include "cli/ini_read.h"
#include "cli/options.h"
#include "cli/output.h"
#include "cli/progress.h"
#include "cli/session.h"
#include "cli/update_summary.h"

namespace corvane::cli {
namespace {

struct UpdateOptions {
  bool force = false;
  std::string settings;
};

// The settings text loses its blanks anyway; without them it can be quoted
// as one value of the Initialize parameter.
std::string SettingsParameter(const std::string& settings) {
  if (settings.empty()) return std::string();
  std::string compact;
  for (char c : settings) {
    if (c != ' ' && c != '\t' && c != '\r' && c != '\n') compact.push_back(c);
  }
  return "-Settings=\"" + compact + "\"";
}

int RunUpdate(const GlobalOptions& global, const UpdateOptions& options) {
  auto start = std::chrono::steady_clock::now();
  ProviderSession session;
  ProgressLine progress("updating", !global.json);
  HRESULT hr = session.Open(SettingsParameter(options.settings));
  // The first start of a day has updated already; --force does not run a
  // second update right after it.
  bool forced = SUCCEEDED(hr) && options.force && !session.Updated();
  if (forced) hr = session.ForceUpdate();
  progress.Stop();
  if (FAILED(hr)) return ComponentFailure(session.Error());
  double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  Json::Value summary = ReadUpdateSummary(session, session.Updated() || forced, seconds);
  if (global.json) {
    PrintJson(summary, stdout);
  } else {
    PrintUpdateSummary(summary, stdout);
  }
  if (!options.settings.empty() && session.Said("SettingsRefused")) return kExitFailure;
  // An update that found no browser to read has done nothing a person wants.
  const std::string browser = summary["ExtractBrowser"].asString();
  if (browser.empty() || browser == "Unknown") {
    return Failure("nothing to read: no browser profile was found; 'corvane browsers' shows where it looked");
  }
  return kExitOk;
}

int RunValue(const GlobalOptions& global, const std::string& key) {
  ProviderSession session;
  HRESULT hr = session.Open(std::string());
  std::string value;
  if (FAILED(hr)) return ComponentFailure(session.Error());
  if (FAILED(session.GetValue(key, &value))) {
    std::string keys;
    for (const std::string& name : ReadIniKeys(DataFolderPath() + "/" + kConfigFile, "DBConfig")) {
      keys += (keys.empty() ? "" : ", ") + name;
    }
    return Failure("DBConfig.ini has no value for '" + key + "'; its keys: " + (keys.empty() ? "none yet" : keys));
  }
  if (global.json) {
    Json::Value document(Json::objectValue);
    document["key"] = key;
    document["value"] = value;
    PrintJson(document, stdout);
  } else {
    std::printf("%s\n", value.c_str());
  }
  return kExitOk;
}

}  // namespace

void AddUpdateCommands(CLI::App& app, const GlobalOptions& global, CommandTable* lpTable) {
  auto update = std::make_shared<UpdateOptions>();
  CLI::App* sub = app.add_subcommand("update", "Read the browser history and rebuild the site lists");
  sub->add_flag("--force", update->force, "Update even when today's update has run");
  sub->add_option("--settings", update->settings, "Scoring settings text to save before the update");
  lpTable->emplace_back(sub, [&global, update] { return RunUpdate(global, *update); });

  auto key = std::make_shared<std::string>();
  sub = app.add_subcommand("value", "Print one value of DBConfig.ini");
  sub->add_option("KEY", *key, "Key, such as LastUpdate or ExtractBrowser")->required();
  lpTable->emplace_back(sub, [&global, key] { return RunValue(global, *key); });
}

}  // namespace corvane::cli
