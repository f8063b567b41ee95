// The ray on which a camera sees a raw pixel: WorldToRawImagePoint inverted numerically. The
// library has no mapping from raw pixels.
#pragma once

#include <opencv2/core/types.hpp>
#include <optional>

#include "base/size.h"
#include "fisheye_calibration.h"
#include "geometry/record_matrices.h"

namespace fisheye_calibration::program {

// Direction (a, b, 1) in the camera's frame. Nothing if the pixel lies farther from the principal
// point than the lens curve reaches, up to where it turns back or to 90 degrees off the axis.
std::optional<cv::Point2d> rayThrough(const FishEyeCalibrationParam& param, cv::Point2d raw);

enum class Sight {
  kBed,          // the ray meets the bed
  kBeyondLens,   // no ray belongs to the pixel
  kParallel,     // the ray runs parallel to the bed, or so nearly that no position is known
  kAwayFromBed,  // the ray runs away from the bed: above the horizon
};

struct SeenPoint {
  Sight sight = Sight::kBeyondLens;
  cv::Point2d bed;  // if the ray meets it
};

// Where rays of a camera with this pose meet the bed (Z = 0).
class BedSight {
 public:
  explicit BedSight(const FishEyeCalibrationParam& param)
      : R_(rotationOfVector(param)), T_(translationOf(param)) {}

  // Along the ray (a, b, 1) in the camera's frame.
  SeenPoint along(cv::Point2d ray) const;

 private:
  Matrix3 R_;
  Vector3 T_;
};

// The point of the bed (Z = 0) that the camera sees at a raw pixel.
SeenPoint bedPointAt(const FishEyeCalibrationParam& param, cv::Point2d raw);

// Where the corrected view around `centre` shows the raw pixel, on the bed or not.
std::optional<cv::Point2d> correctedPositionOf(const FishEyeCalibrationParam& param,
                                               cv::Point2d raw, cv::Point2d centre);

}  // namespace fisheye_calibration::program
