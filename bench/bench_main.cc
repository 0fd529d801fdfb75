// corvane_bench: the component's update and serving costs on fixture
// profiles of a heavy user, against the floors that any implementation must
// pay on the same files.
//
// It writes Chromium profiles with the harvest fixture builder at 1x, 2x and
// 4x the heavy history (and, with --stress, at 1,000,000 visits), runs the
// first update of each in a fresh child process through the real extraction
// library, then one more day and the daily update on the heavy profile, and
// times the host's listing calls. The last line sums it up for scripts:
//   ratio_first=R1 ratio_daily=R2 exponent=E peak_mb=M recom_ms=L search_ms=S

#include <CLI/CLI.hpp>

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <string>
#include <vector>

#include "child_update.h"
#include "floors.h"
#include "harvest/fixture/profile_fixture.h"
#include "host_calls.h"
#include "stats.h"

namespace corvane::bench {
namespace {

namespace fs = std::filesystem;

// The newest day of every fixture history; the first update runs that
// evening, the daily update the evening after.
constexpr char kLastDay[] = "2026-11-20";
constexpr char kNextDay[] = "2026-11-21";

struct SizeResult {
  std::string label;
  int64_t visits = 0;
  UpdateRun first;
  FloorRun importFloor;
};

// A folder of its own under the system's temporary folder, removed at exit
// unless --keep.
class ScratchFolder {
 public:
  explicit ScratchFolder(bool keep) : m_keep(keep) {
    std::string pattern = (fs::temp_directory_path() / "corvane-bench-XXXXXX").string();
    if (mkdtemp(pattern.data()) != nullptr) m_path = pattern;
  }
  ~ScratchFolder() {
    std::error_code ignored;
    if (!m_keep && !m_path.empty()) fs::remove_all(m_path, ignored);
  }
  const std::string& Path() const { return m_path; }

