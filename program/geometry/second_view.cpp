#include "geometry/second_view.h"

#include <cmath>

#include "base/text.h"
#include "geometry/conversions.h"
#include "geometry/record_matrices.h"

namespace fisheye_calibration::program {
namespace {

constexpr double kLargestShift = 1.5;  // pixels; views of odd sizes are half a pixel off

}  // namespace

cv::Point2d secondCorrected(const FishEyeCalibrationParam& param, cv::Point2d c) {
  const Matrix3 H = homographyOf(param);
  const double w = H[6] * c.x + H[7] * c.y + H[8];
  return {(H[0] * c.x + H[1] * c.y + H[2]) / w + static_cast<double>(param.ImageDx),
          (H[3] * c.x + H[4] * c.y + H[5]) / w + static_cast<double>(param.ImageDy)};
}

cv::Point2f renderedCentreOf(const Size& size) {
  const int column = size.width / 2 + size.width % 2;
  const int row = size.height / 2 + size.height % 2;
  return {static_cast<float>(column), static_cast<float>(row)};
}

cv::Point2d renderedPosition(const FishEyeCalibrationParam& param, cv::Point2d bed,
                             const Size& size) {
  return secondCorrected(param, correctedPosition(param, bed, renderedCentreOf(size)));
}

double centreShift(const FishEyeCalibrationParam& param, const Size& size) {
  const cv::Point2f centre = centreOf(size);
  const cv::Point2d shift =
      renderedPosition(param, {param.DatumPtXw, param.DatumPtYw}, size) - cv::Point2d(centre);
  return std::hypot(shift.x, shift.y);
}

std::string sizeComplaint(const FishEyeCalibrationParam& param, const std::optional<Size>& made,
                          const Size& size) {
  if (made) {
    return *made == size ? ""
                         : "the second correction was made for a view of " + sizeText(*made) +
                               ", not of " + sizeText(size);
  }
  const double shift = centreShift(param, size);
  if (shift <= kLargestShift) {
    return {};
  }
  return "the second correction was not made for a view of " + sizeText(size) + ": the view is " +
         general(shift, 3) + " px off the world grid";
}

}  // namespace fisheye_calibration::program
