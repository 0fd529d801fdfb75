// cmd_update.cc: "update" (Initialize, optionally a forced update, with the
// counters of the run) and "value" (one key of DBConfig.ini).

#include <chrono>
#include <cstdio>
#include <memory>
#include <string>

#include "cli/options.h"
#include "cli/output.h"
#include "cli/progress.h"
#include "cli/session.h"

namespace corvane::cli {
namespace {

// Keys of DBConfig.ini that an update writes, in the order they are shown.
constexpr const char* kCounterKeys[] = {"AddHistoryCount", "BuildOftenTable", "H2", "E3inH2", "E3",
                                        "H1",              "E2inH1",          "E2"};

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
  bool due = DailyUpdateDue();
  auto start = std::chrono::steady_clock::now();
  ProviderSession session;
  ProgressLine progress("updating", !global.json);
  HRESULT hr = session.Open(SettingsParameter(options.settings));
  if (SUCCEEDED(hr) && options.force && !due) hr = session.ForceUpdate();
  progress.Stop();
  if (FAILED(hr)) return ComponentFailure(session.Error());
  double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  Json::Value document(Json::objectValue);
  std::string value;
  document["updated"] = due || options.force;
  document["seconds"] = seconds;
  for (const char* key : {"ExtractBrowser", "LastUpdate"}) {
    document[key] = SUCCEEDED(session.GetValue(key, &value)) ? value : std::string();
  }
  Json::Value counters(Json::objectValue);
  for (const char* key : kCounterKeys) {
    if (SUCCEEDED(session.GetValue(key, &value))) counters[key] = value;
  }
  document["counters"] = counters;
  if (global.json) {
    PrintJson(document, stdout);
    return kExitOk;
  }
  std::printf("%s in %.2f s\n", due || options.force ? "Updated" : "Already up to date today", seconds);
  std::printf("Browser read: %s\nLast update:  %s\n", document["ExtractBrowser"].asCString(),
              document["LastUpdate"].asCString());
  for (const std::string& key : counters.getMemberNames()) {
    std::printf("  %-16s %s\n", key.c_str(), counters[key].asCString());
  }
  return kExitOk;
}

int RunValue(const GlobalOptions& global, const std::string& key) {
  ProviderSession session;
  HRESULT hr = session.Open(std::string());
  std::string value;
  if (SUCCEEDED(hr)) hr = session.GetValue(key, &value);
  if (FAILED(hr)) return ComponentFailure(session.Error());
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
