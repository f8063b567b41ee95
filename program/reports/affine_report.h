// The result of a hand-eye fit as text.
#pragma once

#include <string>
#include <vector>

#include "geometry/affine_map.h"

namespace fisheye_calibration::program {

// CSV: "a,b,c,d,e,f" and one line of values that read back exactly.
std::string formatAffine(const AffineMap& map);

// For people: the map, the library's two error figures and the plain RMS, each by its name.
std::string describeAffine(const AffineMap& map, const std::vector<CalibrationPoint>& points);

}  // namespace fisheye_calibration::program
