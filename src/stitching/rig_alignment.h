// How the second camera's corrected image lies to the first one's.
#pragma once

#include <array>
#include <opencv2/core.hpp>
#include <optional>

#include "stitching/doubled_view.h"

namespace fisheye_calibration::stitching {

// World points that both cameras saw near the corners of the area they share, in the order
// top-left, top-right, bottom-left, bottom-right. Element by element the same target point.
struct CornerPairs {
  std::array<cv::Point2f, 4> first;
  std::array<cv::Point2f, 4> second;
};

// Nothing when the lists share no point or do not pair. The area is the bounding box of the first
// camera's shared points, which are expected within 0...10000; of points equally near a corner the
// one of the smallest id is taken.
std::optional<CornerPairs> cornerPairs(const CameraInput& first, const CameraInput& second);

// Where a doubled view shows a world point:
//   u = (X - DatumPtXw)/Pixel + half.width
//   v = (Y - DatumPtYw)/Pixel + half.height, in picture rows; in buffer rows lastRow - v
// The quotients are 32-bit floats, the sums doubles; each coordinate is narrowed once, at the end.
cv::Point2f viewPixel(const cv::Point2f& world, const FishEyeCalibrationParam& param,
                      const cv::Size2d& half, const std::optional<double>& lastRow);

// In which order the rows of a view are counted: as in the picture, from the top, or as in the
// buffer, from the bottom.
enum class Rows { kPicture, kBuffer };

// The perspective transform that takes a pixel of the first doubled view to the pixel of the second
// one that shows the same point of the bed. The first view's halves centre the points of both
// cameras; buffer rows are mirrored at each view's own last row. It may hold anything, NaN
// included, when the points span no area or a record is not usable.
cv::Matx33d firstToSecond(const CornerPairs& pairs, const CameraInput& first,
                          const CameraInput& second, Rows rows);

}  // namespace fisheye_calibration::stitching
