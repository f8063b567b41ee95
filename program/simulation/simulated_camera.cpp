#include "simulation/simulated_camera.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <opencv2/calib3d.hpp>

#include "geometry/conversions.h"
#include "geometry/raw_ray.h"
#include "geometry/record_matrices.h"
#include "single/placed_view.h"

namespace fisheye_calibration::program {
namespace {

using Param = FishEyeCalibrationParam;

cv::Matx33d turned(const cv::Vec3d& degrees) {
  cv::Matx33d R;
  cv::Rodrigues(degrees * (std::numbers::pi / 180), R);
  return R;
}

void setPose(const cv::Matx33d& R, const cv::Vec3d& T, Param& param) {
  cv::Vec3d vector;
  cv::Rodrigues(R, vector);
  param.Rx = static_cast<float>(vector[0]);
  param.Ry = static_cast<float>(vector[1]);
  param.Rz = static_cast<float>(vector[2]);
  // The matrix of what is left of the vector.
  const Matrix3 rounded = rotationOfVector(param);
  float* const entries[] = {&param.R1, &param.R2, &param.R3, &param.R4, &param.R5,
                            &param.R6, &param.R7, &param.R8, &param.R9};
  for (std::size_t i = 0; i < rounded.size(); ++i) {
    *entries[i] = static_cast<float>(rounded[i]);
  }
  param.Tx = static_cast<float>(T[0]);
  param.Ty = static_cast<float>(T[1]);
  param.Tz = static_cast<float>(T[2]);
}

// The Z of the lens: that of -R^T T.
double lensHeight(const Param& camera) {
  const cv::Matx33d R(rotationOfVector(camera).data());
  const Vector3 T = translationOf(camera);
  return -(R.t() * cv::Vec3d(T[0], T[1], T[2]))[2];
}

}  // namespace

NominalCamera varied(const NominalCamera& camera, const CameraVariation& by,
                     RandomNumbers& random) {
  const auto within = [&](double most) { return most * (2 * random.uniform() - 1); };
  NominalCamera result = camera;
  const double share = 1 + within(by.focalLength);
  result.fx *= share;
  result.fy *= share;
  result.centre += cv::Point2d(within(by.centre), 0);
  result.centre += cv::Point2d(0, within(by.centre));
  result.k0 += within(by.k);
  result.k1 += within(by.k);
  result.over.x += within(by.place);
  result.over.y += within(by.place);
  result.height += within(by.place);
  for (int i = 0; i < 3; ++i) {
    result.tilt[i] += within(by.tilt);
  }
  return result;
}

TrueCamera trueCamera(const NominalCamera& camera, const cv::Rect2d& bed) {
  TrueCamera result = {.image = camera.size};
  Param& param = result.param;
  param.fx = static_cast<float>(camera.fx);
  param.fy = static_cast<float>(camera.fy);
  param.u0 = static_cast<float>(camera.centre.x);
  param.v0 = static_cast<float>(camera.centre.y);
  param.k0 = camera.k0;
  param.k1 = camera.k1;
  // T = -R C with the lens at C = (X, Y, -height), as Z points away from the camera.
  const cv::Matx33d R = turned(camera.tilt);
  setPose(R, R * cv::Vec3d(-camera.over.x, -camera.over.y, camera.height), param);
  // The view before the second correction must hold the whole bed.
  cv::Point2d reach;
  for (const cv::Point2d& corner :
       {bed.tl(), {bed.x + bed.width, bed.y}, bed.br(), {bed.x, bed.y + bed.height}}) {
    const cv::Point2f at = correctedPosition(param, corner, {0, 0});
    reach.x = std::max(reach.x, std::abs(static_cast<double>(at.x)) + 2);
    reach.y = std::max(reach.y, std::abs(static_cast<double>(at.y)) + 2);
  }
  constexpr double kMostPixels = 16000;  // a side
  // Parameter files keep six decimals.
  const double finest = std::max(bed.width, bed.height) / kMostPixels;
  const double wanted =
      std::max(finest, std::min(bed.width / (2 * reach.x), bed.height / (2 * reach.y)));
  const auto pixel = static_cast<float>(std::floor(wanted * 1e6) / 1e6);
  const auto pixels = [&](double side) {
    return 2 * static_cast<int>(std::ceil(side / static_cast<double>(pixel) / 2));
  };
  result.corrected = {.width = pixels(bed.width), .height = pixels(bed.height)};
  static_cast<void>(single::placeSecondCorrection(bed.tl(), pixel, result.corrected.width,
                                                  result.corrected.height, param));
  return result;
}

bool seesBed(const TrueCamera& camera, const cv::Rect2d& bed) {
  constexpr int kSteps = 32;  // a side
  // From the bed to the picture, as it may be small there, and the other way, as it may be large.
  std::vector<CalibrationPoint> places;
  for (int row = 0; row <= kSteps; ++row) {
    for (int column = 0; column <= kSteps; ++column) {
      CalibrationPoint place{};
      place.Xw = static_cast<float>(bed.x + bed.width * column / kSteps);
      place.Yw = static_cast<float>(bed.y + bed.height * row / kSteps);
      places.push_back(place);
    }
  }
  if (!seenPoints(camera.param, places, camera.image).empty()) {
    return true;
  }
  for (int row = 0; row <= kSteps; ++row) {
    for (int column = 0; column <= kSteps; ++column) {
      const cv::Point2d raw(static_cast<double>(camera.image.width - 1) * column / kSteps,
                            static_cast<double>(camera.image.height - 1) * row / kSteps);
      const SeenPoint seen = bedPointAt(camera.param, raw);
      if (seen.sight == Sight::kBed && bed.contains(seen.bed)) {
        return true;
      }
    }
  }
  return false;
}

double distanceFromBed(const Param& camera) { return std::abs(lensHeight(camera)); }

Param seenFromPlane(const Param& camera, const PlanePose& plane) {
  // With X = Rp (p - c) + c + t for a point p of the plane, R X + T = (R Rp) p + R (c + t - Rp c) +
  // T.
  cv::Matx33d R(rotationOfVector(camera).data());
  const Vector3 translation = translationOf(camera);
  const cv::Vec3d T(translation[0], translation[1], translation[2]);
  const double side = lensHeight(camera) < 0 ? -1 : 1;
  const cv::Matx33d Rp = turned(plane.tilt);
  const cv::Vec3d c(plane.centre.x, plane.centre.y, 0);
  const cv::Vec3d t(plane.move.x, plane.move.y, side * plane.height);
  Param result = camera;
  setPose(R * Rp, R * (c + t - Rp * c) + T, result);
  return result;
}

std::vector<CalibrationPoint> seenPoints(const Param& camera,
                                         const std::vector<CalibrationPoint>& points,
                                         const Size& image) {
  std::vector<CalibrationPoint> seen;
  for (CalibrationPoint point : points) {
    const cv::Point2f at = rawPosition(camera, {point.Xw, point.Yw});
    // A point behind the camera, or where the lens curve has turned back, is not the one that its
    // pixel shows.
    const SeenPoint shown = bedPointAt(camera, at);
    constexpr double kSame = 0.1;  // world units
    const cv::Point2d place(static_cast<double>(point.Xw), static_cast<double>(point.Yw));
    if (isInPicture(at, image) && shown.sight == Sight::kBed &&
        cv::norm(shown.bed - place) < kSame) {
      point.ImagePtX = at.x;
      point.ImagePtY = at.y;
      seen.push_back(point);
    }
  }
  return seen;
}

}  // namespace fisheye_calibration::program
