// corvane_harvest_bench: how fast the extraction library reads a large
// history, and how much memory it holds while doing so.
//
// Writes a Chromium and a Firefox fixture profile of 1,000,000 visits (or
// the count given) in a temporary home, in a child process so that the
// writing leaves nothing in this one's memory, then extracts the history of
// each family through the library's exports and prints the items per second
// and the peak resident memory of this process.

#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "corvane/VisitHarvest.h"
#include "harvest/fixture/profile_fixture.h"

namespace {

namespace fs = std::filesystem;
using corvane::fixture::ProfileSpec;

// The peak resident memory of this process in MiB, from its VmHWM line.
double PeakMiB() {
  std::ifstream status("/proc/self/status");
  std::string line;
  while (std::getline(status, line)) {
    if (line.rfind("VmHWM:", 0) == 0) return std::strtod(line.c_str() + 6, nullptr) / 1024.0;
  }
  return 0;
}

bool WriteProfiles(const std::string& home, const ProfileSpec& spec) {
  const pid_t child = fork();
  if (child < 0) return false;
  if (child == 0) {
    std::string error;
    const bool ok = corvane::fixture::WriteChromiumProfile(home, spec, &error) &&
                    corvane::fixture::WriteFirefoxProfile(home, spec, &error);
    if (!ok) std::fprintf(stderr, "fixture: %s\n", error.c_str());
    _exit(ok ? 0 : 1);
  }
  int status = 0;
  return waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

// Extracts the history of one browser; false when the library refused.
bool TimeExtraction(uint32_t browser, const char* name) {
  IExtractor* extractor = nullptr;
  if (!CreateVisitHarvestObj(&extractor) || extractor == nullptr) return false;
  const auto start = std::chrono::steady_clock::now();
  extractor->Extract(browser, 1);
  const uint32_t items = extractor->GetCount();
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  std::printf("%-9s %9u items  %6.2f s  %9.0f items/s  peak %6.1f MiB\n", name, items, seconds, items / seconds,
              PeakMiB());
  extractor->FreeItems();
  extractor->Destroy();
  return items > 0;
}

}  // namespace

int main(int argc, char** argv) {
  const long visits = argc > 1 ? std::strtol(argv[1], nullptr, 10) : 1000000;
  if (visits < 1500) {
    std::fprintf(stderr, "usage: corvane_harvest_bench [VISITS >= 1500]\n");
    return 2;
  }
  ProfileSpec spec;
  spec.days = static_cast<int>(visits / spec.visitsPerDay);
  const fs::path home = fs::temp_directory_path() / ("corvane-harvest-bench-" + std::to_string(getpid()));
  fs::create_directories(home);
  setenv("HOME", home.c_str(), 1);
  unsetenv("XDG_CONFIG_HOME");
  bool ok = WriteProfiles(home, spec);
  std::printf("%d days of %d visits: memory before reading %.1f MiB\n", spec.days, spec.visitsPerDay, PeakMiB());
  ok = ok && TimeExtraction(BROWSER_CHROME, "Chromium");
  ok = ok && TimeExtraction(BROWSER_FIREFOX, "Firefox");
  fs::remove_all(home);
  return ok ? 0 : 1;
}