 private:
  std::string m_path;
  bool m_keep;
};

fixture::ProfileSpec HeavySpec(double scale, int days, int visitsPerDay) {
  fixture::ProfileSpec spec;
  spec.days = days;
  spec.visitsPerDay = static_cast<int>(visitsPerDay * scale);
  spec.distinctUrls = static_cast<int>(30000 * scale * visitsPerDay / 1500);
  spec.hosts = static_cast<int>(3000 * scale * visitsPerDay / 1500);
  spec.bookmarks = 1000;
  spec.lastDay = kLastDay;
  spec.seed = 7;
  return spec;
}

// Copies the sample white list into the data folder, as the host does.
bool InstallWhiteList(const std::string& appData) {
  fs::path source = fs::path(CORVANE_SOURCE_DIR) / "data" / "WhiteList.js";
  fs::path target = fs::path(appData) / "CorvaneApp" / "WhiteList.js";
  std::error_code error;
  fs::create_directories(target.parent_path(), error);
  if (!fs::exists(source)) return false;
  fs::copy_file(source, target, fs::copy_options::overwrite_existing, error);
  return !error;
}

struct Profile {
  std::string home;
  std::string appData;
};

// A data folder of its own for one run, with the sample white list in it.
std::string FreshDataFolder(const std::string& path) {
  fs::remove_all(path);
  fs::create_directories(path);
  if (!InstallWhiteList(path)) std::fprintf(stderr, "note: no sample white list installed\n");
  return path;
}

bool PrepareHome(const std::string& root, const fixture::ProfileSpec& spec, Profile* profile) {
  profile->home = root + "/home";
  fs::create_directories(profile->home);
  std::string error;
  if (!fixture::WriteChromiumProfile(profile->home, spec, &error) ||
      !fixture::WriteDefaultBrowser(profile->home, fixture::Family::kChromium, &error)) {
    std::fprintf(stderr, "fixture: %s\n", error.c_str());
    return false;
  }
  return true;
}

// The middle of several runs of one measurement: a single run on a shared
// machine is off by a tenth or more now and then. The peak is the highest.
UpdateRun MedianUpdate(const std::vector<UpdateRun>& runs) {
  UpdateRun median;
  std::vector<double> seconds;
  for (const UpdateRun& run : runs) {
    if (!run.ok) return run;
    seconds.push_back(run.seconds);
    median.peakMb = std::max(median.peakMb, run.peakMb);
  }
  median.ok = !runs.empty();
  median.seconds = Quantile(seconds, 0.5);
  return median;
}

FloorRun MedianFloor(const std::vector<FloorRun>& runs) {
  FloorRun median;
  std::vector<double> seconds;
  for (const FloorRun& run : runs) seconds.push_back(run.seconds);
  median.seconds = Quantile(seconds, 0.5);
  median.rows = runs.empty() ? 0 : runs.front().rows;
  return median;
}

SizeResult MeasureFirstUpdate(const std::string& self, const std::string& root, const std::string& label,
                              const fixture::ProfileSpec& spec, int runs, Profile* profile) {
  SizeResult result;
  result.label = label;
  result.visits = static_cast<int64_t>(spec.days) * spec.visitsPerDay;
  if (!PrepareHome(root, spec, profile)) return result;
  std::vector<FloorRun> floors;
  std::vector<UpdateRun> updates;
  for (int run = 0; run < runs; ++run) {
    floors.push_back(MeasureImportFloor(fixture::ChromiumHistoryPath(profile->home), root + "/floor"));
    std::string appData = FreshDataFolder(root + "/appdata-" + std::to_string(run));
    if (run == 0) profile->appData = appData;
    updates.push_back(RunUpdateInChild(self, {profile->home, appData, std::string(kLastDay) + " 21:00:00"}));
  }
  result.importFloor = MedianFloor(floors);
  result.first = MedianUpdate(updates);
  if (!result.first.ok) std::fprintf(stderr, "%s: %s\n", label.c_str(), result.first.error.c_str());
  return result;
}

void PrintSize(const SizeResult& size) {
  std::printf("%-22s %9lld visits  update %8.3f s  import floor %8.3f s (%lld rows)  ratio %5.2f  peak %7.1f MB\n",
              size.label.c_str(), static_cast<long long>(size.visits), size.first.seconds, size.importFloor.seconds,
              static_cast<long long>(size.importFloor.rows),
              size.importFloor.seconds > 0 ? size.first.seconds / size.importFloor.seconds : 0.0, size.first.peakMb);
}

void SetEnvironment(const Profile& profile, const std::string& now) {
  setenv("HOME", profile.home.c_str(), 1);
  setenv("XDG_CONFIG_HOME", (profile.home + "/.config").c_str(), 1);
  setenv("CORVANE_APPDATA", profile.appData.c_str(), 1);
  setenv("CORVANE_TEST_NOW", now.c_str(), 1);
}

struct Options {
  bool tiny = false;
  bool quick = false;
  bool stress = false;
  bool keep = false;
  size_t repetitions = 200;
  int runs = 3;
};

void PrintCalls(const std::vector<CallTiming>& calls, double* lpRecomMs, double* lpSearchMs) {
  for (const CallTiming& call : calls) {
    std::printf("%-22s median %8.3f ms  p99 %8.3f ms  over %zu calls%s\n", call.name.c_str(), call.medianMs,
                call.p99Ms, call.calls, call.ok ? "" : "  (a call failed)");
    if (call.name == "GetRecomURLs(20)") *lpRecomMs = call.medianMs;
    if (call.name == "history SearchURLs") *lpSearchMs = call.medianMs;
  }
}

}  // namespace

int RunHostCalls(const std::string& appData, size_t repetitions) {
  setenv("CORVANE_APPDATA", appData.c_str(), 1);
  setenv("CORVANE_TEST_NOW", (std::string(kNextDay) + " 21:30:00").c_str(), 1);
  double recomMs = 0;
  double searchMs = 0;
  PrintCalls(MeasureHostCalls(repetitions), &recomMs, &searchMs);
  return 0;
}

namespace {

int RunBenchmark(const std::string& self, const Options& options) {
  ScratchFolder scratch(options.keep);
  if (scratch.Path().empty()) return 2;
  const int days = options.tiny ? 4 : 90;
  const int perDay = options.tiny ? 40 : 1500;
  std::vector<SizeResult> sizes;
  std::vector<std::pair<double, double>> growth;
  Profile heavy;
  std::vector<double> scales = {1.0, 2.0, 4.0};
  if (options.quick) scales = {1.0};
  for (double scale : scales) {
    Profile profile;
    std::string root = scratch.Path() + "/x" + std::to_string(static_cast<int>(scale));
    std::string label = "first update " + std::to_string(static_cast<int>(scale)) + "x";
    sizes.push_back(MeasureFirstUpdate(self, root, label, HeavySpec(scale, days, perDay), options.runs, &profile));
    PrintSize(sizes.back());
    if (!sizes.back().first.ok) return 1;
    growth.emplace_back(static_cast<double>(sizes.back().visits), sizes.back().first.seconds);
    if (scale == 1.0) heavy = profile;
  }
  if (options.stress) {
    Profile stress;
    int stressPerDay = 1000000 / days + 1;
    sizes.push_back(MeasureFirstUpdate(self, scratch.Path() + "/stress", "first update stress",
                                       HeavySpec(1.0, days, stressPerDay), 1, &stress));
    PrintSize(sizes.back());
  }

  // One more day on the heavy profile, and the next evening's update.
  fixture::ProfileSpec heavySpec = HeavySpec(1.0, days, perDay);
  std::string error;
  if (!fixture::AppendChromiumDay(heavy.home, heavySpec, kNextDay, &error)) {
    std::fprintf(stderr, "fixture: %s\n", error.c_str());
    return 1;
  }
  // Each run starts from a copy of the data folder as the first update left
  // it.
  std::vector<FloorRun> importFloors;
  std::vector<FloorRun> analysisFloors;
  std::vector<UpdateRun> dailies;
  std::string dailyData;
  for (int run = 0; run < options.runs; ++run) {
    importFloors.push_back(
        MeasureImportFloor(fixture::ChromiumHistoryPath(heavy.home), scratch.Path() + "/floor-daily"));
    std::string appData = scratch.Path() + "/daily-" + std::to_string(run);
    fs::remove_all(appData);
    fs::copy(heavy.appData, appData, fs::copy_options::recursive);
    if (run == 0) dailyData = appData;
    dailies.push_back(RunUpdateInChild(self, {heavy.home, appData, std::string(kNextDay) + " 21:00:00"}));
    if (!dailies.back().ok) {
      std::fprintf(stderr, "daily update: %s\n", dailies.back().error.c_str());
      return 1;
    }
    analysisFloors.push_back(MeasureAnalysisFloor(appData + "/CorvaneApp/CorvaneAppDB.db"));
  }
  const FloorRun importFloor = MedianFloor(importFloors);
  const FloorRun analysisFloor = MedianFloor(analysisFloors);
  const UpdateRun daily = MedianUpdate(dailies);
  heavy.appData = dailyData;
  double dailyFloor = importFloor.seconds + analysisFloor.seconds;
  std::printf("%-22s %9d visits  update %8.3f s  floors %8.3f s (import %.3f s, analysis %.3f s over %lld rows)  "
              "ratio %5.2f  peak %7.1f MB\n",
              "daily update 1x", perDay, daily.seconds, dailyFloor, importFloor.seconds, analysisFloor.seconds,
              static_cast<long long>(analysisFloor.rows), dailyFloor > 0 ? daily.seconds / dailyFloor : 0.0,
              daily.peakMb);

  // The host's calls, in this process, on the heavy profile's data folder.
  SetEnvironment(heavy, std::string(kNextDay) + " 21:30:00");
  double recomMs = 0;
  double searchMs = 0;
  PrintCalls(MeasureHostCalls(options.repetitions), &recomMs, &searchMs);

  const SizeResult& first = sizes.front();
  double ratioFirst = first.importFloor.seconds > 0 ? first.first.seconds / first.importFloor.seconds : 0;
  double ratioDaily = dailyFloor > 0 ? daily.seconds / dailyFloor : 0;
  std::printf("ratio_first=%.2f ratio_daily=%.2f exponent=%.2f peak_mb=%.1f recom_ms=%.3f search_ms=%.3f\n",
              ratioFirst, ratioDaily, FitExponent(growth), first.first.peakMb, recomMs, searchMs);
  return 0;
}

}  // namespace
}  // namespace corvane::bench

