// The usual value among many, of which some may be far off.
#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace fisheye_calibration::program {

// The upper one of the two in the middle of an even number of values; there is at least one.
inline double medianOf(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

}  // namespace fisheye_calibration::program
