// corvane: the command-line host of the Corvane data provider. It uses the
// component as any host does, through its exports and interfaces: update,
// list, search, pin, hide, explain and report.

#include <sys/stat.h>

#include <clocale>
#include <cstdio>
#include <string>

#include "cli/options.h"

namespace {

// The word that was taken for a command but is none, or empty.
std::string UnknownCommand(const CLI::App& app) {
  if (!app.get_subcommands().empty()) return std::string();
  std::vector<std::string> words = app.remaining();
  return words.empty() ? std::string() : words.front();
}

}  // namespace

int main(int argc, char** argv) {
  using namespace corvane::cli;
  // Everything this host writes holds browsing history: the person's alone.
  umask(077);
  // Dates shown to a person follow LC_TIME; nothing else of the locale.
  std::setlocale(LC_TIME, "");
  CLI::App app("corvane: the sites you really use, from your browser history", "corvane");
  app.require_subcommand(1);
  app.fallthrough();
  GlobalOptions global;
  app.add_option("--data-dir", global.dataDir, "Application-data folder for the component's files");
  app.add_flag("--json", global.json, "Print exactly one JSON document");
  app.add_flag("--csv", global.csv, "Print listings as CSV")->excludes("--json");
  CommandTable table;
  AddUpdateCommands(app, global, &table);
  AddListCommands(app, global, &table);
  AddPinCommands(app, global, &table);
  AddExplainCommand(app, global, &table);
  AddReportCommand(app, global, &table);
  AddDemoCommand(app, global, &table);
  AddBrowsersCommand(app, global, &table);
  AddServeCommand(app, global, &table);
  AddScheduleCommand(app, global, &table);
  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp& help) {
    return app.exit(help);
  } catch (const CLI::CallForAllHelp& help) {
    return app.exit(help);
  } catch (const CLI::ParseError& error) {
    std::string unknown = UnknownCommand(app);
    if (!unknown.empty()) return UsageError("unknown command '" + unknown + "': see 'corvane --help'");
    return UsageError(error.what());
  }
  std::string problem;
  if (!ApplyGlobalOptions(global, &problem)) return Failure(problem);
  for (const auto& [command, run] : table) {
    if (command->parsed()) return run();
  }
  return UsageError("no command given");
}
