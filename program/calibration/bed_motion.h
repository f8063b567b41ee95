// How far the camera or the bed has moved since a calibration.
#pragma once

#include <vector>

#include "base/size.h"
#include "calibration/robust_camera.h"
#include "fisheye_calibration.h"

namespace fisheye_calibration::program {

// Where a record places the points of a target that lies at known places on the bed:
//   placed_i ~ mean + shift + R(turn) (bed_i - mean)
struct BedMotion {
  double shift = 0;           // of the points' mean, world units
  double turnDegrees = 0;     // about it, from +X to +Y
  double largest = 0;         // distance of a point from its known place, world units
  std::vector<int> wrongIds;  // points that contradict the others, left out
};

// Fails as a job if the record does not see a point or the points contradict each other.
BedMotion motionSince(const FishEyeCalibrationParam& record, const TargetView& view,
                      const Size& image);

}  // namespace fisheye_calibration::program
