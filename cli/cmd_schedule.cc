// cmd_schedule.cc: "schedule on|off|status": the daily update, and with
// --serve the start page, as systemd user units.
//
// The units go to ~/.config/systemd/user ($XDG_CONFIG_HOME/systemd/user):
// corvane-update.service with a daily corvane-update.timer that catches up
// on a day the machine was off (Persistent=true), and corvane-serve.service
// for the start page. Where a user manager runs, systemctl --user enables
// and starts them; where none runs, the command says how to do it later.

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "cli/options.h"

namespace corvane::cli {
namespace {

namespace fs = std::filesystem;

struct ScheduleOptions {
  std::string what;
  bool serve = false;
};

std::string UnitFolder() {
  const char* config = std::getenv("XDG_CONFIG_HOME");
  const char* home = std::getenv("HOME");
  if (config != nullptr && *config != '\0') return std::string(config) + "/systemd/user";
  return home != nullptr ? std::string(home) + "/.config/systemd/user" : std::string();
}

// This program, as the units run it.
std::string SelfPath() {
  std::error_code error;
  const fs::path self = fs::read_symlink("/proc/self/exe", error);
  return error ? std::string("corvane") : self.string();
}

// The data folder option the units pass on, when one was given.
std::string DataDirArgument() {
  const char* dataDir = std::getenv("CORVANE_APPDATA");
  return dataDir != nullptr && *dataDir != '\0' ? " --data-dir '" + std::string(dataDir) + "'" : std::string();
}

// Whether systemctl --user reaches a running user manager.
bool UserManagerRuns() {
  const char* runtime = std::getenv("XDG_RUNTIME_DIR");
  std::error_code error;
  return runtime != nullptr && fs::exists(std::string(runtime) + "/systemd/private", error);
}

int Systemctl(const std::vector<std::string>& args) {
  pid_t child = fork();
  if (child == 0) {
    std::vector<char*> argv{const_cast<char*>("systemctl"), const_cast<char*>("--user")};
    for (const std::string& arg : args) argv.push_back(const_cast<char*>(arg.c_str()));
    argv.push_back(nullptr);
    execvp("systemctl", argv.data());
    _exit(127);
  }
  int status = 0;
  return child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

struct Unit {
  std::string name;
  std::string text;
};

std::vector<Unit> Units(bool serve) {
  const std::string command = SelfPath() + DataDirArgument();
  std::vector<Unit> units = {
      {"corvane-update.service", "[Unit]\nDescription=Corvane: read the browser history and rank the sites\n\n"
                                 "[Service]\nType=oneshot\nExecStart=" + command + " update\n"},
      {"corvane-update.timer", "[Unit]\nDescription=Corvane: the daily update\n\n[Timer]\nOnCalendar=daily\n"
                               "Persistent=true\nRandomizedDelaySec=10min\n\n[Install]\nWantedBy=timers.target\n"}};
  if (serve) {
    units.push_back({"corvane-serve.service", "[Unit]\nDescription=Corvane: the start page on 127.0.0.1\n\n"
                                              "[Service]\nExecStart=" + command + " serve\nRestart=on-failure\n\n"
                                              "[Install]\nWantedBy=default.target\n"});
  }
  return units;
}

int On(const std::string& folder, bool serve) {
  std::error_code error;
  fs::create_directories(folder, error);
  for (const Unit& unit : Units(serve)) {
    std::ofstream out(folder + "/" + unit.name, std::ios::trunc);
    if (!(out << unit.text)) return Failure("can't write " + folder + "/" + unit.name);
    std::printf("wrote %s/%s\n", folder.c_str(), unit.name.c_str());
  }
  const std::string enable = serve ? "corvane-update.timer corvane-serve.service" : "corvane-update.timer";
  if (!UserManagerRuns()) {
    std::printf("no systemd user manager runs in this session: once logged in, run\n"
                "  systemctl --user daemon-reload && systemctl --user enable --now %s\n", enable.c_str());
    return kExitOk;
  }
  std::vector<std::string> args{"enable", "--now", "corvane-update.timer"};
  if (serve) args.push_back("corvane-serve.service");
  if (Systemctl({"daemon-reload"}) != 0 || Systemctl(args) != 0) return Failure("systemctl --user enable failed");
  std::printf("enabled: %s\n", enable.c_str());
  return kExitOk;
}

int Off(const std::string& folder) {
  if (UserManagerRuns()) {
    static_cast<void>(Systemctl({"disable", "--now", "corvane-update.timer", "corvane-serve.service"}));
  }
  for (const Unit& unit : Units(true)) {
    std::error_code error;
    if (fs::remove(folder + "/" + unit.name, error)) std::printf("removed %s/%s\n", folder.c_str(), unit.name.c_str());
  }
  if (UserManagerRuns()) static_cast<void>(Systemctl({"daemon-reload"}));
  return kExitOk;
}

int Status(const std::string& folder) {
  std::error_code error;
  for (const Unit& unit : Units(true)) {
    const bool there = fs::exists(folder + "/" + unit.name, error);
    std::printf("%-22s %s\n", unit.name.c_str(), there ? "written" : "not written");
  }
  if (UserManagerRuns()) {
    static_cast<void>(Systemctl({"list-timers", "corvane-update.timer", "--no-pager"}));
  } else {
    std::printf("no systemd user manager runs in this session\n");
  }
  return kExitOk;
}

int RunSchedule(const ScheduleOptions& options) {
  const std::string folder = UnitFolder();
  if (folder.empty()) return Failure("no home folder: set HOME");
  if (options.what == "on") return On(folder, options.serve);
  if (options.what == "off") return Off(folder);
  return Status(folder);
}

}  // namespace

void AddScheduleCommand(CLI::App& app, const GlobalOptions& global, CommandTable* lpTable) {
  static_cast<void>(global);
  auto options = std::make_shared<ScheduleOptions>();
  CLI::App* sub = app.add_subcommand("schedule", "The daily update (and the start page) as systemd user units");
  sub->add_option("WHAT", options->what, "on, off or status")->required()->check(CLI::IsMember({"on", "off", "status"}));
  sub->add_flag("--serve", options->serve, "Also run the start page as a user service");
  lpTable->emplace_back(sub, [options] { return RunSchedule(*options); });
}

}  // namespace corvane::cli
