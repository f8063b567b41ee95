// How well two stitched cameras agree at the points that both measured.
#pragma once

#include <opencv2/core/types.hpp>
#include <vector>

#include "geometry/stitch_pair.h"

namespace fisheye_calibration::program {

struct Agreement {
  int pointId = 0;
  cv::Point2d left;   // where on the canvas (picture rows) the left camera's view shows the point
  cv::Point2d right;  // the same for the right camera
  double apart = 0;   // pixels of the canvas between them
  double leftError = 0;  // pixels between `left` and where the canvas's record puts the bed point
  double rightError = 0;
  double leftRaw = 0;  // raw pixels between the measured point and the record's projection
  double rightRaw = 0;
};

// At every shared point whose measured pixels can be carried to the bed; `dual` is the record of
// the whole canvas.
std::vector<Agreement> agreementAt(const StitchPair& pair, const SharedPoints& shared,
                                   const DualFishEyeCalibrationParam& dual);

double rootMeanSquare(const std::vector<Agreement>& agreement, double Agreement::*error);

// NaN if one of them is.
double worstApart(const std::vector<Agreement>& agreement);

}  // namespace fisheye_calibration::program
