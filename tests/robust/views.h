// Views of the test rigs and of measured cameras in the solver's layout.
#pragma once

#include <vector>

#include "lens/camera.h"
#include "robust/arrow_matrix.h"
#include "solver/view_points.h"
#include "support/measured_views.h"
#include "support/plain_uncertainty.h"
#include "support/synthetic_rig.h"

namespace robust_tests {

namespace robust = fisheye_calibration::robust;
namespace solver = fisheye_calibration::solver;
namespace lens = fisheye_calibration::lens;

template <class Target, class Pixel>
solver::ViewPoints viewPoints(const std::vector<Target>& target, const std::vector<Pixel>& pixels) {
  solver::ViewPoints view;
  for (std::size_t i = 0; i < target.size(); ++i) {
    view.X.push_back(target[i].x);
    view.Y.push_back(target[i].y);
    view.Z.push_back(0);
    view.image.x.push_back(pixels[i].x);
    view.image.y.push_back(pixels[i].y);
  }
  return view;
}

inline solver::ViewPoints viewPoints(const support::RigView& view) {
  return viewPoints(view.objectPoints, view.imagePoints);
}

inline std::vector<solver::ViewPoints> viewPoints(const support::Rig& rig) {
  std::vector<solver::ViewPoints> views;
  for (const support::RigView& view : rig.views) {
    views.push_back(viewPoints(view));
  }
  return views;
}

inline std::vector<solver::ViewPoints> viewPoints(const support::MeasuredCamera& camera) {
  std::vector<solver::ViewPoints> views;
  for (const support::MeasuredView& view : camera.views) {
    views.push_back(viewPoints(view.objectPoints, view.imagePoints));
  }
  return views;
}

inline lens::Camera cameraOf(const support::RigCamera& rig) {
  return {.fx = rig.fx,
          .fy = rig.fy,
          .cx = rig.cx,
          .cy = rig.cy,
          .k0 = rig.k0,
          .k1 = rig.k1,
          .alpha = rig.skew};
}

inline lens::Pose poseOf(const support::RigPose& pose) { return {pose.rotation, pose.translation}; }

inline cv::Vec6d columnOf(const lens::Camera& c) { return {c.fx, c.fy, c.cx, c.cy, c.k0, c.k1}; }

inline cv::Vec6d columnOf(const lens::Pose& p) {
  return {p.om[0], p.om[1], p.om[2], p.T[0], p.T[1], p.T[2]};
}

inline plain::UncertainProblem plainProblem(const std::vector<solver::ViewPoints>& views,
                                            const cv::Size& imageSize, const lens::Camera& camera,
                                            const std::vector<lens::Pose>& poses) {
  plain::UncertainProblem problem;
  problem.imageSize = imageSize;
  problem.lens = columnOf(camera);
  for (std::size_t v = 0; v < views.size(); ++v) {
    problem.poses.push_back(columnOf(poses[v]));
    problem.target.emplace_back();
    problem.pixels.emplace_back();
    for (std::size_t i = 0; i < views[v].size(); ++i) {
      problem.target.back().emplace_back(views[v].X[i], views[v].Y[i], 0);
      problem.pixels.back().emplace_back(views[v].image.x[i], views[v].image.y[i]);
    }
  }
  return problem;
}

// A view of one pose, with noise of `sigma` pixels.
struct Scene {
  support::RigCamera camera;
  support::Bed bed;
  support::RigPose pose = support::poseOver(bed, 190, 0.35, -0.25, 0.2);

  solver::ViewPoints seen(double sigma, std::uint64_t seed) const {
    return viewPoints(support::seen(camera, bed, pose, sigma, seed));
  }
};

inline cv::Mat dense(const robust::ArrowMatrix& A) {
  const int unknowns = 6 + 6 * static_cast<int>(A.views.size());
  cv::Mat full = cv::Mat::zeros(unknowns, unknowns, CV_64F);
  for (int r = 0; r < 6; ++r) {
    for (int c = 0; c < 6; ++c) {
      full.at<double>(r, c) = A.prior(r, c);
    }
  }
  for (std::size_t j = 0; j < A.views.size(); ++j) {
    const auto at = [j](int k) { return k < 6 ? k : 6 * static_cast<int>(j) + k; };
    for (int r = 0; r < 12; ++r) {
      for (int c = 0; c < 12; ++c) {
        full.at<double>(at(r), at(c)) += A.views[j](r, c);
      }
    }
  }
  return full;
}

// The rows and columns of the lens and of pose j.
inline cv::Mat ofView(const cv::Mat& A, int j) {
  const auto at = [j](int k) { return k < 6 ? k : 6 * j + k; };
  cv::Mat part(12, 12, CV_64F);
  for (int r = 0; r < 12; ++r) {
    for (int c = 0; c < 12; ++c) {
      part.at<double>(r, c) = A.at<double>(at(r), at(c));
    }
  }
  return part;
}

// Largest |a - b| in units of sqrt(b_rr b_cc): for covariances, whose units differ.
inline double largestDifference(const cv::Mat& a, const cv::Mat& b) {
  double worst = 0;
  for (int r = 0; r < b.rows; ++r) {
    for (int c = 0; c < b.cols; ++c) {
      const double scale = std::sqrt(b.at<double>(r, r) * b.at<double>(c, c));
      const double difference = std::abs(a.at<double>(r, c) - b.at<double>(r, c));
      const double share = difference == 0 ? 0 : difference / scale;
      worst = share <= worst ? worst : share;  // a NaN is the worst of all
    }
  }
  return worst;
}

}  // namespace robust_tests
