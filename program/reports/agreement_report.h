// How well two stitched cameras agree, as text.
#pragma once

#include <string>
#include <vector>

#include "geometry/stitch_agreement.h"

namespace fisheye_calibration::program {

// Root mean squares and the worst five points, with what the figures are.
std::string describeAgreement(const std::vector<Agreement>& agreement, double unitsPerPixel);

}  // namespace fisheye_calibration::program
