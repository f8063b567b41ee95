// hand-eye: the affine map from raw-image pixels to the work plane.
#pragma once

#include <iosfwd>
#include <string>

namespace fisheye_calibration::program {

struct HandEyeOptions {
  std::string points;
  std::string output;
  std::string plot;  // empty: none
};

int runHandEye(const HandEyeOptions& options, std::ostream& out);

}  // namespace fisheye_calibration::program
