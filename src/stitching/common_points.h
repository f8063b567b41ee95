// The points that two cameras share.
#pragma once

#include <span>
#include <vector>

#include "fisheye_calibration.h"

namespace fisheye_calibration::stitching {

enum class CameraOfPair { kFirst, kSecond };

struct CommonPoint {
  const CalibrationPoint* point;  // in the list of its camera
  CameraOfPair camera;
};

// What GetCommonPoints appends to its outputs, in the order in which it does.
std::vector<CommonPoint> commonPoints(std::span<const CalibrationPoint> first,
                                      std::span<const CalibrationPoint> second, int idCount);

}  // namespace fisheye_calibration::stitching
