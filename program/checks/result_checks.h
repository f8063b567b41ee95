// Whether the result of a calibration is to be trusted.
#ifndef HOST_RESULT_CHECKS_H
#define HOST_RESULT_CHECKS_H

#include <vector>

#include "checks/finding.h"
#include "commands/arguments.h"
#include "fisheye_calibration.h"

namespace host {

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

}  // namespace host

#endif  // HOST_RESULT_CHECKS_H
