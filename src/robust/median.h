// The median of numbers.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

namespace fisheye_calibration::robust {

// The upper one of the middle two of an even count; `values` must not be empty. NaN counts as
// larger than any number: it has to have a place in the order.
inline double median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end(),
                   [](double a, double b) { return a < b || (std::isnan(b) && !std::isnan(a)); });
  return *middle;
}

}  // namespace fisheye_calibration::robust
