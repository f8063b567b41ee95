// How the second camera's corrected image lies to the first one's.
#pragma once

#include <array>
#include <opencv2/core.hpp>
#include <optional>

#include "stitching/doubled_view.h"

namespace stitching {

// World points that both cameras saw near the corners of the area they share, in the order
// top-left, top-right, bottom-left, bottom-right. Element by element the same target point.
struct CornerPairs {
  std::array<cv::Point2f, 4> first;
  std::array<cv::Point2f, 4> second;
};

// Nothing when the lists share no point or do not pair. The area is the bounding box of the first
// camera's shared points, which are expected within 0...10000; of points equally near a corner the
// one of the smallest id is taken.
std::optional<CornerPairs> cornerPairs(const Camera& first, const Camera& second);

// In which order the rows of a view are counted: as in the picture, from the top, or as in the
// buffer, from the bottom.
enum class Rows { picture, buffer };

// The perspective transform that takes a pixel of the first doubled view to the pixel of the second
// one that shows the same point of the bed. With W1 x H1 the first view's size:
//   u = (X - DatumPtXw)/Pixel + W1/2
//   v = (Y - DatumPtYw)/Pixel + H1/2, in buffer rows (H - 1) - v with the view's own height H
// The first camera's halves centre the second camera's points too. It may hold anything, NaN
// included, when the points span no area or a record is not usable.
cv::Matx33d firstToSecond(const CornerPairs& pairs, const Camera& first, const Camera& second,
                          Rows rows);

}  // namespace stitching
