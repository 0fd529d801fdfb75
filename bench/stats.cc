#include "stats.h"

#include <algorithm>
#include <cmath>

namespace corvane::bench {

double Quantile(std::vector<double> samples, double q) {
  if (samples.empty()) return 0;
  std::sort(samples.begin(), samples.end());
  size_t rank = static_cast<size_t>(std::ceil(q * static_cast<double>(samples.size())));
  if (rank > 0) rank -= 1;
  return samples[std::min(rank, samples.size() - 1)];
}

double FitExponent(const std::vector<std::pair<double, double>>& points) {
  double n = static_cast<double>(points.size());
  double sx = 0, sy = 0, sxx = 0, sxy = 0;
  for (const auto& [x, y] : points) {
    double lx = std::log(x), ly = std::log(y);
    sx += lx;
    sy += ly;
    sxx += lx * lx;
    sxy += lx * ly;
  }
  double denominator = n * sxx - sx * sx;
  return denominator == 0 ? 0 : (n * sxy - sx * sy) / denominator;
}

}  // namespace corvane::bench
