// straighten: the library's perspective aid, with its fixed files prepared.
#pragma once

#include <iosfwd>
#include <string>

namespace fisheye_calibration::program {

struct StraightenOptions {
  std::string points;
  std::string image;
};

int runStraighten(const StraightenOptions& options, std::ostream& out, std::ostream& messages);

}  // namespace fisheye_calibration::program
