// The sheet with a target on it, and where on a bed to put it.
#pragma once

#include <string>
#include <vector>

#include "base/size.h"
#include "detection/target_places.h"
#include "drawing/sheet.h"

namespace fisheye_calibration::program {

struct TargetSheet {
  Sheet sheet;
  std::vector<CalibrationPoint> points;  // ImagePt: millimetres on the sheet
};

// The target with a white margin, the ids of each row's first and last point, a caption and a ruler
// of 100 mm.
TargetSheet layOutTarget(const Target& target, const World& world);

// The whole target's extent in steps of the spacing, without the margin.
cv::Size2d extentInSteps(const Target& target);

// The largest spacing in whole millimetres at which the target takes up most of the bed; 0 if there
// is none.
float advisedSpacing(const Target& target, const Size& bed);

// The world position of the first point if the target lies in the middle of a bed from (0, 0) on.
cv::Point2d middleOrigin(const Target& target, double spacing, const Size& bed);

// Lines that say where the target goes on the bed and what to look out for.
std::vector<std::string> adviceFor(const Target& target, const World& world, const Size& bed);

}  // namespace fisheye_calibration::program
