// Magnified arrows over a plan: residuals in a picture, disagreement on the bed.
#pragma once

#include <opencv2/core/types.hpp>
#include <string>
#include <vector>

#include "report_pages/plan.h"

namespace fisheye_calibration::program {

struct Arrow {
  int id = 0;
  cv::Point2d from;          // units of the plan's axes
  cv::Point2d length;        // the same units, not magnified
  std::string text;          // all numbers: shown under the pointer, read aloud
  bool conspicuous = false;  // drawn in another colour
};

// How many times their length the arrows are drawn: 1, 2 or 5 times a power of ten, at which the
// longest reaches a twelfth of the plan's shorter side. 1 if all are of length 0.
double arrowMagnification(const Plan& plan, const std::vector<Arrow>& arrows);

// Arrows that are not finite numbers are drawn as points.
std::string arrowsMarkup(const Plan& plan, const std::vector<Arrow>& arrows, double magnification);

// An arrow of a round length beside the plan with that length in words.
std::string arrowScale(const Plan& plan, double magnification, const std::string& unit);

}  // namespace fisheye_calibration::program
