// Conversions to integers that saturate.
#pragma once

#include <cstdint>
#include <limits>

namespace fisheye_calibration::stitching {

constexpr std::int32_t saturated(std::int64_t value) {
  using Limits = std::numeric_limits<std::int32_t>;
  if (value < Limits::min()) {
    return Limits::min();
  }
  if (value > Limits::max()) {
    return Limits::max();
  }
  return static_cast<std::int32_t>(value);
}

// Truncates toward zero; beyond 64 bits gives the nearest limit, for NaN 0.
constexpr std::int64_t truncated(double value) {
  constexpr double kLimit = 0x1p63;
  if (value >= kLimit) {
    return std::numeric_limits<std::int64_t>::max();
  }
  if (value < -kLimit) {
    return std::numeric_limits<std::int64_t>::min();
  }
  return value == value ? static_cast<std::int64_t>(value) : 0;
}

// Adds one half and truncates toward zero, so -77.4 becomes -76.
constexpr std::int64_t halfAddedAndTruncated(double value) { return truncated(value + 0.5); }

}  // namespace fisheye_calibration::stitching
