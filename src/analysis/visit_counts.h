// visit_counts.h: arithmetic on visit counts and scores.
//
// Visit counts come from the browser and may be as large as a 32-bit
// integer holds; the analysis adds and weighs them in 32-bit integers.
// These helpers do so with the wrap-around of 32-bit arithmetic, so that a
// hostile count gives a strange number and never undefined behaviour.

#ifndef CORVANE_ANALYSIS_VISIT_COUNTS_H_
#define CORVANE_ANALYSIS_VISIT_COUNTS_H_

#include <cstdint>

namespace corvane {

[[nodiscard]] inline int32_t AddCounts(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}

[[nodiscard]] inline int32_t MultiplyCounts(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) * static_cast<uint32_t>(b));
}

}  // namespace corvane

#endif  // CORVANE_ANALYSIS_VISIT_COUNTS_H_
