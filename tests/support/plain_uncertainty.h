// The uncertainty of a calibration from dense matrices, as the textbooks write it: one big Jacobian
// by automatic differentiation, every correlation in a 2N x 2N matrix, general inverses.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

namespace plain {

// One camera and n views; all columns in the order fx, fy, cx, cy, k0, k1 and per view rotation
// vector and translation.
struct UncertainProblem {
  cv::Size imageSize;
  cv::Vec6d lens;
  std::vector<cv::Vec6d> poses;
  std::vector<std::vector<cv::Point3d>> target;
  std::vector<std::vector<cv::Point2d>> pixels;
  bool priors = true;
  bool whiteNoise = false;
  bool holdLens = false;  // only the poses are solved, without priors
  cv::Matx66d heldLensCovariance = cv::Matx66d::zeros();
  double variance = 0;  // 0: estimated from the residuals
};

struct Uncertainty {
  cv::Mat M;         // J^T J
  cv::Mat B;         // J^T Omega J
  cv::Mat gradient;  // of what the solution minimises, -(rss + kappa |h|^2)/2; 0 there
  cv::Mat Sigma;
  double rss = 0;
  double t = 0;         // tr(M^-1 B)
  double variance = 0;  // rss/(rows - t)
  double kappa = 0;     // variance t/unknowns
};

Uncertainty uncertainty(const UncertainProblem& problem);

}  // namespace plain
