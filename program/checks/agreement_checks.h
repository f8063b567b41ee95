// Whether two stitched cameras agree well enough for the stitched picture to be of use.
#pragma once

#include <cstddef>

#include "checks/finding.h"
#include "geometry/stitch_agreement.h"

namespace fisheye_calibration::program {

// `sharedCount` counts the points for which the cameras were to be compared.
Findings checkAgreement(const std::vector<Agreement>& agreement, std::size_t sharedCount);

}  // namespace fisheye_calibration::program
