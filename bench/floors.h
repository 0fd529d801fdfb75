// floors.h: the least work that any importer and any analysis must do on
// the same files, measured in the same run, so that the component's times
// can be read as multiples of them.

#ifndef CORVANE_BENCH_FLOORS_H_
#define CORVANE_BENCH_FLOORS_H_

#include <cstdint>
#include <string>

namespace corvane::bench {

struct FloorRun {
  double seconds = 0;
  int64_t rows = 0;
};

// Reads the visits that count from a Chromium History file (a private copy)
// and inserts them into a bare table of THistory's shape in a new database,
// with one prepared statement in one transaction.
FloorRun MeasureImportFloor(const std::string& historyFile, const std::string& scratchFolder);

// Reads the rows of the 21 newest dates of THistory once, date by date.
FloorRun MeasureAnalysisFloor(const std::string& databaseFile);

}  // namespace corvane::bench

#endif  // CORVANE_BENCH_FLOORS_H_
