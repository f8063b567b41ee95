#include "registration/hand_eye.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include "registration/affine_fit.h"

namespace fisheye_calibration::registration {
namespace {

// The errors sum over at most this many points but divide by the number of all (compatibility 42):
// hosts' limits are made for that.
constexpr std::size_t kPointsInError = 9;

}  // namespace

bool calibrateHandEye(const std::vector<CalibrationPoint>& points, PairsFile file, double* params,
                      double& errorX, double& errorY) {
  if (points.size() < kFewestPoints || params == nullptr) {
    return false;
  }
  std::vector<cv::Point2f> imagePoints;
  std::vector<cv::Point2f> worldPoints;
  imagePoints.reserve(points.size());
  worldPoints.reserve(points.size());
  for (const CalibrationPoint& point : points) {
    imagePoints.emplace_back(point.ImagePtX, point.ImagePtY);
    worldPoints.emplace_back(point.Xw, point.Yw);
  }

  float fitted[6];
  const auto fit = file == PairsFile::kWrite ? AffineFit : fitAffine;
  if (!fit(imagePoints, worldPoints, fitted)) {
    return false;
  }
  std::copy(std::begin(fitted), std::end(fitted), params);
  const double a = fitted[0], b = fitted[1], c = fitted[2], d = fitted[3], e = fitted[4],
               f = fitted[5];

  // X' = a x + b y + e, Y' = c x + d y + f, error = sqrt(sum over the first nine (Xw - X')^2 / n).
  // Predictions and residuals are 32-bit floats, so their squares are exact in double.
  double sumX = 0.0;
  double sumY = 0.0;
  for (std::size_t i = 0; i < std::min(points.size(), kPointsInError); ++i) {
    const double x = imagePoints[i].x;
    const double y = imagePoints[i].y;
    const double residualX = worldPoints[i].x - static_cast<float>(a * x + b * y + e);
    const double residualY = worldPoints[i].y - static_cast<float>(c * x + d * y + f);
    sumX += residualX * residualX;
    sumY += residualY * residualY;
  }
  const auto n = static_cast<double>(points.size());
  errorX = std::sqrt(sumX / n);
  errorY = std::sqrt(sumY / n);
  return true;
}

}  // namespace fisheye_calibration::registration

using namespace fisheye_calibration::registration;

bool HandEyeCalibration(std::vector<CalibrationPoint> points, double* const params, double& errorX,
                        double& errorY) {
  return calibrateHandEye(points, PairsFile::kWrite, params, errorX, errorY);
}
