// What makes a stitch meaningless or poor, seen before it is made.
#pragma once

#include <vector>

#include "checks/finding.h"
#include "geometry/stitch_pair.h"

namespace fisheye_calibration::program {

std::vector<Finding> checkStitch(const StitchPair& pair);

}  // namespace fisheye_calibration::program
