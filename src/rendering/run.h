// Pixels are handled in runs, short enough for the first-level cache.
#pragma once

#include <cstddef>
#include <limits>

namespace fisheye_calibration::rendering {

// Arrays of a run always have this length, also where fewer pixels are wanted.
constexpr std::size_t kRun = 64;

// Marks a pixel without a position, in both coordinates. A real position is never written so: only
// the low 21 bits count, and they can be written in another way.
constexpr int kNowhere = std::numeric_limits<int>::max();

}  // namespace fisheye_calibration::rendering
