// host_calls.h: the serving calls that a host makes after an update, timed
// over many repetitions through the public boundary.

#ifndef CORVANE_BENCH_HOST_CALLS_H_
#define CORVANE_BENCH_HOST_CALLS_H_

#include <string>
#include <vector>

namespace corvane::bench {

struct CallTiming {
  std::string name;
  double medianMs = 0;
  double p99Ms = 0;
  size_t calls = 0;
  bool ok = true;
};

// Creates a provider on the data folder of $CORVANE_APPDATA (whose update
// already ran today) and times GetRecomURLs(20), GetRecentHistory(20), a
// history listing of 200 rows and the history searches of a person typing
// a few words (each prefix of each word, from its first character on).
std::vector<CallTiming> MeasureHostCalls(size_t repetitions);

}  // namespace corvane::bench

#endif  // CORVANE_BENCH_HOST_CALLS_H_
