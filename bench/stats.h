// stats.h: the few statistics the benchmark reports.

#ifndef CORVANE_BENCH_STATS_H_
#define CORVANE_BENCH_STATS_H_

#include <utility>
#include <vector>

namespace corvane::bench {

// The value at quantile q (0..1) of the samples, nearest rank; 0 for none.
double Quantile(std::vector<double> samples, double q);

// Least-squares slope of log(y) over log(x): the exponent e of y ~ x^e.
double FitExponent(const std::vector<std::pair<double, double>>& points);

}  // namespace corvane::bench

#endif  // CORVANE_BENCH_STATS_H_
