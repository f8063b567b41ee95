#include "checks/stitch_checks.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <opencv2/imgproc.hpp>
#include <set>
#include <string>

#include "base/record_fields.h"
#include "base/text.h"
#include "geometry/second_view.h"

namespace fisheye_calibration::program {
namespace {

using Findings = std::vector<Finding>;

constexpr std::size_t kFewestShared = 4;
constexpr double kLineFlatness = 1e-3;  // breadth to length of three corner points on one line
constexpr double kNearlyLineFlatness = 0.05;
constexpr double kSmallCoverage = 0.1;  // of what both cameras see

void add(Findings& findings, FindingKind kind, Severity severity, const std::string& text,
         const std::vector<int>& ids = {}) {
  findings.push_back({kind, severity, text, ids});
}

void checkBits(const StitchPair& pair, Findings& findings) {
  if (pair.left.frame.bitCount == pair.right.frame.bitCount) {
    return;
  }
  add(findings, FindingKind::kBitCounts, Severity::kImpossible,
      "the left frame has " + std::to_string(pair.left.frame.bitCount) +
          " bits a pixel and the right one " + std::to_string(pair.right.frame.bitCount) +
          "; the library stitches frames of the same kind only, grey or colour");
}

void checkFrameSizes(const StitchPair& pair, Findings& findings) {
  const Size& l = pair.left.frame.size;
  const Size& r = pair.right.frame.size;
  if (l.width == r.width && l.height == r.height) {
    return;
  }
  add(findings, FindingKind::kFrameSizes, Severity::kDoubtful,
      "the frames differ in size; the library centres the right camera's points on the left "
      "frame's size, which shifts its view by " +
          std::to_string(r.width - l.width) + ", " + std::to_string(r.height - l.height) + " px");
}

void checkCamera(const StitchCamera& camera, Findings& findings) {
  if (!(camera.param.Pixel > 0)) {
    add(findings, FindingKind::kPixelSize, Severity::kImpossible,
        camera.cameraName + ": Pixel must be greater than 0, it is " +
            shortest(camera.param.Pixel));
  }
  const std::string complaint = sizeComplaint(camera.param, camera.viewSize());
  if (!complaint.empty()) {
    add(findings, FindingKind::kViewSize, Severity::kDoubtful,
        camera.cameraName + ": the stitched view has twice the frame's size, but " + complaint);
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
  add(findings, FindingKind::kWorldRange, Severity::kDoubtful,
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
    if (left.count(id) != 0 && used.count(id) == 0) {
      dropped.insert(id);
    }
  }
  if (dropped.empty()) {
    return;
  }
  const std::vector<int> ids(dropped.begin(), dropped.end());
  add(findings, FindingKind::kUnusedIds, Severity::kDoubtful,
      namedPoints(ids) +
          " shared by both lists but not used: an id must occur once in each list "
          "and lie from 1 to the sum of their lengths",
      ids);
}

void checkSameWorld(const StitchPair& pair, const SharedPoints& shared, Findings& findings) {
  double worst = 0;
  int id = 0;
  for (std::size_t i = 0; i < shared.left.size(); ++i) {
    const double distance = static_cast<double>(
        std::hypot(shared.left[i].Xw - shared.right[i].Xw, shared.left[i].Yw - shared.right[i].Yw));
    if (distance <= worst) {
      continue;
    }
    worst = distance;
    id = shared.left[i].PointId;
  }
  if (!(worst > static_cast<double>(pair.left.param.Pixel))) {
    return;
  }
  add(findings, FindingKind::kWorldsDiffer, Severity::kDoubtful,
      "the lists give shared points different places on the bed, " + namedPoints({id}) + " by " +
          general(worst, 4) + " world units; both cameras should be calibrated in one world",
      {id});
}

// Smallest height of a triangle of the four corner points over its longest side.
double cornerFlatness(const std::vector<CalibrationPoint>& points,
                      const std::array<std::size_t, 4>& corners) {
  double flattest = HUGE_VAL;
  for (std::size_t skipped = 0; skipped < 4; ++skipped) {
    std::vector<cv::Point2d> p;
    for (std::size_t k = 0; k < 4; ++k) {
      const CalibrationPoint& point = points[corners[k]];
      if (k != skipped) {
        p.emplace_back(point.Xw, point.Yw);
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
  add(findings, FindingKind::kCollinearPoints, line ? Severity::kImpossible : Severity::kDoubtful,
      std::string("the shared points at the corners, by which the library aligns the views (") +
          namedPoints(named) + "), lie " + (line ? "" : "nearly ") +
          "on one line or in one place; they must span an area",
      named);
}

cv::Rect2d bedRectangle(const StitchCamera& camera) {
  const Size view = camera.viewSize();
  const float cx = static_cast<float>(view.width * 0.5);
  const float cy = static_cast<float>(view.height * 0.5);
  cv::Point2f a;
  cv::Point2f b;
  float unused = 0;
  CorrectedImageToWorldPoint(0, 0, cx, cy, camera.param, a.x, a.y, unused);
  CorrectedImageToWorldPoint(2 * cx, 2 * cy, cx, cy, camera.param, b.x, b.y, unused);
  return {cv::Point2d(a), cv::Point2d(b)};
}

bool sees(const StitchCamera& camera, cv::Point2d bed) {
  if (!(depthOf(camera.param, bed.x, bed.y, 0) > 0)) {
    return false;
  }
  float x = 0;
  float y = 0;
  WorldToRawImagePoint(static_cast<float>(bed.x), static_cast<float>(bed.y), 0, camera.param, x, y);
  return x >= 0 && y >= 0 && x <= static_cast<float>(camera.frame.size.width - 1) &&
         y <= static_cast<float>(camera.frame.size.height - 1);
}

// Area of the bed that both frames show within both views, from a grid of samples.
double overlapArea(const StitchPair& pair) {
  constexpr int kSamples = 100;  // each way
  const cv::Rect2d both = bedRectangle(pair.left) & bedRectangle(pair.right);
  int seen = 0;
  for (int i = 0; i < kSamples * kSamples; ++i) {
    const cv::Point2d bed(both.x + both.width * (i % kSamples + 0.5) / kSamples,
                          both.y + both.height * (i / kSamples + 0.5) / kSamples);
    if (sees(pair.left, bed) && sees(pair.right, bed)) {
      ++seen;
    }
  }
  return both.area() * seen / (kSamples * kSamples);
}

void checkCoverage(const StitchPair& pair, const SharedPoints& shared, Findings& findings) {
  const double overlap = overlapArea(pair);
  if (!(overlap > 0)) {
    add(findings, FindingKind::kSharedCoverage, Severity::kDoubtful,
        "by their records the cameras see no part of the bed in common");
    return;
  }
  std::vector<cv::Point2f> bed;
  for (const CalibrationPoint& point : shared.left) {
    bed.emplace_back(point.Xw, point.Yw);
  }
  std::vector<cv::Point2f> hull;
  cv::convexHull(bed, hull);
  const double share = cv::contourArea(hull) / overlap;
  if (share >= kSmallCoverage) {
    return;
  }
  add(findings, FindingKind::kSharedCoverage, Severity::kDoubtful,
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
  add(findings, FindingKind::kCameraOrder, Severity::kDoubtful,
      "the right camera looks at what lies left of the left camera's view; what is left of the "
      "canvas is lost, swap --left and --right");
}

}  // namespace

std::vector<Finding> checkStitch(const StitchPair& pair) {
  Findings findings;
  checkBits(pair, findings);
  checkFrameSizes(pair, findings);
  for (const StitchCamera* camera : {&pair.left, &pair.right}) {
    checkCamera(*camera, findings);
    checkWorldRange(*camera, findings);
  }
  const SharedPoints shared = sharedPoints(pair);
  checkIds(pair, shared, findings);
  if (!shared.paired()) {
    add(findings, FindingKind::kUnusedIds, Severity::kImpossible,
        "an id occurs twice in one list and not in the other, so the points cannot be paired");
    return findings;
  }
  if (shared.left.size() < kFewestShared) {
    add(findings, FindingKind::kFewSharedPoints, Severity::kImpossible,
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
