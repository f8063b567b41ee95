#include "solver/calibration.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include "solver/normal_equations.h"
#include "solver/pose.h"
#include "solver/residuals.h"

namespace fisheye_calibration::solver {
namespace {

constexpr double kMaxConditionRatio = 1e6;

// Everything but skew (compatibility 18).
constexpr EstimatedIntrinsics kEstimated = {true, true, true, true, false, true, true};

// An equidistant lens, centred in the image, with a field of view of 180 degrees across the longer
// side.
lens::Camera startingCamera(const cv::Size& imageSize) {
  const double f = std::max(imageSize.width, imageSize.height) / std::numbers::pi;
  return {.fx = f, .fy = f, .cx = imageSize.width * 0.5 - 0.5, .cy = imageSize.height * 0.5 - 0.5};
}

// The camera after a step in the estimated intrinsics.
lens::Camera moved(const lens::Camera& camera, const cv::Mat& step) {
  return {.fx = camera.fx + step.at<double>(0),
          .fy = camera.fy + step.at<double>(1),
          .cx = camera.cx + step.at<double>(2),
          .cy = camera.cy + step.at<double>(3),
          .k0 = camera.k0 + step.at<double>(4),
          .k1 = camera.k1 + step.at<double>(5)};
}

cv::Vec4d focalsAndCentre(const lens::Camera& camera) {
  return {camera.fx, camera.fy, camera.cx, camera.cy};
}

// Whether the criteria end the iteration. A NaN change is never small enough, and criteria of
// unknown type never end it.
bool isMet(const cv::TermCriteria& criteria, int iteration, double change) {
  const bool counted = iteration >= criteria.maxCount;
  const bool small = change <= criteria.epsilon;
  switch (criteria.type) {
    case cv::TermCriteria::COUNT:
      return counted;
    case cv::TermCriteria::EPS:
      return small;
    case cv::TermCriteria::COUNT + cv::TermCriteria::EPS:
      return counted || small;
    default:
      return false;
  }
}

// The Gauss-Newton iteration over the intrinsics.
class Solver {
 public:
  Solver(const std::vector<ViewPoints>& views, const cv::Size& imageSize)
      : views_(views), camera_(startingCamera(imageSize)), poses_(views.size()) {
    findPoses();
  }

  void run(const cv::TermCriteria& criteria) {
    double change = 1;
    for (int iteration = 0;
         iteration < std::numeric_limits<int>::max() && !isMet(criteria, iteration, change);
         ++iteration) {
      const lens::Camera previous = camera_;
      camera_ = moved(camera_, dampedStep(iteration));
      change = cv::norm(focalsAndCentre(camera_) - focalsAndCentre(previous)) /
               cv::norm(focalsAndCentre(camera_));
      findPoses();
    }
  }

  Calibration result() const {
    return {camera_, poses_, rootMeanSquare(reprojectionResiduals(views_, camera_, poses_))};
  }

 private:
  // The step factor rises from 0.4 towards 1: s = 1 - 0.6^(iteration + 1).
  cv::Mat dampedStep(int iteration) const {
    const ReducedSystem system = reducedNormalEquations(views_, camera_, poses_, kEstimated);
    cv::Mat step;
    cv::solve(system.JJ2, system.ex3, step, cv::DECOMP_LU);
    return (1 - std::pow(1 - 0.4, iteration + 1.0)) * step;
  }

  // A view without an initial pose, and every view after it, keeps its previous pose.
  void findPoses() {
    for (std::size_t i = 0; i < views_.size(); ++i) {
      if (planes_.size() == i) {
        planes_.push_back(targetPlane(views_[i]));
      }
      const auto refined = findPose(views_[i], planes_[i], camera_, kMaxConditionRatio);
      if (!refined) {
        return;
      }
      poses_[i] = refined->pose;
    }
  }

  const std::vector<ViewPoints>& views_;
  std::vector<TargetPlane> planes_;
  lens::Camera camera_;
  std::vector<lens::Pose> poses_;
};

}  // namespace

Calibration calibrate(const std::vector<ViewPoints>& views, const cv::Size& imageSize,
                      const cv::TermCriteria& criteria) {
  Solver solver(views, imageSize);
  solver.run(criteria);
  return solver.result();
}

}  // namespace fisheye_calibration::solver
