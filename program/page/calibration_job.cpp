#include "page/calibration_job.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "base/failure.h"
#include "base/text.h"
#include "checks/input_checks.h"
#include "checks/result_checks.h"
#include "geometry/bed_grid.h"
#include "geometry/conversions.h"
#include "lens/rotation.h"
#include "reports/picture_report.h"
#include "robust/bed_error.h"

namespace fisheye_calibration::program {
namespace {

constexpr int kCells = 32;  // of the grid along the longer side of the bed

Size doubled(const Size& size) { return {.width = 2 * size.width, .height = 2 * size.height}; }

RobustRequest requestOf(const CalibrationWish& wish) {
  RobustRequest request{.views = wish.views, .bedView = wish.bedView, .image = wish.image};
  if (wish.forStitching) {
    request.picture.size = doubled(wish.image);
  } else if (wish.bed) {
    request.picture.bed = wish.bed;
  }
  return request;
}

void checkPoints(const CalibrationWish& wish, std::vector<std::string>& warnings) {
  if (wish.views.empty()) {
    failJob("take a view first");
  }
  for (const TargetView& view : wish.views) {
    const std::string prefix = wish.views.size() == 1 ? "" : view.name + ": ";
    for (const Finding& finding : checkInput(view.points, wish.image)) {
      if (finding.severity == Severity::kImpossible) {
        failJob(prefix + finding.text);
      }
      warnings.push_back(prefix + finding.text);
    }
  }
}

void addWrongOnes(const CalibrationOutcome& outcome, std::vector<std::string>& warnings) {
  const auto& views = outcome.request.views;
  for (std::size_t j = 0; j < views.size(); ++j) {
    const std::vector<int> ids = wrongIds(outcome.robust.solved, views, j);
    if (!ids.empty()) {
      warnings.push_back(views[j].name + ": " + namedPoints(ids) +
                         (ids.size() == 1 ? " contradicts" : " contradict") +
                         " the other points (left out)");
    }
  }
  for (const std::size_t j : outcome.robust.solved.wrongViews) {
    warnings.push_back(views[j].name + " contradicts the other views (left out)");
  }
}

// The picture for stitching shows more than the bed; what is on the bed counts.
void judgeOnBed(CalibrationOutcome& outcome, const cv::Rect2d& bed) {
  const CalibrationResult& result = outcome.chosen.result;
  JudgedBed judged{.grid = gridOver(bed, kCells)};
  judged.shown = shownAmong(result.param, result.corrected, judged.grid.points());
  outcome.chosen.accuracy = bedAccuracy(outcome.robust.bed, result.param, outcome.request.image,
                                        targetBox(result.points), judged);
}

// The bounds where the picture shows the bed, NaN elsewhere: beyond its edge the model may still
// reach.
std::vector<double> boundsInPicture(const robust::BedView& view, const Size& image,
                                    const std::vector<cv::Point2d>& points) {
  std::vector<double> bounds = robust::bedBounds(view, points);
  const cv::Matx33d R = lens::rotationFromVector(view.pose.om);
  for (std::size_t i = 0; i < points.size(); ++i) {
    const cv::Point2d raw =
        lens::projectPoint(view.camera, R, view.pose.T, {points[i].x, points[i].y, 0});
    if (!isInPicture(raw, image)) {
      bounds[i] = std::numeric_limits<double>::quiet_NaN();
    }
  }
  return bounds;
}

// Says so if the verdict is about a part of the bed only.
Verdict verdictOnSeen(Verdict verdict, const SeenShares& seen) {
  if (seen.nothingShown()) {
    return {false, "redo: the camera does not see the bed; check its place and size in step 1"};
  }
  const std::string share = fixed(100 * (1 - seen.unseen - seen.leftOut), 0);
  if (verdict.good && share != "100") {
    verdict.text += " on the " + share + " % of the bed that this camera sees";
  }
  return verdict;
}

bool checkOutcome(const CalibrationOutcome& outcome, std::vector<std::string>& warnings) {
  const Findings findings = checkResult(outcome.chosen.result, outcome.request.image);
  for (const Finding& finding : findings) {
    warnings.push_back(finding.text);
  }
  return !anyImpossible(findings);
}

}  // namespace

CalibrationOutcome calibrated(const CalibrationWish& wish, const JobProgress& progress) {
  CalibrationOutcome outcome{
      .request = requestOf(wish), .tolerance = wish.tolerance, .bedPicture = wish.bedPicture};
  checkPoints(wish, outcome.warnings);
  progress(0.1, "solving");
  outcome.robust = solveRobustly(outcome.request);
  addWrongOnes(outcome, outcome.warnings);
  progress(0.5, "comparing the solvers");
  outcome.chosen =
      chooseCamera(SolverChoice::kAuto, outcome.robust, outcome.request, wish.tolerance);
  outcome.trusted = checkOutcome(outcome, outcome.warnings);
  const CalibrationResult& result = outcome.chosen.result;
  if (wish.bed) {
    progress(0.7, "measuring what is seen of the bed");
    outcome.seen = seenShares(result.param, wish.image, result.corrected, *wish.bed);
    const std::string missing = describeMissing(*outcome.seen);
    if (!missing.empty()) {
      outcome.warnings.push_back("of the bed, " + missing);
    }
    if (wish.forStitching) {
      judgeOnBed(outcome, *wish.bed);
    }
  }
  progress(0.8, "looking for what would help most");
  outcome.remedies = remediesFor(outcome.robust, outcome.request, outcome.chosen.accuracy);
  const cv::Rect2d target = targetBox(result.points);
  outcome.verdict = verdictOn(outcome.chosen.accuracy, std::hypot(target.width, target.height),
                              wish.tolerance, outcome.remedies);
  if (outcome.seen) {
    outcome.verdict = verdictOnSeen(outcome.verdict, *outcome.seen);
  }
  outcome.remedies = helpfulRemedies(outcome.remedies, outcome.chosen.accuracy.onBed);
  return outcome;
}

CalibrationReport reportOf(const CalibrationOutcome& outcome) {
  return {.request = outcome.request,
          .robust = outcome.robust,
          .chosen = outcome.chosen,
          .remedies = outcome.remedies,
          .verdict = outcome.verdict,
          .tolerance = outcome.tolerance,
          .seen = outcome.seen,
          .warnings = outcome.warnings};
}

Expectation expectationOf(const CalibrationWish& wish) {
  RobustRequest request = requestOf(wish);
  const RobustCamera robust = solveRobustly(request);
  Expectation expectation;
  if (wish.bed) {
    expectation.grid = gridOver(*wish.bed, kCells);
    expectation.errors = boundsInPicture(robust.bed, wish.image, expectation.grid.points());
  } else {
    const BedAccuracy accuracy =
        chooseCamera(SolverChoice::kRobust, robust, request, wish.tolerance).accuracy;
    expectation.grid = accuracy.grid;
    expectation.errors = accuracy.errors;
  }
  expectation.onBed = largestOf(expectation.errors);
  if (std::isnan(expectation.onBed)) {
    failJob("the camera does not see the bed; check its place and size in step 1");
  }
  return expectation;
}

double expectedAfter(const CalibrationWish& wish, const Expectation& before) {
  RobustRequest request = requestOf(wish);
  request.picture = {.size = wish.image};  // the choice of a picture takes longer than the solver
  const RobustCamera robust = solveRobustly(request);
  std::vector<double> errors = robust::bedBounds(robust.bed, before.grid.points());
  for (std::size_t i = 0; i < errors.size(); ++i) {
    errors[i] = std::isnan(before.errors[i]) ? before.errors[i] : errors[i];
  }
  return largestOf(errors);
}

BedMotion motionOf(const CalibrationOutcome& outcome, const TargetView& view) {
  return motionSince(outcome.chosen.result.param, view, outcome.request.image);
}

}  // namespace fisheye_calibration::program
