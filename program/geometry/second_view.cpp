#include "geometry/second_view.h"

#include <cmath>

#include "base/text.h"
#include "geometry/conversions.h"
#include "geometry/record_matrices.h"

namespace fisheye_calibration::program {

cv::Point2d secondCorrected(const FishEyeCalibrationParam& param, cv::Point2d c) {
  const Matrix3 H = homographyOf(param);
  const double w = H[6] * c.x + H[7] * c.y + H[8];
  return {(H[0] * c.x + H[1] * c.y + H[2]) / w + static_cast<double>(param.ImageDx),
          (H[3] * c.x + H[4] * c.y + H[5]) / w + static_cast<double>(param.ImageDy)};
}

cv::Point2d renderedPosition(const FishEyeCalibrationParam& param, cv::Point2d bed,
                             const Size& size) {
  return secondCorrected(param, correctedPosition(param, bed, centreOf(size)));
}

double centreShift(const FishEyeCalibrationParam& param, const Size& size) {
  const cv::Point2d centre(size.width * 0.5, size.height * 0.5);
  const cv::Point2d shift = secondCorrected(param, centre) - centre;
  return std::hypot(shift.x, shift.y);
}

std::string sizeComplaint(const FishEyeCalibrationParam& param, const Size& size) {
  const double shift = centreShift(param, size);
  if (shift <= 1) {
    return {};
  }
  return "the second correction was not made for a view of " + sizeText(size) +
         ": it moves the centre by " + general(shift, 3) + " px; calibrate with --corrected-size " +
         sizeText(size);
}

}  // namespace fisheye_calibration::program
