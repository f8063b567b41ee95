// The transform between the corrected images of the two cameras.
#pragma once

#include <array>
#include <opencv2/core.hpp>
#include <optional>

#include "stitching/doubled_view.h"

namespace fisheye_calibration::stitching {

// World points that both cameras saw near the corners of their shared area, in the order top-left,
// top-right, bottom-left, bottom-right. first[i] and second[i] are the same target point.
struct CornerPairs {
  std::array<cv::Point2f, 4> first;
  std::array<cv::Point2f, 4> second;
};

// std::nullopt if the lists share no point or the shared points do not pair. The area is the
// bounding box of the first camera's shared points, which are expected within 0...10000
// (compatibility 48). Of points equally near to a corner, the one with the smallest id is taken.
std::optional<CornerPairs> cornerPairs(const CameraInput& first, const CameraInput& second);

// The pixel of a doubled view that shows a world point:
//   u = (X - DatumPtXw)/Pixel + half.width
//   v = (Y - DatumPtYw)/Pixel + half.height, in picture rows; in buffer rows lastRow - v
// The quotients are 32-bit floats, the sums doubles; each coordinate is narrowed once, at the end.
cv::Point2f viewPixel(const cv::Point2f& world, const FishEyeCalibrationParam& param,
                      const cv::Size2d& half, const std::optional<double>& lastRow);

// Whether the rows of a view are counted from the top, as in the picture, or from the bottom, as in
// the buffer.
enum class Rows { kPicture, kBuffer };

// The perspective transform from pixels of the first doubled view to the pixels of the second one
// that show the same point of the bed. The half sizes of the first view centre the points of both
// cameras (compatibility 49); buffer rows are mirrored at each view's own last row (compatibility
// 50). The elements may have any value, NaN included, if the points span no area or a record is
// unusable.
cv::Matx33d firstToSecond(const CornerPairs& pairs, const CameraInput& first,
                          const CameraInput& second, Rows rows);

}  // namespace fisheye_calibration::stitching
