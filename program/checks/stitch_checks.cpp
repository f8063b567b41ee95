#include "checks/stitch_checks.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <opencv2/core.hpp>
#include <set>
#include <string>

#include "base/record_fields.h"
#include "base/text.h"
#include "geometry/conversions.h"
#include "geometry/point_spread.h"
#include "geometry/record_matrices.h"
#include "geometry/second_view.h"
#include "geometry/target_points.h"

namespace fisheye_calibration::program {
namespace {

constexpr std::size_t kFewestShared = 4;
constexpr double kLineFlatness = 1e-3;  // breadth to length of three corner points on one line
constexpr double kNearlyLineFlatness = 0.05;
constexpr double kSmallCoverage = 0.1;  // of what both cameras see

void checkBits(const StitchPair& pair, Findings& findings) {
  if (pair.left.frame.bitCount == pair.right.frame.bitCount) {
    return;
  }
  addImpossible(findings, FindingKind::kBitCounts,
                "the left frame has " + std::to_string(pair.left.frame.bitCount) +
                    " bits a pixel and the right one " + std::to_string(pair.right.frame.bitCount) +
                    "; the library stitches frames of the same kind only, grey or colour");
}

void checkFrameSizes(const StitchPair& pair, Findings& findings) {
  const Size& l = pair.left.frame.size;
  const Size& r = pair.right.frame.size;
  if (l == r) {
    return;
  }
  addDoubtful(
      findings, FindingKind::kFrameSizes,
      "the frames differ in size; the library centres the right camera's points on the left "
      "frame's size, which shifts its view by " +
          std::to_string(r.width - l.width) + ", " + std::to_string(r.height - l.height) + " px");
}

void checkCamera(const StitchCamera& camera, Findings& findings) {
  if (!(camera.param.Pixel > 0)) {
    addImpossible(findings, FindingKind::kPixelSize,
                  camera.cameraName + ": Pixel must be greater than 0, it is " +
                      shortest(camera.param.Pixel));
  }
  const std::string complaint = sizeComplaint(camera.param, camera.corrected, camera.viewSize());
  if (!complaint.empty()) {
    addUntrusted(findings, FindingKind::kViewSize,
                 camera.cameraName + ": the stitched view has twice the frame's size, but " +
                     complaint + "; calibrate with --corrected-size " +
                     sizeText(camera.viewSize()));
  }
}

void checkWorldRange(const StitchCamera& camera, Findings& findings) {
  std::vector<int> outside;
  const auto inRange = [](float value) { return value >= 0 && value <= 10000; };
  for (const CalibrationPoint& point : camera.points) {
    if (!inRange(point.Xw) || !inRange(point.Yw)) {
      outside.push_back(point.PointId);
    }
  }
  if (outside.empty()) {
    return;
  }
  addDoubtful(
      findings, FindingKind::kWorldRange,
      camera.pointsName + ": " + namedPoints(outside) +
          " with world coordinates outside 0 ... 10000, which the library's choice of corner "
          "points expects; shift the world's origin",
      outside);
}

void checkIds(const StitchPair& pair, const SharedPoints& shared, Findings& findings) {
  std::set<int> left;
  for (const CalibrationPoint& point : pair.left.points) {
    left.insert(point.PointId);
  }
  std::set<int> used;
  for (const CalibrationPoint& point : shared.left) {
    used.insert(point.PointId);
  }
  std::set<int> dropped;
  for (const CalibrationPoint& point : pair.right.points) {
    const int id = point.PointId;
    if (left.contains(id) && !used.contains(id)) {
      dropped.insert(id);
    }
  }
  if (dropped.empty()) {
    return;
  }
  const std::vector<int> ids(dropped.begin(), dropped.end());
  addDoubtful(findings, FindingKind::kUnusedIds,
              namedPoints(ids) +
                  " shared by both lists but not used: an id must occur once in each list "
                  "and lie from 1 to the sum of their lengths",
              ids);
}

void checkSameWorld(const StitchPair& pair, const SharedPoints& shared, Findings& findings) {
  double worst = 0;
  int id = 0;
  for (std::size_t i = 0; i < shared.left.size(); ++i) {
    const cv::Point2f between = bedPosition(shared.left[i]) - bedPosition(shared.right[i]);
    const double distance = static_cast<double>(std::hypot(between.x, between.y));
    if (distance <= worst) {
      continue;
    }
    worst = distance;
    id = shared.left[i].PointId;
  }
  if (!(worst > static_cast<double>(pair.left.param.Pixel))) {
    return;
  }
  addUntrusted(findings, FindingKind::kWorldsDiffer,
               "the lists give shared points different places on the bed, " + namedPoints({id}) +
                   " by " + general(worst, 4) +
                   " world units; both cameras should be calibrated in one world",
               {id});
}

// Smallest height of a triangle of the four corner points over its longest side.
double cornerFlatness(const std::vector<CalibrationPoint>& points,
                      const std::array<std::size_t, 4>& corners) {
  double flattest = HUGE_VAL;
  for (std::size_t skipped = 0; skipped < 4; ++skipped) {
    std::vector<cv::Point2d> p;
    for (std::size_t k = 0; k < 4; ++k) {
      if (k != skipped) {
        p.push_back(bedPosition(points[corners[k]]));
      }
    }
    const double longest =
        std::max({cv::norm(p[1] - p[0]), cv::norm(p[2] - p[0]), cv::norm(p[2] - p[1])});
    const double area = std::abs((p[1] - p[0]).cross(p[2] - p[0]));
    flattest = std::min(flattest, longest > 0 ? area / (longest * longest) : 0);
  }
  return flattest;
}

void checkCorners(const SharedPoints& shared, Findings& findings) {
  const auto corners = cornerPoints(shared);
  const double flatness =
      std::min(cornerFlatness(shared.left, corners), cornerFlatness(shared.right, corners));
  if (!(flatness < kNearlyLineFlatness)) {
    return;
  }
  std::set<int> ids;
  for (const std::size_t i : corners) {
    ids.insert(shared.left[i].PointId);
  }
  const std::vector<int> named(ids.begin(), ids.end());
  const bool line = flatness < kLineFlatness;
  addFinding(
      findings, line ? Severity::kImpossible : Severity::kDoubtful, FindingKind::kCollinearPoints,
      std::string("the shared points at the corners, by which the library aligns the views (") +
          namedPoints(named) + "), lie " + (line ? "" : "nearly ") +
          "on one line or in one place; they must span an area",
      named);
}

cv::Rect2d bedRectangle(const StitchCamera& camera) {
  const cv::Point2f centre = centreOf(camera.viewSize());
  return {cv::Point2d(bedPositionAt(camera.param, {0, 0}, centre)),
          cv::Point2d(bedPositionAt(camera.param, 2 * centre, centre))};
}

bool sees(const StitchCamera& camera, cv::Point2d bed) {
  if (!(depthOf(camera.param, bed.x, bed.y, 0) > 0)) {
    return false;
  }
  const cv::Point2f raw = rawPosition(camera.param, bed);
  return raw.x >= 0 && raw.y >= 0 && raw.x <= static_cast<float>(camera.frame.size.width - 1) &&
         raw.y <= static_cast<float>(camera.frame.size.height - 1);
}

// Area of the bed that both frames show within both views, from a grid of samples.
double overlapArea(const StitchPair& pair) {
  constexpr int kSamples = 100;  // each way
  const cv::Rect2d both = bedRectangle(pair.left) & bedRectangle(pair.right);
  int seen = 0;
  for (int i = 0; i < kSamples * kSamples; ++i) {
    const int column = i % kSamples;
    const int row = i / kSamples;
    const cv::Point2d bed(both.x + both.width * (column + 0.5) / kSamples,
                          both.y + both.height * (row + 0.5) / kSamples);
    if (sees(pair.left, bed) && sees(pair.right, bed)) {
      ++seen;
    }
  }
  return both.area() * seen / (kSamples * kSamples);
}

void checkCoverage(const StitchPair& pair, const SharedPoints& shared, Findings& findings) {
  const double overlap = overlapArea(pair);
  if (!(overlap > 0)) {
    addDoubtful(findings, FindingKind::kSharedCoverage,
                "by their records the cameras see no part of the bed in common");
    return;
  }
  const double share = hullArea(shared.left, bedPosition) / overlap;
  if (share >= kSmallCoverage) {
    return;
  }
  addDoubtful(findings, FindingKind::kSharedCoverage,
              "the shared points span only " + fixed(100 * share, 1) +
                  " % of the bed that both cameras see; away from them the views may not meet");
}

void checkOrder(const StitchPair& pair, const SharedPoints& shared, Findings& findings) {
  const Size left = pair.left.viewSize();
  const Size right = pair.right.viewSize();
  const cv::Point2d centre =
      applied(viewTransform(pair, shared).inv(), {right.width * 0.5, right.height * 0.5});
  if (!(centre.x < left.width * 0.5)) {
    return;
  }
  addUntrusted(
      findings, FindingKind::kCameraOrder,
      "the right camera looks at what lies left of the left camera's view; what is left of the "
      "canvas is lost, swap --left and --right");
}

// In every field: the solver's results for two cameras are never the same.
void checkSameCamera(const StitchPair& pair, Findings& findings) {
  for (const RecordField& field : recordFields()) {
    if (field.value(pair.left.param) != field.value(pair.right.param)) {
      return;
    }
  }
  addUntrusted(findings, FindingKind::kSameCamera,
               pair.left.cameraName + " and " + pair.right.cameraName + " are the same camera");
}

}  // namespace

Findings checkStitch(const StitchPair& pair, const SharedPoints& shared) {
  Findings findings;
  checkBits(pair, findings);
  checkFrameSizes(pair, findings);
  checkSameCamera(pair, findings);
  for (const StitchCamera* camera : {&pair.left, &pair.right}) {
    checkCamera(*camera, findings);
    checkWorldRange(*camera, findings);
  }
  checkIds(pair, shared, findings);
  if (!shared.paired()) {
    addImpossible(
        findings, FindingKind::kUnusedIds,
        "an id occurs twice in one list and not in the other, so the points cannot be paired");
    return findings;
  }
  if (shared.left.size() < kFewestShared) {
    addImpossible(findings, FindingKind::kFewSharedPoints,
                  std::to_string(shared.left.size()) +
                      (shared.left.size() == 1 ? " point is" : " points are") +
                      " shared by the two lists (by PointId), at least 4 are needed");
    return findings;
  }
  checkSameWorld(pair, shared, findings);
  checkCorners(shared, findings);
  if (anyImpossible(findings)) {
    return findings;
  }
  checkCoverage(pair, shared, findings);
  checkOrder(pair, shared, findings);
  return findings;
}

}  // namespace fisheye_calibration::program
