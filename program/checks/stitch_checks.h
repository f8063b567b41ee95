// What makes a stitched picture meaningless or poor, found before it is made.
#pragma once

#include "checks/finding.h"
#include "geometry/stitch_pair.h"

namespace fisheye_calibration::program {

Findings checkStitch(const StitchPair& pair, const SharedPoints& shared);

}  // namespace fisheye_calibration::program
