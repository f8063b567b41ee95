#include "calibration/bed_accuracy.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

#include "calibration/seen_bed.h"
#include "geometry/conversions.h"
#include "geometry/point_spread.h"
#include "single/record.h"

namespace fisheye_calibration::program {
namespace {

constexpr int kBedCells = 96;
constexpr int kTargetCells = 16;
constexpr double kAround = 1.5;  // of the target's box

cv::Rect2d scaledAboutCentre(const cv::Rect2d& area, double factor) {
  const cv::Point2d centre = (area.tl() + area.br()) / 2;
  const cv::Size2d size(area.width * factor, area.height * factor);
  return {centre - cv::Point2d(size.width, size.height) / 2, size};
}

std::vector<double> errorsAt(const robust::BedView& robust, const FishEyeCalibrationParam& record,
                             const Size& image, const BedGrid& grid) {
  const std::vector<cv::Point2d> points = grid.points();
  const lens::Pose pose{single::rotationVector(record), single::translation(record)};
  std::vector<double> errors =
      robust::judgedBedErrors(robust, single::rawCamera(record), pose, points);
  for (std::size_t i = 0; i < points.size(); ++i) {
    if (!isInPicture(rawPosition(record, points[i]), image)) {
      errors[i] = std::numeric_limits<double>::quiet_NaN();
    }
  }
  return errors;
}

}  // namespace

cv::Rect2d targetBox(const std::vector<CalibrationPoint>& points) {
  return boxAround(bedPositions(points));
}

cv::Rect2d shownArea(const FishEyeCalibrationParam& record, const Size& corrected) {
  const cv::Point2f centre = centreOf(corrected);
  const cv::Point2d first = bedPositionAt(record, {-0.5f, -0.5f}, centre);
  const cv::Point2d last = bedPositionAt(
      record,
      {static_cast<float>(corrected.width) - 0.5f, static_cast<float>(corrected.height) - 0.5f},
      centre);
  return {first, last};
}

BedAccuracy unknownAccuracy(const cv::Rect2d& target) {
  constexpr double kUnknown = std::numeric_limits<double>::quiet_NaN();
  BedAccuracy accuracy;
  accuracy.grid = gridOver(target, kBedCells);
  accuracy.errors.assign(accuracy.grid.points().size(), kUnknown);
  accuracy.insideTarget = accuracy.aroundTarget = accuracy.onBed = kUnknown;
  return accuracy;
}

JudgedBed judgedBed(const CalibrationResult& result) {
  JudgedBed bed;
  bed.grid = gridOver(shownArea(result.param, result.corrected), kBedCells);
  bed.shown = shownAmong(result.param, result.corrected, bed.grid.points());
  return bed;
}

BedAccuracy bedAccuracy(const robust::BedView& robust, const FishEyeCalibrationParam& record,
                        const Size& image, const cv::Rect2d& target, const JudgedBed& bed) {
  const auto largestIn = [&](const cv::Rect2d& area) {
    return largestOf(errorsAt(robust, record, image, gridOver(area, kTargetCells)));
  };
  BedAccuracy accuracy;
  accuracy.grid = bed.grid;
  accuracy.errors = errorsAt(robust, record, image, bed.grid);
  for (std::size_t i = 0; i < accuracy.errors.size(); ++i) {
    if (!bed.shown[i]) {
      accuracy.errors[i] = std::numeric_limits<double>::quiet_NaN();
    }
  }
  accuracy.insideTarget = largestIn(target);
  accuracy.aroundTarget = largestIn(scaledAboutCentre(target, kAround));
  // The picture may leave out a part of the target, which lies on the bed, too. Where nothing of
  // the bed is seen, the target is somewhere else.
  const double seen = largestOf(accuracy.errors);
  accuracy.onBed = std::isnan(seen) ? seen : largestOf({seen, accuracy.insideTarget});
  return accuracy;
}

}  // namespace fisheye_calibration::program
