// info: a camera's parameter file in readable form, and what in it cannot be.
#pragma once

#include <iosfwd>
#include <string>

namespace fisheye_calibration::program {

int runInfo(const std::string& path, std::ostream& out, std::ostream& messages);

}  // namespace fisheye_calibration::program
