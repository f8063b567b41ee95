#include "detection/target_detection.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <opencv2/calib3d.hpp>
#include <opencv2/features2d.hpp>
#include <opencv2/imgproc.hpp>
#include <utility>

#include "detection/chessboard_check.h"

namespace fisheye_calibration::program {
namespace {

using Points = std::vector<cv::Point2f>;

constexpr double kLargestStepChange = 0.6;       // of the larger of two neighbouring steps
constexpr double kLargestEnlargedPixels = 12e6;  // larger pictures are not enlarged

enum class Finder { kSectorBased, kQuads };

struct Attempt {
  Finder finder;
  bool equalised;
  double scale;
  const char* name;
};

constexpr Attempt kChessboardAttempts[] = {
    {Finder::kSectorBased, false, 1, "sectors"},
    {Finder::kQuads, false, 1, "squares"},
    {Finder::kSectorBased, true, 1, "sectors, contrast evened out"},
    {Finder::kSectorBased, false, 0.5, "sectors, half size"},
    {Finder::kQuads, true, 1, "squares, contrast evened out"},
    {Finder::kQuads, false, 0.5, "squares, half size"},
    {Finder::kSectorBased, false, 2, "sectors, double size"},
    {Finder::kQuads, false, 2, "squares, double size"},
};

// The smallest distance from the point to its neighbours in the grid.
double spacingAt(const Points& points, int columns, int rows, int column, int row) {
  const auto at = [&](int c, int r) { return points[static_cast<std::size_t>(r * columns + c)]; };
  double smallest = HUGE_VAL;
  constexpr int kSteps[4][2] = {{1, 0}, {-1, 0}, {0, 1}, {0, -1}};
  for (const auto& step : kSteps) {
    const int c = column + step[0];
    const int r = row + step[1];
    if (c < 0 || r < 0 || c >= columns || r >= rows) {
      continue;
    }
    smallest = std::min(smallest, cv::norm(at(c, r) - at(column, row)));
  }
  return smallest;
}

// Refines the corners to sub-pixel positions, each in a window that excludes its neighbours. The
// sector finder's own positions are off by up to half a pixel where the lens bends the squares.
void refineCorners(const cv::Mat& grey, const Target& target, Points& points) {
  const Points coarse = points;
  const cv::TermCriteria untilStill(cv::TermCriteria::COUNT + cv::TermCriteria::EPS, 40, 1e-3);
  for (int row = 0; row < target.rows; ++row) {
    for (int column = 0; column < target.columns; ++column) {
      const double spacing = spacingAt(coarse, target.columns, target.rows, column, row);
      const int half = std::clamp(static_cast<int>(0.3 * spacing), 2, 15);
      const auto index = static_cast<std::size_t>(row * target.columns + column);
      Points one = {coarse[index]};
      cv::cornerSubPix(grey, one, cv::Size(half, half), cv::Size(-1, -1), untilStill);
      points[index] = one[0];
    }
  }
}

cv::Mat prepared(const cv::Mat& grey, const Attempt& attempt) {
  cv::Mat picture = grey;
  if (attempt.equalised) {
    cv::createCLAHE(4.0, cv::Size(8, 8))->apply(grey, picture);
  }
  if (attempt.scale != 1) {
    cv::Mat scaled;
    cv::resize(picture, scaled, cv::Size(), attempt.scale, attempt.scale,
               attempt.scale < 1 ? cv::INTER_AREA : cv::INTER_CUBIC);
    picture = scaled;
  }
  return picture;
}

bool findChessboard(const cv::Mat& grey, const Target& target, const Attempt& attempt,
                    Points& points) {
  const cv::Mat picture = prepared(grey, attempt);
  const cv::Size size(target.columns, target.rows);
  const bool sectors = attempt.finder == Finder::kSectorBased;
  const bool found =
      sectors
          ? cv::findChessboardCornersSB(
                picture, size, points,
                cv::CALIB_CB_NORMALIZE_IMAGE | cv::CALIB_CB_EXHAUSTIVE | cv::CALIB_CB_ACCURACY)
          : cv::findChessboardCorners(picture, size, points,
                                      cv::CALIB_CB_ADAPTIVE_THRESH | cv::CALIB_CB_NORMALIZE_IMAGE);
  if (!found || points.size() != static_cast<std::size_t>(size.area())) {
    return false;
  }
  // Pixel centres have whole coordinates at every scale.
  for (cv::Point2f& point : points) {
    point.x = static_cast<float>((static_cast<double>(point.x) + 0.5) / attempt.scale - 0.5);
    point.y = static_cast<float>((static_cast<double>(point.y) + 0.5) / attempt.scale - 0.5);
  }
  if (!isPlausibleGrid(points, target.columns, target.rows)) {
    return false;
  }
  refineCorners(grey, target, points);
  return isPlausibleGrid(points, target.columns, target.rows) &&
         looksLikeChessboard(grey, points, target.columns, target.rows);
}

cv::Ptr<cv::Feature2D> circleDetector(const cv::Mat& grey, const Target& target, bool dark) {
  cv::SimpleBlobDetector::Params params;
  params.blobColor = dark ? 0 : 255;
  params.minArea = 12;
  params.maxArea =
      static_cast<float>(grey.total()) / static_cast<float>(2 * target.columns * target.rows);
  params.minDistBetweenBlobs = 4;
  params.thresholdStep = 8;
  return cv::SimpleBlobDetector::create(params);
}

bool findCircles(const cv::Mat& grey, const Target& target, bool dark, bool clustering,
                 Points& points) {
  const cv::Size size(target.columns, target.rows);
  const bool asymmetric = target.kind == TargetKind::kAsymmetricCircles;
  const int flags = (asymmetric ? cv::CALIB_CB_ASYMMETRIC_GRID : cv::CALIB_CB_SYMMETRIC_GRID) |
                    (clustering ? cv::CALIB_CB_CLUSTERING : 0);
  const bool found =
      cv::findCirclesGrid(grey, size, points, flags, circleDetector(grey, target, dark));
  return found && points.size() == static_cast<std::size_t>(size.area()) &&
         isPlausibleGrid(points, target.columns, target.rows);
}

Detection oriented(const Points& points, const Target& target, const std::string& method) {
  std::vector<GridPoint> grid;
  for (std::size_t i = 0; i < points.size(); ++i) {
    grid.push_back({gridStep(target, static_cast<int>(i)), points[i]});
  }
  return {orientGrid(std::move(grid)), method};
}

std::optional<Detection> detectChessboard(const cv::Mat& grey, const Target& target,
                                          const Progress& progress) {
  for (const Attempt& attempt : kChessboardAttempts) {
    const double pixels = static_cast<double>(grey.total()) * attempt.scale * attempt.scale;
    if (attempt.scale > 1 && pixels > kLargestEnlargedPixels) {
      continue;
    }
    progress(std::string("looking for the chessboard by ") + attempt.name);
    Points points;
    if (findChessboard(grey, target, attempt, points)) {
      return oriented(points, target, attempt.name);
    }
  }
  return std::nullopt;
}

std::optional<Detection> detectCircles(const cv::Mat& grey, const Target& target,
                                       const Progress& progress) {
  for (const bool dark : {true, false}) {
    for (const bool clustering : {false, true}) {
      const std::string method =
          std::string(dark ? "dark" : "bright") + " blobs" + (clustering ? ", clustered" : "");
      progress("looking for the circles by " + method);
      Points points;
      if (findCircles(grey, target, dark, clustering, points)) {
        return oriented(points, target, method);
      }
    }
  }
  return std::nullopt;
}

}  // namespace

cv::Point2d gridStep(const Target& target, int index) {
  const int column = index % target.columns;
  const int row = index / target.columns;
  if (target.kind == TargetKind::kAsymmetricCircles) {
    return {2.0 * column + row % 2, static_cast<double>(row)};
  }
  return {static_cast<double>(column), static_cast<double>(row)};
}

bool isPlausibleGrid(const std::vector<cv::Point2f>& points, int columns, int rows) {
  const auto at = [&](int c, int r) {
    return cv::Point2d(points[static_cast<std::size_t>(r * columns + c)]);
  };
  const auto evenSteps = [](const cv::Point2d& a, const cv::Point2d& b, const cv::Point2d& c) {
    const double larger = std::max(cv::norm(b - a), cv::norm(c - b));
    return cv::norm((c - b) - (b - a)) < kLargestStepChange * larger;
  };
  int sense = 0;
  for (int r = 0; r < rows; ++r) {
    for (int c = 0; c < columns; ++c) {
      if (c + 2 < columns && !evenSteps(at(c, r), at(c + 1, r), at(c + 2, r))) {
        return false;
      }
      // Every second row of a staggered grid is shifted, so rows are compared two by two.
      if (r + 4 < rows && !evenSteps(at(c, r), at(c, r + 2), at(c, r + 4))) {
        return false;
      }
      if (c + 1 >= columns || r + 1 >= rows) {
        continue;
      }
      const double area = (at(c + 1, r) - at(c, r)).cross(at(c, r + 1) - at(c, r));
      const int turn = area > 0 ? 1 : -1;
      if (area == 0 || (sense != 0 && turn != sense)) {
        return false;
      }
      sense = turn;
    }
  }
  return true;
}

std::optional<Detection> detectTarget(const cv::Mat& grey, const Target& target,
                                      const Progress& progress) {
  return target.kind == TargetKind::kChessboard ? detectChessboard(grey, target, progress)
                                                : detectCircles(grey, target, progress);
}

}  // namespace fisheye_calibration::program
