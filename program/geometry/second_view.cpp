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

std::optional<cv::Point2d> bedPointAt(const FishEyeCalibrationParam& param, cv::Point2d raw,
                                      cv::Point2d start) {
  constexpr int kMostSteps = 30;
  constexpr double kCloseEnough = 2e-3;  // raw pixels; the conversion's floats resolve about 1e-4
  const auto seenAt = [&](cv::Point2d position) {
    return cv::Point2d(rawPosition(param, position));
  };
  // A step of a few pixels on the bed: large compared with the floats' resolution, small compared
  // with the bed.
  const double h = 4 * std::abs(static_cast<double>(param.Pixel));
  if (!(h > 0) || !std::isfinite(h)) {
    return std::nullopt;
  }
  cv::Point2d bed = start;
  for (int step = 0; step < kMostSteps; ++step) {
    const cv::Point2d miss = raw - seenAt(bed);
    const double length = std::hypot(miss.x, miss.y);
    if (!std::isfinite(length)) {
      return std::nullopt;
    }
    if (length < kCloseEnough) {
      return bed;
    }
    const cv::Point2d alongX = (seenAt({bed.x + h, bed.y}) - seenAt({bed.x - h, bed.y})) / (2 * h);
    const cv::Point2d alongY = (seenAt({bed.x, bed.y + h}) - seenAt({bed.x, bed.y - h})) / (2 * h);
    const double determinant = alongX.x * alongY.y - alongX.y * alongY.x;
    if (!(std::abs(determinant) > 0)) {
      return std::nullopt;
    }
    bed.x += (miss.x * alongY.y - miss.y * alongY.x) / determinant;
    bed.y += (alongX.x * miss.y - alongX.y * miss.x) / determinant;
  }
  return std::nullopt;
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
