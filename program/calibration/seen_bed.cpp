#include "calibration/seen_bed.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <opencv2/core.hpp>
#include <vector>

#include "geometry/bed_grid.h"
#include "geometry/conversions.h"
#include "geometry/second_view.h"
#include "lens/rotation.h"
#include "robust/viewing_ray.h"
#include "single/record.h"

namespace fisheye_calibration::program {
namespace {

constexpr int kCells = 64;      // along each side of an area or a picture
constexpr double kStep = 1e-5;  // of the distance from the camera, for the derivatives

// A record's camera over the bed.
struct Overhead {
  explicit Overhead(const FishEyeCalibrationParam& record)
      : camera(single::rawCamera(record)),
        pose{single::rotationVector(record), single::translation(record)},
        R(lens::rotationFromVector(pose.om)),
        turn(robust::turningAngle(camera)) {}

  cv::Vec3d inCamera(cv::Point2d bed) const { return R * cv::Vec3d(bed.x, bed.y, 0) + pose.T; }

  cv::Point2d raw(cv::Point2d bed) const {
    return lens::projectPoint(camera, R, pose.T, {bed.x, bed.y, 0});
  }

  // Whether the picture without distortion shows the point.
  bool canShow(const Size& corrected, cv::Point2d bed) const {
    const cv::Point2f centre = renderedCentreOf(corrected);
    const lens::Camera pinhole{
        camera.fx, camera.fy,   static_cast<double>(centre.x), static_cast<double>(centre.y), 0,
        0,         camera.alpha};
    return inCamera(bed)[2] > 0 &&
           isInPicture(lens::projectPinhole(pinhole, R, pose.T, {bed.x, bed.y, 0}), corrected);
  }

