#include "child_update.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "corvane/CorvaneDataProvider.h"

extern char** environ;

namespace corvane::bench {
namespace {

std::vector<std::string> ChildEnvironment(const UpdateEnvironment& environment) {
  std::vector<std::string> variables;
  for (char** entry = environ; *entry != nullptr; ++entry) {
    std::string variable(*entry);
    for (const char* name : {"HOME=", "XDG_CONFIG_HOME=", "CORVANE_APPDATA=", "CORVANE_TEST_NOW=", "XDG_DATA_HOME=",
                             "CORVANE_HARVEST_LIBRARY=", "CORVANE_FAKE_HARVEST_FIXTURE="}) {
      if (variable.rfind(name, 0) == 0) variable.clear();
    }
    if (!variable.empty()) variables.push_back(variable);
  }
  variables.push_back("HOME=" + environment.home);
  variables.push_back("XDG_CONFIG_HOME=" + environment.home + "/.config");
  variables.push_back("CORVANE_APPDATA=" + environment.appData);
  variables.push_back("CORVANE_TEST_NOW=" + environment.now);
  return variables;
}

// The peak resident memory of this process image. The rusage of a spawned
// child would not do: the child starts on the parent's memory until it
// executes the program, and the kernel keeps that peak too.
long PeakResidentKb() {
  std::FILE* status = std::fopen("/proc/self/status", "r");
  if (status == nullptr) return 0;
  char line[256];
  long peakKb = 0;
  while (std::fgets(line, sizeof(line), status) != nullptr) {
    if (std::sscanf(line, "VmHWM: %ld kB", &peakKb) == 1) break;
  }
  std::fclose(status);
  return peakKb;
}

}  // namespace

UpdateRun RunUpdateInChild(const std::string& self, const UpdateEnvironment& environment) {
  UpdateRun run;
  int pipeFds[2];
  if (pipe(pipeFds) != 0) {
    run.error = "pipe failed";
    return run;
  }
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, pipeFds[1], STDOUT_FILENO);
  posix_spawn_file_actions_addclose(&actions, pipeFds[0]);
  std::vector<std::string> variables = ChildEnvironment(environment);
  std::vector<char*> envp;
  for (std::string& variable : variables) envp.push_back(variable.data());
  envp.push_back(nullptr);
  std::string flag = "--child-update";
  char* argv[] = {const_cast<char*>(self.c_str()), flag.data(), nullptr};
  pid_t pid = 0;
  int spawned = posix_spawn(&pid, self.c_str(), &actions, nullptr, argv, envp.data());
  posix_spawn_file_actions_destroy(&actions);
  close(pipeFds[1]);
  if (spawned != 0) {
    close(pipeFds[0]);
    run.error = "cannot start the child";
    return run;
  }
  std::string output;
  char buffer[256];
  ssize_t got = 0;
  while ((got = read(pipeFds[0], buffer, sizeof(buffer))) > 0) output.append(buffer, static_cast<size_t>(got));
  close(pipeFds[0]);
  int status = 0;
  waitpid(pid, &status, 0);
  unsigned hr = 0;
  long peakKb = 0;
  if (WIFEXITED(status) && WEXITSTATUS(status) == 0 &&
      std::sscanf(output.c_str(), "seconds=%lf hr=%x peak_kb=%ld", &run.seconds, &hr, &peakKb) == 3 && hr == 0) {
    run.peakMb = static_cast<double>(peakKb) / 1024.0;
    run.ok = true;
  } else {
    run.error = "update failed: " + output;
  }
  return run;
}

int ChildUpdateMain() {
  IClassFactory* factory = nullptr;
  if (DllGetClassObject(CLSID_CorvaneDataProviderObject, IID_IClassFactory, reinterpret_cast<void**>(&factory)) < 0) {
    return 2;
  }
  ICorvaneDataProviderObject* provider = nullptr;
  HRESULT hr = factory->CreateInstance(nullptr, IID_ICorvaneDataProviderObject, reinterpret_cast<void**>(&provider));
  factory->Release();
  if (hr < 0) return 2;
  auto start = std::chrono::steady_clock::now();
  hr = provider->Initialize(nullptr);
  double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  provider->Release();
  std::printf("seconds=%.6f hr=%08x peak_kb=%ld\n", seconds, static_cast<unsigned>(hr), PeakResidentKb());
  return hr < 0 ? 1 : 0;
}

}  // namespace corvane::bench
