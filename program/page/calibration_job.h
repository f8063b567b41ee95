// The calculations behind the page: a calibration as `calibrate` makes it, what a view would gain,
// and two cameras stitched.
#pragma once

#include <functional>
#include <memory>
#include <opencv2/core.hpp>
#include <optional>
#include <string>
#include <vector>

#include "calibration/bed_motion.h"
#include "calibration/camera_choice.h"
#include "calibration/remedy.h"
#include "calibration/robust_camera.h"
#include "calibration/seen_bed.h"
#include "reports/accuracy_report.h"
#include "reports/calibration_json.h"

namespace fisheye_calibration::program {

struct CalibrationWish {
  std::vector<TargetView> views;
  std::size_t bedView = 0;
  Size image;
  std::optional<cv::Rect2d> bed;  // the errors are judged on it
  double tolerance = 0;           // mm; 0: none
  bool forStitching = false;      // the corrected picture has twice the frame's size
  cv::Mat bedPicture;             // the bed's view, grey; for the report
};

struct CalibrationOutcome {
  RobustRequest request;
  RobustCamera robust;
  ChosenCamera chosen;
  std::vector<Remedy> remedies;  // the one that helps most first
  Verdict verdict;
  double tolerance = 0;
  std::optional<SeenShares> seen;  // of the bed, if it is known
  std::vector<std::string> warnings;
  bool trusted = false;
  cv::Mat bedPicture;
};

// Told the share that is done, 0 ... 1, and what comes next.
using JobProgress = std::function<void(double, const std::string&)>;

// Fails like `calibrate` where the views cannot be used.
CalibrationOutcome calibrated(const CalibrationWish& wish, const JobProgress& progress);

CalibrationReport reportOf(const CalibrationOutcome& outcome);

// The bound on the bed that the views give together, at every point of a grid.
struct Expectation {
  BedGrid grid;
  std::vector<double> errors;  // NaN where the picture does not show the bed
  double onBed = 0;            // the largest
};
// Fails if that is nowhere.
Expectation expectationOf(const CalibrationWish& wish);

// The largest bound that these views give at the points at which `before` has one.
double expectedAfter(const CalibrationWish& wish, const Expectation& before);

// How far the bed view is off from its place: `verify` with a fresh view of the target.
BedMotion motionOf(const CalibrationOutcome& outcome, const TargetView& view);

}  // namespace fisheye_calibration::program
