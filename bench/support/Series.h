// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <vector>

namespace vantle::bench {

inline double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values.empty() ? 0 : values[values.size() / 2];
}

// One figure of several rounds: the middle one, which a busy machine moves least.
struct Series {
  std::vector<double> values;
  double median() const { return bench::median(values); }
  double least() const { return values.empty() ? 0 : *std::min_element(values.begin(), values.end()); }
};

} // namespace vantle::bench
