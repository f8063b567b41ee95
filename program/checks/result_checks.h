// Whether the result of a calibration is to be trusted.
#pragma once

#include <vector>

#include "checks/finding.h"
#include "commands/arguments.h"
#include "fisheye_calibration.h"

namespace fisheye_calibration::program {

struct CalibrationResult {
  bool homographyFound = false;  // what SingleCamCalibration returned
  FishEyeCalibrationParam param{};
  std::vector<CalibrationPoint> points{};  // with the reprojection fields filled
  double rms = 0;                          // reprojection error, pixels
};

// Of the corrected picture against the metric grid that it is to become, over all points.
struct SecondCorrectionError {
  double worstPixels = 0;  // pixels of the second-corrected picture
  int pointId = 0;
};
SecondCorrectionError secondCorrectionError(const CalibrationResult& result, const Size& corrected);

std::vector<Finding> checkResult(const CalibrationResult& result, const Size& image,
                                 const Size& corrected);

}  // namespace fisheye_calibration::program