  lens::Camera camera;
  lens::Pose pose;
  cv::Matx33d R;
  double turn;  // the largest angle off the axis, radians
};

// The smaller singular value of [a b; c d].
double smallerSingularValue(double a, double b, double c, double d) {
  return std::abs(std::hypot(a + d, c - b) - std::hypot(a - d, c + b)) / 2;
}

double sharpnessAt(const Overhead& overhead, const Size& image, cv::Point2d bed) {
  const cv::Vec3d Y = overhead.inCamera(bed);
  if (!(Y[2] > 0) || std::atan2(std::hypot(Y[0], Y[1]), Y[2]) >= overhead.turn ||
      !isInPicture(overhead.raw(bed), image)) {
    return 0;
  }
  const double step = kStep * cv::norm(Y);
  const cv::Point2d alongX =
      overhead.raw(bed + cv::Point2d(step, 0)) - overhead.raw(bed - cv::Point2d(step, 0));
  const cv::Point2d alongY =
      overhead.raw(bed + cv::Point2d(0, step)) - overhead.raw(bed - cv::Point2d(0, step));
  return smallerSingularValue(alongX.x, alongY.x, alongX.y, alongY.y) / (2 * step);
}

// The centres of kCells x kCells cells.
std::vector<cv::Point2d> cellsOf(const cv::Rect2d& area) {
  std::vector<cv::Point2d> cells;
  for (int row = 0; row < kCells; ++row) {
    for (int column = 0; column < kCells; ++column) {
      cells.push_back(area.tl() + cv::Point2d((column + 0.5) / kCells * area.width,
                                              (row + 0.5) / kCells * area.height));
    }
  }
  return cells;
}

struct SharpPoint {
  cv::Point2d bed;
  double sharpness;
};

// The bed points that a grid over the raw picture, up to its edges, shows.
std::vector<SharpPoint> pointsSeen(const Overhead& overhead, const Size& image) {
  std::vector<SharpPoint> points;
  for (int row = 0; row <= kCells; ++row) {
    for (int column = 0; column <= kCells; ++column) {
      const cv::Point2d raw(static_cast<double>(column) * (image.width - 1) / kCells,
                            static_cast<double>(row) * (image.height - 1) / kCells);
      const auto bed = robust::bedPointOf(overhead.camera, overhead.pose, raw);
      if (bed) {
        points.push_back({*bed, sharpnessAt(overhead, image, *bed)});
      }
    }
  }
  return points;
}

double sharpestOf(const std::vector<SharpPoint>& points) {
  double best = 0;
  for (const SharpPoint& point : points) {
    best = std::max(best, point.sharpness);
  }
  return best;
}

}  // namespace

double bestSharpness(const FishEyeCalibrationParam& record, const Size& image) {
  return sharpestOf(pointsSeen(Overhead(record), image));
}

double sharpnessAt(const FishEyeCalibrationParam& record, const Size& image, cv::Point2d bed) {
  return sharpnessAt(Overhead(record), image, bed);
}

cv::Point2d reachFromAxis(const FishEyeCalibrationParam& record,
                          const std::vector<cv::Point2d>& bed) {
  const Overhead overhead(record);
  const lens::Camera pinhole = single::correctedCamera(record, 0, 0);
  constexpr double kInfinite = std::numeric_limits<double>::infinity();
  cv::Point2d reach;
  for (const cv::Point2d& point : bed) {
    if (!(overhead.inCamera(point)[2] > 0)) {
      return {kInfinite, kInfinite};
    }
    const cv::Point2d position =
        lens::projectPinhole(pinhole, overhead.R, overhead.pose.T, {point.x, point.y, 0});
    reach = {std::max(reach.x, std::abs(position.x)), std::max(reach.y, std::abs(position.y))};
  }
  return reach;
}

bool canShow(const FishEyeCalibrationParam& record, const Size& corrected, cv::Point2d bed) {
  return Overhead(record).canShow(corrected, bed);
}

std::vector<bool> shownAmong(const FishEyeCalibrationParam& record, const Size& corrected,
                             const std::vector<cv::Point2d>& bed) {
  const Overhead overhead(record);
  std::vector<bool> shown;
  shown.reserve(bed.size());
  for (const cv::Point2d& point : bed) {
    shown.push_back(overhead.canShow(corrected, point));
  }
  return shown;
}

SeenShares seenShares(const FishEyeCalibrationParam& record, const Size& image,
                      const Size& corrected, const cv::Rect2d& area) {
  const Overhead overhead(record);
  const double limit = kUsefulSharpness * sharpestOf(pointsSeen(overhead, image));
  const std::vector<cv::Point2d> cells = cellsOf(area);
  SeenShares shares;
  for (const cv::Point2d& cell : cells) {
    const double sharpness = sharpnessAt(overhead, image, cell);
    const double share = 1 / static_cast<double>(cells.size());
    if (!(sharpness > 0)) {
      shares.unseen += share;
      shares.behind += overhead.inCamera(cell)[2] > 0 ? 0 : share;
    } else if (!overhead.canShow(corrected, cell)) {
      shares.leftOut += share;
    } else if (sharpness < limit) {
      shares.blurred += share;
    }
  }
  return shares;
}

std::vector<cv::Point2d> seenPoints(const FishEyeCalibrationParam& record, const Size& image,
                                    const cv::Rect2d& area) {
  const Overhead overhead(record);
  std::vector<cv::Point2d> seen;
  for (const cv::Point2d& point : gridOver(area, kCells).points()) {
    if (sharpnessAt(overhead, image, point) > 0) {
      seen.push_back(point);
    }
  }
  return seen;
}

std::vector<cv::Point2d> usefulPoints(const FishEyeCalibrationParam& record, const Size& image) {
  const std::vector<SharpPoint> points = pointsSeen(Overhead(record), image);
  const double best = sharpestOf(points);
  std::vector<cv::Point2d> useful;
  for (const SharpPoint& point : points) {
    if (point.sharpness > 0 && point.sharpness >= kUsefulSharpness * best) {
      useful.push_back(point.bed);
    }
  }
  return useful;
}

}  // namespace fisheye_calibration::program
