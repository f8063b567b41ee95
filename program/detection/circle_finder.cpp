#include "detection/circle_finder.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <iterator>
#include <opencv2/calib3d.hpp>
#include <opencv2/features2d.hpp>
#include <string>
#include <utility>
#include <vector>

#include "detection/plausible_grid.h"

namespace fisheye_calibration::program {
namespace {

using Points = std::vector<cv::Point2f>;

constexpr int kMostPerCircle = 4;  // blobs
constexpr int kMostOthers = 100;
constexpr float kSmallestOfUsual = 0.5F;  // diameter of a circle, as a share of the usual one

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

using Blobs = std::vector<cv::KeyPoint>;

// Leaves out blobs much smaller than the target's circles, such as the text next to them.
Blobs largeOnes(const Blobs& all, int count) {
  if (all.empty()) {
    return {};
  }
  std::vector<float> sizes;
  sizes.reserve(all.size());
  for (const cv::KeyPoint& blob : all) {
    sizes.push_back(blob.size);
  }
  std::sort(sizes.begin(), sizes.end(), std::greater<>());
  const auto middle = std::min(sizes.size() - 1, static_cast<std::size_t>(count / 2));
  const float smallest = kSmallestOfUsual * sizes[middle];
  Blobs large;
  std::copy_if(all.begin(), all.end(), std::back_inserter(large),
               [&](const cv::KeyPoint& blob) { return blob.size >= smallest; });
  return large;
}

// Hands out blobs that were found before: finding them takes the most time.
class FoundBlobs : public cv::Feature2D {
 public:
  explicit FoundBlobs(Blobs blobs) : blobs_(std::move(blobs)) {}

  void detect(cv::InputArray /*image*/, Blobs& blobs, cv::InputArray /*mask*/) override {
    blobs = blobs_;
  }

 private:
  Blobs blobs_;
};

struct Attempt {
  bool dark;
  bool clustering;
  bool largeOnly;
  const char* name;
};

constexpr Attempt kAttempts[] = {{true, false, false, "dark blobs"},
                                 {true, true, false, "dark blobs, clustered"},
                                 {true, false, true, "large dark blobs"},
                                 {false, false, false, "bright blobs"},
                                 {false, true, false, "bright blobs, clustered"},
                                 {false, false, true, "large bright blobs"}};

bool findCircles(const cv::Mat& grey, const Target& target, const Attempt& attempt,
                 const Blobs& all, Points& points) {
  const cv::Size size(target.columns, target.rows);
  const Blobs blobs = attempt.largeOnly ? largeOnes(all, size.area()) : all;
  // Among far more blobs than circles, as on a honeycomb, the search takes minutes and finds none.
  if (blobs.size() > static_cast<std::size_t>(kMostPerCircle * size.area() + kMostOthers)) {
    return false;
  }
  const bool asymmetric = target.kind == TargetKind::kAsymmetricCircles;
  const int flags = (asymmetric ? cv::CALIB_CB_ASYMMETRIC_GRID : cv::CALIB_CB_SYMMETRIC_GRID) |
                    (attempt.clustering ? cv::CALIB_CB_CLUSTERING : 0);
  const bool found = cv::findCirclesGrid(grey, size, points, flags, cv::makePtr<FoundBlobs>(blobs));
  return found && points.size() == static_cast<std::size_t>(size.area()) &&
         isPlausibleGrid(points, target.columns, target.rows);
}

// Grid position of a point by its index in the order in which the image library counts.
cv::Point2d gridStep(const Target& target, int index) {
  const int column = index % target.columns;
  const int row = index / target.columns;
  if (target.kind == TargetKind::kAsymmetricCircles) {
    return {2.0 * column + row % 2, static_cast<double>(row)};
  }
  return {static_cast<double>(column), static_cast<double>(row)};
}

Detection oriented(const Points& points, const Target& target, const std::string& method) {
  std::vector<GridPoint> grid;
  for (std::size_t i = 0; i < points.size(); ++i) {
    grid.push_back({gridStep(target, static_cast<int>(i)), points[i]});
  }
  return {orientGrid(std::move(grid)), method};
}

}  // namespace

Search findCircleGrid(const cv::Mat& grey, const Target& target, const Progress& progress) {
  for (const bool dark : {true, false}) {
    Blobs blobs;
    progress(std::string("looking for the circles by ") + (dark ? "dark" : "bright") + " blobs");
    circleDetector(grey, target, dark)->detect(grey, blobs);
    for (const Attempt& attempt : kAttempts) {
      Points points;
      if (attempt.dark == dark && findCircles(grey, target, attempt, blobs, points)) {
        return {.detection = oriented(points, target, attempt.name), .seen = {}};
      }
    }
  }
  return {};
}

}  // namespace fisheye_calibration::program
