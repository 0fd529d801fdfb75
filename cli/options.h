// options.h: the options every command shares, the exit statuses, and the
// table of commands that main dispatches to.

#ifndef CORVANE_CLI_OPTIONS_H_
#define CORVANE_CLI_OPTIONS_H_

#include <CLI/CLI.hpp>

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "cli/output.h"
#include "corvane/CorvaneDataProvider.h"

namespace corvane::cli {

inline constexpr int kExitOk = 0;
inline constexpr int kExitFailure = 1;   // the component or a file failed
inline constexpr int kExitUsage = 2;     // bad arguments

struct GlobalOptions {
  std::string dataDir;  // application-data folder for the component; empty: its default
  bool json = false;    // exactly one JSON document on stdout
  bool csv = false;     // listings as CSV
};

// The table format that the options ask for.
inline TableFormat FormatOf(const GlobalOptions& options) {
  return options.csv ? TableFormat::kCsv : TableFormat::kText;
}

// A subcommand and what runs when it was chosen; returns the exit status.
using CommandTable = std::vector<std::pair<CLI::App*, std::function<int()>>>;

// Points the component at --data-dir (CORVANE_APPDATA). False with one
// line naming the folder and the cause when the folder cannot be made.
[[nodiscard]] bool ApplyGlobalOptions(const GlobalOptions& options, std::string* lpError);

// One line "corvane: <message>" on stderr; returns the status to exit with.
int Failure(const std::string& message);
int UsageError(const std::string& message);
// The failure of a component call: the message with its status in hex.
int ComponentFailure(const std::string& message);

// Adds each family's subcommands to the app and their runners to the table.
void AddUpdateCommands(CLI::App& app, const GlobalOptions& global, CommandTable* lpTable);
void AddListCommands(CLI::App& app, const GlobalOptions& global, CommandTable* lpTable);
void AddPinCommands(CLI::App& app, const GlobalOptions& global, CommandTable* lpTable);
void AddExplainCommand(CLI::App& app, const GlobalOptions& global, CommandTable* lpTable);
void AddReportCommand(CLI::App& app, const GlobalOptions& global, CommandTable* lpTable);
void AddDemoCommand(CLI::App& app, const GlobalOptions& global, CommandTable* lpTable);
void AddBrowsersCommand(CLI::App& app, const GlobalOptions& global, CommandTable* lpTable);
void AddServeCommand(CLI::App& app, const GlobalOptions& global, CommandTable* lpTable);
void AddScheduleCommand(CLI::App& app, const GlobalOptions& global, CommandTable* lpTable);

}  // namespace corvane::cli

#endif  // CORVANE_CLI_OPTIONS_H_
