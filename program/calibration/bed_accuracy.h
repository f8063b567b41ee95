// How many millimetres a camera record may be off on the bed, and where.
#pragma once

#include <opencv2/core/types.hpp>
#include <vector>

#include "base/size.h"
#include "fisheye_calibration.h"
#include "geometry/bed_grid.h"
#include "geometry/calibration_result.h"
#include "robust/bed_error.h"

namespace fisheye_calibration::program {

// Bounds that the actual error stays below in at least 95 of 100 calibrations, world units. NaN
// where the camera does not see the bed.
struct BedAccuracy {
  BedGrid grid;                // over the bed
  std::vector<double> errors;  // at its points
  double insideTarget = 0;     // the largest within the target's box
  double aroundTarget = 0;     // ... within a box 1.5 times as large
  double onBed = 0;            // ... of `errors` and inside the target; NaN if no error is known
};

// The box of the target's points on the bed.
cv::Rect2d targetBox(const std::vector<CalibrationPoint>& points);

// The rectangle of the bed that the second-corrected picture of this size shows, from pixel edge to
// pixel edge.
cv::Rect2d shownArea(const FishEyeCalibrationParam& record, const Size& corrected);

// Of a record that nothing can be judged against: NaN everywhere.
BedAccuracy unknownAccuracy(const cv::Rect2d& target);

// The part of the bed on which calibrations are judged.
struct JudgedBed {
  BedGrid grid;
  std::vector<bool> shown;  // whether the corrected picture can show its points
};
JudgedBed judgedBed(const CalibrationResult& result);

// Judges a record against the robust camera. Bed points outside the raw picture are not seen, and
// those that are not shown do not count.
BedAccuracy bedAccuracy(const robust::BedView& robust, const FishEyeCalibrationParam& record,
                        const Size& image, const cv::Rect2d& target, const JudgedBed& bed);

}  // namespace fisheye_calibration::program
