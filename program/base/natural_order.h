// The order in which people list names: "frame2.png" before "frame10.png".
#pragma once

#include <string_view>

namespace fisheye_calibration::program {

// True if `a` stands before `b`. Runs of digits count as whole numbers of any length, all else byte
// by byte; names that differ in leading zeros only are ordered as plain texts.
bool naturallyBefore(std::string_view a, std::string_view b);

}  // namespace fisheye_calibration::program
