// Uses the static library with its inner headers: the camera model itself, next to the public
// header.
#include <fisheye/fisheye.h>
#include <fisheye/internal.h>
#include <fisheye_calibration.h>

#include <cmath>
#include <cstdio>
#include <opencv2/core.hpp>
#include <vector>

using namespace fisheye_calibration;

int main() {
  const cv::Matx33d K(400, 0, 320, 0, 500, 240, 0, 0, 1);
  const std::vector<cv::Point3d> worldPoints{{2, 0, 0}};
  std::vector<cv::Point2d> rawPoints;
  fisheye::projectPoints(worldPoints, rawPoints, cv::Vec3d(0, 0, 0), cv::Vec3d(0, 0, 2), K,
                         cv::Vec2d(0.1, -0.05));
  // theta = atan(2/2) = pi/4, theta_d = theta + 0.1 theta^2 - 0.05 theta^3 = 0.822859537
  const double expected = 320 + 400 * 0.822859537;
  if (rawPoints.size() != 1 || !(std::fabs(rawPoints[0].x - expected) < 1e-6)) {
    std::printf("x is not %.9f\n", expected);
    return 1;
  }
  // The inner record and the public one, from the two include folders.
  return internal::IntrinsicParams().estimateMask.size() == 7 &&
                 sizeof(FishEyeCalibrationParam) == 232
             ? 0
             : 1;
}
