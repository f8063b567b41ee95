#include "checks/input_checks.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <map>
#include <opencv2/core/types.hpp>
#include <string>
#include <utility>

#include "base/text.h"
#include "geometry/point_spread.h"
#include "geometry/target_points.h"

namespace fisheye_calibration::program {
namespace {

constexpr double kNearReach = 0.95;            // of the solver's reach
constexpr double kLineFlatness = 1e-4;         // breadth to length of what counts as one line
constexpr double kNearlyLineFlatness = 0.03;   // ... and as almost one
constexpr std::size_t kMostForSingles = 1000;  // points up to which each is left out in turn
constexpr double kShortScalePair = 0.2;        // of the target's largest extent

using Points = std::vector<CalibrationPoint>;

template <typename Condition>
std::vector<int> idsWhere(const Points& points, Condition condition) {
  std::vector<int> ids;
  for (const CalibrationPoint& point : points) {
    if (condition(point)) {
      ids.push_back(point.PointId);
    }
  }
  return ids;
}

std::string verb(const std::vector<int>& ids, const char* one, const char* many) {
  return namedPoints(ids) + (ids.size() == 1 ? one : many);
}

void checkCount(const Points& points, Findings& findings) {
  if (points.size() >= kFewestPoints) {
    return;
  }
  addImpossible(findings, FindingKind::kTooFewPoints,
                "only " + std::to_string(points.size()) +
                    (points.size() == 1 ? " point" : " points") + ", at least " +
                    std::to_string(kFewestPoints) + " are needed");
}

void checkIds(const Points& points, Findings& findings) {
  std::map<int, int> count;
  for (const CalibrationPoint& point : points) {
    ++count[point.PointId];
  }
  std::vector<int> repeated;
  for (const auto& [id, times] : count) {
    if (times > 1) {
      repeated.push_back(id);
    }
  }
  if (repeated.empty()) {
    return;
  }
  addDoubtful(findings, FindingKind::kDuplicateIds,
              verb(repeated, " is", " are") + " in the list more than once", repeated);
}

void checkInside(const Points& points, const Size& image, Findings& findings) {
  // Pixel centres have whole coordinates, so the picture extends half a pixel beyond them.
  const cv::Rect2d picture(-0.5, -0.5, image.width, image.height);
  const std::vector<int> outside = idsWhere(points, [&](const CalibrationPoint& point) {
    const cv::Point2d position = imagePosition(point);
    return position.x < picture.x || position.y < picture.y || position.x > picture.br().x ||
           position.y > picture.br().y;
  });
  if (outside.empty()) {
    return;
  }
  addDoubtful(findings, FindingKind::kOutsideImage,
              verb(outside, " lies", " lie") + " outside the " + std::to_string(image.width) +
                  " x " + std::to_string(image.height) + " picture; is the image size right?",
              outside);
}

void checkLine(const Points& points, Findings& findings) {
  const std::vector<cv::Point2d> world = bedPositions(points);
  const double flattest = std::min(flatness(world), flatness(imagePositions(points)));
  if (flattest < kLineFlatness) {
    addDoubtful(findings, FindingKind::kCollinearPoints,
                "all points lie on one line; the camera cannot be found from them");
    return;
  }
  if (flattest < kNearlyLineFlatness) {
    addDoubtful(findings, FindingKind::kCollinearPoints,
                "the points lie almost on one line; the result will be poor");
  }
  if (world.size() > kMostForSingles) {
    return;
  }
  for (std::size_t i = 0; i < world.size(); ++i) {
    std::vector<cv::Point2d> others = world;
    others.erase(others.begin() + static_cast<std::ptrdiff_t>(i));
    if (flatness(others) >= kLineFlatness) {
      continue;
    }
    addDoubtful(findings, FindingKind::kCollinearPoints,
                "all points but point " + std::to_string(points[i].PointId) +
                    " lie on one line in the world; the camera cannot be found from them",
                {points[i].PointId});
    return;
  }
}

void checkCoincidence(const Points& points, Findings& findings) {
  const auto report = [&](auto positionOf, const std::string& where) {
    std::map<std::pair<float, float>, std::vector<int>> idsAt;
    for (const CalibrationPoint& point : points) {
      const cv::Point2f position = positionOf(point);
      idsAt[{position.x, position.y}].push_back(point.PointId);
    }
    for (const auto& [position, ids] : idsAt) {
      if (ids.size() < 2) {
        continue;
      }
      addDoubtful(findings, FindingKind::kCoincidentPoints,
                  namedPoints(ids) + " have the same " + where + " (" + shortest(position.first) +
                      ", " + shortest(position.second) + ")",
                  ids);
    }
  };
  report(bedPosition, "world position");
  report(imagePosition, "place in the picture");
}

void checkScalePair(const Points& points, Findings& findings) {
  // The library takes the world units per pixel from the first and the last point of the list.
  const CalibrationPoint& first = points.front();
  const CalibrationPoint& last = points.back();
  const auto distance = [](const CalibrationPoint& a, const CalibrationPoint& b) {
    const cv::Point2d between = cv::Point2d(bedPosition(a)) - cv::Point2d(bedPosition(b));
    return std::hypot(between.x, between.y);
  };
  double extent = 0;
  for (const CalibrationPoint& point : points) {
    extent = std::max({extent, distance(point, first), distance(point, last)});
  }
  if (distance(first, last) >= kShortScalePair * extent && extent > 0) {
    return;
  }
  addDoubtful(findings, FindingKind::kScalePair,
              "the first and the last point of the list (" + std::to_string(first.PointId) +
                  " and " + std::to_string(last.PointId) +
                  ") are close together, but they fix the scale of the corrected picture; reorder "
                  "the list",
              {first.PointId, last.PointId});
}

}  // namespace

double solverReach(const Size& image) { return std::max(image.width, image.height) / 2.0; }

Findings checkReach(const std::vector<CalibrationPoint>& points, const Size& image) {
  Findings findings;
  const double reach = solverReach(image);
  const auto radius = [&](const CalibrationPoint& point) {
    const cv::Point2d position = imagePosition(point);
    return std::hypot(position.x - (image.width - 1) / 2.0, position.y - (image.height - 1) / 2.0);
  };
  const std::vector<int> beyond =
      idsWhere(points, [&](const CalibrationPoint& point) { return radius(point) > reach; });
  if (!beyond.empty()) {
    addDoubtful(findings, FindingKind::kBeyondReach,
                verb(beyond, " lies", " lie") + " more than " + general(reach, 6) +
                    " px (half the longer side) from the centre; the solver diverges with such "
                    "points: leave them out",
                beyond);
  }
  const std::vector<int> nearly = idsWhere(points, [&](const CalibrationPoint& point) {
    return radius(point) > kNearReach * reach && radius(point) <= reach;
  });
  if (!nearly.empty()) {
    addDoubtful(findings, FindingKind::kNearReach,
                verb(nearly, " lies", " lie") + " close to the solver's limit of " +
                    general(reach, 6) + " px from the centre; it may diverge",
                nearly);
  }
  return findings;
}

Findings checkInput(const std::vector<CalibrationPoint>& points, const Size& image) {
  Findings findings;
  checkCount(points, findings);
  checkIds(points, findings);
  checkInside(points, image, findings);
  if (points.size() < kFewestPoints) {
    return findings;
  }
  checkLine(points, findings);
  checkCoincidence(points, findings);
  checkScalePair(points, findings);
  return findings;
}

}  // namespace fisheye_calibration::program
