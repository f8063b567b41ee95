// Where two stitched views are blended.
#pragma once

#include <opencv2/core.hpp>
#include <optional>
#include <vector>

#include "geometry/stitch_agreement.h"
#include "geometry/stitch_pair.h"

namespace fisheye_calibration::program {

struct SeamRow {
  int begin;  // first column that both views fill; the left view's share decreases from here
  int end;    // last column that the left view fills; its share is 0 here
};

// For every row of the left view, from its mask and the right one's (255: no content) and the
// transform left view -> right view. Nothing for rows without overlap.
std::vector<std::optional<SeamRow>> seamRows(const cv::Mat& leftMask, const cv::Mat& rightMask,
                                             const cv::Matx33d& transform);

// The same for a pair, from the masks of its corrected views.
std::vector<std::optional<SeamRow>> seamRows(StitchPair& pair, const SharedPoints& shared);

// The canvas in colour with the beginning of the overlap (blue), its end (red) and the shared
// points: a ring where the left view shows them, a disc where the right one does.
cv::Mat drawSeam(const cv::Mat& canvas, StitchPair& pair, const SharedPoints& shared,
                 const std::vector<Agreement>& agreement);

}  // namespace fisheye_calibration::program
