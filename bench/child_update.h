// child_update.h: one update of the component, run in a fresh process.
//
// The benchmark re-executes itself with --child-update, so that each update
// starts from a cold process as a host's daily start does, and so that the
// peak resident memory that wait4 reports belongs to that update alone.

#ifndef CORVANE_BENCH_CHILD_UPDATE_H_
#define CORVANE_BENCH_CHILD_UPDATE_H_

#include <string>

namespace corvane::bench {

struct UpdateRun {
  bool ok = false;
  double seconds = 0;    // the Initialize call alone, as the child measured it
  double peakMb = 0;     // peak resident memory of the child process
  std::string error;
};

struct UpdateEnvironment {
  std::string home;      // the browser profile's home
  std::string appData;   // CORVANE_APPDATA
  std::string now;       // CORVANE_TEST_NOW, "YYYY-MM-DD HH:MM:SS"
};

// Runs `self --child-update` with the environment and waits for it.
UpdateRun RunUpdateInChild(const std::string& self, const UpdateEnvironment& environment);

// The child's side: Initialize through the exports, print the time taken.
int ChildUpdateMain();

}  // namespace corvane::bench

#endif  // CORVANE_BENCH_CHILD_UPDATE_H_
