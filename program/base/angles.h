// Units of angles.
#pragma once

#include <numbers>

namespace fisheye_calibration::program {

constexpr double degrees(double radians) { return radians * (180 / std::numbers::pi); }

}  // namespace fisheye_calibration::program
