// corvane_harvest_bench: how fast the extraction library reads a large
// history, and how much memory it holds while doing so.
//
// Writes a Chromium and a Firefox fixture profile of 1,000,000 visits (or
// the count given) and reads the history of each through the library's
// exports. Then writes four profiles of 250,000 visits each (Chrome, Brave,
// Firefox, LibreWolf), reads each alone and all four as one delivery, and
// ends with the line
//   time_ratio=T memory_ratio=M
// the time of the four together against the sum of the four alone, and the
// peak memory together against the largest peak alone. Every read runs in
// a child process of its own, so that each peak is that read's alone, and
// each figure is the median of three reads.

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "corvane/VisitHarvest.h"
#include "harvest/fixture/profile_fixture.h"

namespace {

namespace fs = std::filesystem;
using corvane::fixture::ProfilePlace;
using corvane::fixture::ProfileSpec;

constexpr long kProfileVisits = 250000;

struct Read {
  uint32_t items = 0;
  double seconds = 0;
  double peakMiB = 0;
};

// The peak resident memory of this process in MiB, from its VmHWM line.
double PeakMiB() {
  std::ifstream status("/proc/self/status");
  std::string line;
  while (std::getline(status, line)) {
    if (line.rfind("VmHWM:", 0) == 0) return std::strtod(line.c_str() + 6, nullptr) / 1024.0;
  }
  return 0;
}

// Runs body in a child process; false when it failed.
template <class Body>
bool InChild(Body body) {
  const pid_t child = fork();
  if (child < 0) return false;
  if (child == 0) _exit(body() ? 0 : 1);
  int status = 0;
  return waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

// Extracts the history of one browser value in a child process and reports
// the child's figures through a pipe.
bool TimeExtraction(uint32_t browser, Read* lpRead) {
  int channel[2];
  if (pipe(channel) != 0) return false;
  const bool ok = InChild([&] {
    close(channel[0]);
    IExtractor* extractor = nullptr;
    if (!CreateVisitHarvestObj(&extractor) || extractor == nullptr) return false;
    const auto start = std::chrono::steady_clock::now();
    extractor->Extract(browser, EXTRACT_HISTORY);
    Read read{extractor->GetCount(), std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(),
              PeakMiB()};
    extractor->FreeItems();
    extractor->Destroy();
    return write(channel[1], &read, sizeof(read)) == static_cast<ssize_t>(sizeof(read)) && read.items > 0;
  });
  close(channel[1]);
  const bool got = read(channel[0], lpRead, sizeof(*lpRead)) == static_cast<ssize_t>(sizeof(*lpRead));
  close(channel[0]);
  return ok && got;
}

// The read of the median time of three, each in a child of its own: one
// read alone is at the mercy of whatever else the machine does.
bool MedianExtraction(uint32_t browser, Read* lpRead) {
  std::vector<Read> reads(3);
  for (Read& read : reads) {
    if (!TimeExtraction(browser, &read)) return false;
  }
  std::sort(reads.begin(), reads.end(), [](const Read& a, const Read& b) { return a.seconds < b.seconds; });
  *lpRead = reads[1];
  return true;
}

void Print(const char* name, const Read& read) {
  std::printf("%-22s %9u items  %6.2f s  %9.0f items/s  peak %6.1f MiB\n", name, read.items, read.seconds,
              read.items / read.seconds, read.peakMiB);
}

bool Choose(const std::string& appData, const std::string& read) {
  fs::create_directories(appData + "/CorvaneApp");
  std::ofstream(appData + "/CorvaneApp/Harvest.ini", std::ios::trunc) << "[Sources]\nRead=" << read << "\n";
  return true;
}

ProfileSpec SpecOf(long visits, uint32_t seed) {
  ProfileSpec spec;
  spec.seed = seed;
  spec.days = static_cast<int>(visits / spec.visitsPerDay);
  return spec;
}

// One Chromium and one Firefox profile of the given size, read one by one.
bool SingleProfiles(const fs::path& home, long visits) {
  const ProfileSpec spec = SpecOf(visits, 1);
  std::printf("%d days of %d visits\n", spec.days, spec.visitsPerDay);
  const bool written = InChild([&] {
    std::string error;
    const bool ok = corvane::fixture::WriteChromiumProfile(home, spec, &error) &&
                    corvane::fixture::WriteFirefoxProfile(home, spec, &error);
    if (!ok) std::fprintf(stderr, "fixture: %s\n", error.c_str());
    return ok;
  });
  if (!written) return false;
  for (const auto& [browser, name] : {std::pair{BROWSER_CHROME, "Chromium"}, {BROWSER_FIREFOX, "Firefox"}}) {
    Read median;
    if (!MedianExtraction(browser, &median)) return false;
    Print(name, median);
  }
  return true;
}

// Four profiles of 250,000 visits, alone and as one delivery.
bool FourProfiles(const fs::path& home, const std::string& appData) {
  const std::vector<std::pair<std::string, ProfilePlace>> kProfiles = {
      {"chrome:Default", {".config/google-chrome", "Default", "Person 1", true}},
      {"brave:Default", {".config/BraveSoftware/Brave-Browser", "Default", "Person 1", true}},
      {"firefox:default", {".mozilla/firefox", "a.default", "default", true}},
      {"librewolf:default", {".librewolf", "b.default", "default", true}}};
  const bool written = InChild([&] {
    std::string error;
    for (size_t i = 0; i < kProfiles.size(); ++i) {
      const ProfilePlace& place = kProfiles[i].second;
      const ProfileSpec spec = SpecOf(kProfileVisits, static_cast<uint32_t>(i + 2));
      const bool firefox = place.root.find("wolf") != std::string::npos || place.root.find("mozilla") != std::string::npos;
      if (!(firefox ? corvane::fixture::WriteFirefoxProfile(home, spec, &error, place)
                    : corvane::fixture::WriteChromiumProfile(home, spec, &error, place))) {
        std::fprintf(stderr, "fixture: %s\n", error.c_str());
        return false;
      }
    }
    return true;
  });
  if (!written) return false;
  double sumSeconds = 0, largestPeak = 0;
  for (const auto& [name, place] : kProfiles) {
    Read alone;
    if (!Choose(appData, name) || !MedianExtraction(BROWSER_CHROME, &alone)) return false;
    Print(name.c_str(), alone);
    sumSeconds += alone.seconds;
    largestPeak = std::max(largestPeak, alone.peakMiB);
  }
  Read together;
  if (!Choose(appData, "all") || !MedianExtraction(BROWSER_CHROME, &together)) return false;
  Print("all four together", together);
  std::printf("time_ratio=%.2f memory_ratio=%.2f\n", together.seconds / sumSeconds, together.peakMiB / largestPeak);
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  const long visits = argc > 1 ? std::strtol(argv[1], nullptr, 10) : 1000000;
  if (visits < 1500) {
    std::fprintf(stderr, "usage: corvane_harvest_bench [VISITS >= 1500]\n");
    return 2;
  }
  const fs::path scratch = fs::temp_directory_path() / ("corvane-harvest-bench-" + std::to_string(getpid()));
  const std::string appData = (scratch / "appdata").string();
  setenv("CORVANE_APPDATA", appData.c_str(), 1);
  unsetenv("XDG_CONFIG_HOME");
  setenv("HOME", (scratch / "single").c_str(), 1);
  bool ok = SingleProfiles(scratch / "single", visits);
  setenv("HOME", (scratch / "four").c_str(), 1);
  ok = ok && FourProfiles(scratch / "four", appData);
  fs::remove_all(scratch);
  return ok ? 0 : 1;
}
