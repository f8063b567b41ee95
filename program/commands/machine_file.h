// The description of a simulated machine.
#pragma once

#include <filesystem>
#include <iosfwd>

#include "simulation/simulated_machine.h"

namespace fisheye_calibration::program {

// Reads a description in JSON. Pictures are named relative to its folder. Fails as bad input,
// naming the file and the place in it.
Machine readMachine(const std::filesystem::path& path, std::ostream& messages);

}  // namespace fisheye_calibration::program
