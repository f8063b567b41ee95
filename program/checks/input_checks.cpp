#include "checks/input_checks.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <map>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <string>
#include <utility>

#include "base/text.h"

namespace fisheye_calibration::program {
namespace {

constexpr double kNearReach = 0.95;            // of the solver's reach
constexpr double kSmallCoverage = 0.08;        // of the picture's area
constexpr double kFairCoverage = 0.25;         // enough unless the target is seen frontally
constexpr double kFrontalScaleRatio = 1.5;     // largest to smallest area scale within the target
constexpr double kLineFlatness = 1e-4;         // breadth to length of what counts as one line
constexpr double kNearlyLineFlatness = 0.03;   // … and as nearly one
constexpr std::size_t kMostForSingles = 1000;  // points up to which each is left out in turn
constexpr double kShortScalePair = 0.2;        // of the target's largest extent

using Points = std::vector<CalibrationPoint>;

double x(const CalibrationPoint& point) { return static_cast<double>(point.ImagePtX); }
double y(const CalibrationPoint& point) { return static_cast<double>(point.ImagePtY); }
double worldX(const CalibrationPoint& point) { return static_cast<double>(point.Xw); }
double worldY(const CalibrationPoint& point) { return static_cast<double>(point.Yw); }

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

void checkCount(const Points& points, std::vector<Finding>& findings) {
  if (points.size() >= kFewestPoints) {
    return;
  }
  findings.push_back({FindingKind::kTooFewPoints, Severity::kImpossible,
                      "only " + std::to_string(points.size()) +
                          (points.size() == 1 ? " point" : " points") + ", at least " +
                          std::to_string(kFewestPoints) + " are needed"});
}

void checkIds(const Points& points, std::vector<Finding>& findings) {
  std::map<int, int> count;
  for (const CalibrationPoint& point : points) {
    ++count[point.PointId];
  }
  std::vector<int> doubled;
  for (const auto& [id, times] : count) {
    if (times > 1) {
      doubled.push_back(id);
    }
  }
  if (doubled.empty()) {
    return;
  }
  findings.push_back({FindingKind::kDuplicateIds, Severity::kDoubtful,
                      verb(doubled, " is", " are") + " in the list more than once", doubled});
}

void checkPlaces(const Points& points, const Size& image, std::vector<Finding>& findings) {
  // Pixel centres have whole coordinates, so the picture reaches half a pixel further.
  const std::vector<int> outside = idsWhere(points, [&](const CalibrationPoint& point) {
    return x(point) < -0.5 || y(point) < -0.5 || x(point) > image.width - 0.5 ||
           y(point) > image.height - 0.5;
  });
  if (!outside.empty()) {
    findings.push_back({FindingKind::kOutsideImage, Severity::kDoubtful,
                        verb(outside, " lies", " lie") + " outside the " +
                            std::to_string(image.width) + " x " + std::to_string(image.height) +
                            " picture; is the image size right?",
                        outside});
  }

  const double reach = solverReach(image);
  const auto radius = [&](const CalibrationPoint& point) {
    return std::hypot(x(point) - (image.width - 1) / 2.0, y(point) - (image.height - 1) / 2.0);
  };
  const std::vector<int> beyond =
      idsWhere(points, [&](const CalibrationPoint& point) { return radius(point) > reach; });
  if (!beyond.empty()) {
    findings.push_back({FindingKind::kBeyondReach, Severity::kDoubtful,
                        verb(beyond, " lies", " lie") + " more than " + general(reach, 6) +
                            " px (half the longer side) from the centre; the solver diverges with "
                            "such points: leave them out",
                        beyond});
  }
  const std::vector<int> nearly = idsWhere(points, [&](const CalibrationPoint& point) {
    return radius(point) > kNearReach * reach && radius(point) <= reach;
  });
  if (!nearly.empty()) {
    findings.push_back({FindingKind::kNearReach, Severity::kDoubtful,
                        verb(nearly, " lies", " lie") + " close to the solver's limit of " +
                            general(reach, 6) + " px from the centre; it may diverge",
                        nearly});
  }
}

// Breadth to length of a point cloud: the ratio of its principal standard deviations.
double flatness(const std::vector<cv::Point2d>& points) {
  cv::Point2d mean(0, 0);
  for (const cv::Point2d& point : points) {
    mean += point;
  }
  mean *= 1.0 / static_cast<double>(points.size());
  cv::Matx22d covariance = cv::Matx22d::zeros();
  for (const cv::Point2d& point : points) {
    const cv::Point2d d = point - mean;
    covariance += cv::Matx22d(d.x * d.x, d.x * d.y, d.x * d.y, d.y * d.y);
  }
  // Eigenvalues of [a b; b c]: (a + c)/2 +- sqrt(((a - c)/2)^2 + b^2).
  const double middle = (covariance(0, 0) + covariance(1, 1)) / 2;
  const double spread = std::hypot((covariance(0, 0) - covariance(1, 1)) / 2, covariance(0, 1));
  if (!(middle + spread > 0)) {
    return 0;
  }
  return std::sqrt(std::max(0.0, middle - spread) / (middle + spread));
}

void checkLine(const Points& points, std::vector<Finding>& findings) {
  std::vector<cv::Point2d> world;
  std::vector<cv::Point2d> image;
  for (const CalibrationPoint& point : points) {
    world.emplace_back(worldX(point), worldY(point));
    image.emplace_back(x(point), y(point));
  }
  const double flattest = std::min(flatness(world), flatness(image));
  if (flattest < kLineFlatness) {
    findings.push_back({FindingKind::kCollinearPoints, Severity::kDoubtful,
                        "all points lie on one line; the camera cannot be found from them"});
    return;
  }
  if (flattest < kNearlyLineFlatness) {
    findings.push_back({FindingKind::kCollinearPoints, Severity::kDoubtful,
                        "the points lie almost on one line; the result will be poor"});
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
    findings.push_back({FindingKind::kCollinearPoints,
                        Severity::kDoubtful,
                        "all points but point " + std::to_string(points[i].PointId) +
                            " lie on one line in the world; the camera cannot be found from them",
                        {points[i].PointId}});
    return;
  }
}

void checkCoincidence(const Points& points, std::vector<Finding>& findings) {
  const auto report = [&](auto place, const std::string& where) {
    std::map<std::pair<float, float>, std::vector<int>> atPlace;
    for (const CalibrationPoint& point : points) {
      atPlace[place(point)].push_back(point.PointId);
    }
    for (const auto& [position, ids] : atPlace) {
      if (ids.size() < 2) {
        continue;
      }
      findings.push_back({FindingKind::kCoincidentPoints, Severity::kDoubtful,
                          namedPoints(ids) + " have the same " + where + " (" +
                              shortest(position.first) + ", " + shortest(position.second) + ")",
                          ids});
    }
  };
  report([](const CalibrationPoint& p) { return std::pair(p.Xw, p.Yw); }, "world position");
  report([](const CalibrationPoint& p) { return std::pair(p.ImagePtX, p.ImagePtY); },
         "place in the picture");
}

// Share of the picture that the convex hull of the points covers.
double coverage(const Points& points, const Size& image) {
  std::vector<cv::Point2f> measured;
  for (const CalibrationPoint& point : points) {
    measured.emplace_back(point.ImagePtX, point.ImagePtY);
  }
  std::vector<cv::Point2f> hull;
  cv::convexHull(measured, hull);
  return cv::contourArea(hull) / (static_cast<double>(image.width) * image.height);
}

// Largest to smallest picture area per world area over the target, from a quadratic fit of the
// image coordinates over the world's. Near 1 the target is seen without perspective.
double scaleRatio(const Points& points) {
  const int n = static_cast<int>(points.size());
  double Xmean = 0;
  double Ymean = 0;
  double extent = 0;
  for (const CalibrationPoint& point : points) {
    Xmean += worldX(point) / n;
    Ymean += worldY(point) / n;
  }
  for (const CalibrationPoint& point : points) {
    extent = std::max({extent, std::abs(worldX(point) - Xmean), std::abs(worldY(point) - Ymean)});
  }
  if (!(extent > 0)) {
    return HUGE_VAL;
  }
  cv::Mat design(n, 6, CV_64F);
  cv::Mat image(n, 2, CV_64F);
  for (int i = 0; i < n; ++i) {
    const CalibrationPoint& point = points[static_cast<std::size_t>(i)];
    const double X = (worldX(point) - Xmean) / extent;
    const double Y = (worldY(point) - Ymean) / extent;
    const double terms[6] = {1, X, Y, X * X, X * Y, Y * Y};
    std::copy(std::begin(terms), std::end(terms), design.ptr<double>(i));
    image.at<double>(i, 0) = x(point);
    image.at<double>(i, 1) = y(point);
  }
  cv::Mat c;
  cv::solve(design, image, c, cv::DECOMP_SVD);
  double smallest = HUGE_VAL;
  double largest = 0;
  for (int i = 0; i < n; ++i) {
    const double X = design.at<double>(i, 1);
    const double Y = design.at<double>(i, 2);
    const auto alongX = [&](int k) {
      return c.at<double>(1, k) + 2 * c.at<double>(3, k) * X + c.at<double>(4, k) * Y;
    };
    const auto alongY = [&](int k) {
      return c.at<double>(2, k) + c.at<double>(4, k) * X + 2 * c.at<double>(5, k) * Y;
    };
    const double scale = std::abs(alongX(0) * alongY(1) - alongX(1) * alongY(0));
    smallest = std::min(smallest, scale);
    largest = std::max(largest, scale);
  }
  return smallest > 0 ? largest / smallest : HUGE_VAL;
}

void checkCoverage(const Points& points, const Size& image, std::vector<Finding>& findings) {
  const double share = coverage(points, image);
  const std::string percent = fixed(100 * share, share < 0.1 ? 1 : 0) + " % of the picture";
  if (share < kSmallCoverage) {
    findings.push_back({FindingKind::kSmallCoverage, Severity::kDoubtful,
                        "the target covers only " + percent +
                            "; that may not determine the lens, fill the view with it"});
  }
  if (share < kFairCoverage && scaleRatio(points) < kFrontalScaleRatio) {
    findings.push_back({FindingKind::kSmallFrontalTarget, Severity::kDoubtful,
                        "the target covers " + percent +
                            " and is seen almost frontally; focal length and distance can hardly "
                            "be told apart, tilt it or fill the view with it"});
  }
}

void checkScalePair(const Points& points, std::vector<Finding>& findings) {
  // The library takes the world units per pixel from the first and the last point of the list.
  const CalibrationPoint& first = points.front();
  const CalibrationPoint& last = points.back();
  const auto distance = [](const CalibrationPoint& a, const CalibrationPoint& b) {
    return std::hypot(worldX(a) - worldX(b), worldY(a) - worldY(b));
  };
  double extent = 0;
  for (const CalibrationPoint& point : points) {
    extent = std::max({extent, distance(point, first), distance(point, last)});
  }
  if (distance(first, last) >= kShortScalePair * extent && extent > 0) {
    return;
  }
  findings.push_back({FindingKind::kScalePair,
                      Severity::kDoubtful,
                      "the first and the last point of the list (" + std::to_string(first.PointId) +
                          " and " + std::to_string(last.PointId) +
                          ") are close together, but they fix the scale of the corrected picture; "
                          "reorder the list",
                      {first.PointId, last.PointId}});
}

}  // namespace

double solverReach(const Size& image) { return std::max(image.width, image.height) / 2.0; }

std::vector<Finding> checkInput(const std::vector<CalibrationPoint>& points, const Size& image) {
  std::vector<Finding> findings;
  checkCount(points, findings);
  checkIds(points, findings);
  checkPlaces(points, image, findings);
  if (points.size() < kFewestPoints) {
    return findings;
  }
  checkLine(points, findings);
  checkCoincidence(points, findings);
  checkCoverage(points, image, findings);
  checkScalePair(points, findings);
  return findings;
}

}  // namespace fisheye_calibration::program
