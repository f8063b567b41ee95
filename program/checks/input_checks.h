// What makes a calibration poor or the solver diverge, found from the points alone.
#pragma once

#include <cstddef>
#include <vector>

#include "base/size.h"
#include "checks/finding.h"
#include "fisheye_calibration.h"

namespace fisheye_calibration::program {

constexpr std::size_t kFewestPoints = 9;

// What is wrong or suspicious about one view's points.
Findings checkInput(const std::vector<CalibrationPoint>& points, const Size& image);

// SingleCamCalibration starts from a focal length of max(W, H)/pi, with which a point at max(W,
// H)/2 from the centre lies at a right angle to the optical axis; beyond that it always diverges.
double solverReach(const Size& image);

// The points for which it diverges or may diverge.
Findings checkReach(const std::vector<CalibrationPoint>& points, const Size& image);

}  // namespace fisheye_calibration::program
