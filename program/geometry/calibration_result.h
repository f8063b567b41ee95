// The result of a calibration.
#pragma once

#include <vector>

#include "base/size.h"
#include "fisheye_calibration.h"

namespace fisheye_calibration::program {

struct CalibrationResult {
  bool homographyFound = false;  // what SingleCamCalibration returned
  FishEyeCalibrationParam param{};
  std::vector<CalibrationPoint> points{};  // with the reprojection fields filled
  double rms = 0;                          // reprojection error, pixels
  Size corrected;                          // for which the second correction was made
};

// How far the corrected picture is off the metric grid that it should become, over all points.
struct SecondCorrectionError {
  double worstPixels = 0;  // pixels of the second-corrected picture
  int pointId = 0;
};
SecondCorrectionError secondCorrectionError(const CalibrationResult& result);

}  // namespace fisheye_calibration::program
