// How well two stitched cameras agree, as text.
#pragma once

#include <string>
#include <vector>

#include "geometry/stitch_agreement.h"

namespace fisheye_calibration::program {

// Root mean squares and the worst five points, with an explanation of the figures.
std::string describeAgreement(const std::vector<Agreement>& agreement, double unitsPerPixel);

}  // namespace fisheye_calibration::program
