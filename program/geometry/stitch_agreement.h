// How well two stitched cameras agree at the points that both measured.
#pragma once

#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "geometry/stitch_pair.h"

namespace fisheye_calibration::program {

struct Agreement {
  int pointId;
  cv::Point2d left;   // canvas place (picture rows) at which the left camera's view shows the point
  cv::Point2d right;  // the same of the right camera's
  double apart;       // pixels of the canvas between them
  double leftError;   // pixels between `left` and the place the canvas's record gives the bed point
  double rightError;
  double leftRaw;  // raw pixels between the measured point and the record's projection
  double rightRaw;
};

// At every shared point whose measured pixel can be carried to the bed; `dual` is that of the whole
// canvas.
std::vector<Agreement> agreementAt(const StitchPair& pair, const DualFishEyeCalibrationParam& dual);

double worstApart(const std::vector<Agreement>& agreement);

// Root mean squares and the worst five points, with what the figures are.
std::string describeAgreement(const std::vector<Agreement>& agreement, double unitsPerPixel);

}  // namespace fisheye_calibration::program
