// One point carried from one frame to another.
#pragma once

#include <functional>
#include <opencv2/core/types.hpp>
#include <string>

#include "base/size.h"
#include "commands/map_conversion.h"
#include "fisheye_calibration.h"

namespace fisheye_calibration::program {

struct MappedPoint {
  cv::Point2f position;
  std::string refusal;        // why there is no position; empty if there is one
  bool behindCamera = false;  // the position is that of a point which the camera cannot see
};

// A point in the world, or a position in a picture with z = 0.
using PointMapper = std::function<MappedPoint(const cv::Point3f& point)>;

// `corrected` is the size of the corrected picture, for conversions that need it.
PointMapper mapperFor(const Conversion& conversion, const FishEyeCalibrationParam& param,
                      const Size& corrected);

// For a conversion of a stitched picture.
PointMapper mapperFor(const Conversion& conversion, const DualFishEyeCalibrationParam& dual);

}  // namespace fisheye_calibration::program