int main(int argc, char** argv) {
  CLI::App app{"Update and serving costs of the Corvane data provider on fixture profiles"};
  corvane::bench::Options options;
  bool child = false;
  std::string hostCallsOn;
  app.add_flag("--tiny", options.tiny, "a few days of a few visits: checks that the benchmark works");
  app.add_flag("--stress", options.stress, "also the first update of 1,000,000 visits");
  app.add_flag("--quick", options.quick, "only the heavy size: no growth exponent");
  app.add_flag("--keep", options.keep, "keep the scratch folder");
  app.add_option("--repetitions", options.repetitions, "calls per timed host call")->check(CLI::PositiveNumber);
  app.add_option("--runs", options.runs, "runs of each update and floor; the median is reported")
      ->check(CLI::PositiveNumber);
  app.add_flag("--child-update", child, "internal: run one update and report it")->group("");
  app.add_option("--host-calls-on", hostCallsOn, "only time the host calls on a kept data folder (for profiling)");
  CLI11_PARSE(app, argc, argv);
  if (child) return corvane::bench::ChildUpdateMain();
  if (!hostCallsOn.empty()) return corvane::bench::RunHostCalls(hostCallsOn, options.repetitions);
  char self[4096];
  ssize_t length = readlink("/proc/self/exe", self, sizeof(self) - 1);
  if (length <= 0) return 2;
  self[length] = '\0';
  return corvane::bench::RunBenchmark(self, options);
}
