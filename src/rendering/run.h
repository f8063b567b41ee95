// Pixels are processed in runs short enough for the first-level cache.
#pragma once

#include <cstddef>
#include <limits>

namespace fisheye_calibration::rendering {

// Arrays of a run always have this length, even if fewer pixels are wanted.
constexpr std::size_t kRun = 64;

// Both coordinates of a pixel without a position. No real position is written this way: only the
// low 21 bits count, and other values share them.
constexpr int kNowhere = std::numeric_limits<int>::max();

}  // namespace fisheye_calibration::rendering
