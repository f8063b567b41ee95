#include "support/plain_uncertainty.h"

#include <algorithm>
#include <cmath>

#include "support/derivatives.h"

namespace plain {
namespace {

cv::Mat projectionColumn(const cv::Vec6d& lens, const cv::Vec6d& pose) {
  cv::Mat column(13, 1, CV_64F, cv::Scalar(0));
  for (int i = 0; i < 6; ++i) {
    column.at<double>(i) = lens[i];
    column.at<double>(6 + i) = pose[i];
  }
  return column;
}

double diagonalOf(const std::vector<cv::Point3d>& points) {
  double left = points[0].x, right = left, top = points[0].y, bottom = top;
  for (const cv::Point3d& p : points) {
    left = std::min(left, p.x);
    right = std::max(right, p.x);
    top = std::min(top, p.y);
    bottom = std::max(bottom, p.y);
  }
  return std::hypot(right - left, bottom - top);
}

// The correlation of two points' errors; their x and y errors are independent.
double correlation(const UncertainProblem& problem, size_t view, size_t i, size_t j) {
  if (problem.whiteNoise) return i == j ? 1 : 0;
  const std::vector<cv::Point3d>& points = problem.target[view];
  const double distance = cv::norm(points[i] - points[j]);
  const double length = 0.25 * diagonalOf(points);
  return (i == j ? 0.1 : 0) + 0.9 * std::exp(-distance * distance / (2 * length * length));
}

// Inverse of a positive definite matrix, scaled to a unit diagonal.
cv::Mat inverseOf(const cv::Mat& A) {
  cv::Mat scale = cv::Mat::zeros(A.size(), CV_64F);
  for (int i = 0; i < A.rows; ++i) {
    scale.at<double>(i, i) = 1 / std::sqrt(A.at<double>(i, i));
  }
  cv::Mat inverse;
  cv::invert(cv::Mat(scale * A * scale), inverse, cv::DECOMP_CHOLESKY);
  return scale * inverse * scale;
}

// h: deviations of a lens from a usual one, in standard deviations.
cv::Mat priorDeviations(const UncertainProblem& problem) {
  const cv::Vec6d& p = problem.lens;
  const double width = 0.03 * std::max(problem.imageSize.width, problem.imageSize.height);
  const double centreX = (problem.imageSize.width - 1) / 2.0;
  const double centreY = (problem.imageSize.height - 1) / 2.0;
  return (cv::Mat_<double>(5, 1) << std::log(p[0] / p[1]) / 0.01, (p[2] - centreX) / width,
          (p[3] - centreY) / width, p[4] / 0.05, p[5] / 0.10);
}

// dh/dp; the poses have none.
cv::Mat priorRows(const UncertainProblem& problem, int unknowns) {
  cv::Mat rows = cv::Mat::zeros(5, unknowns, CV_64F);
  const double width = 0.03 * std::max(problem.imageSize.width, problem.imageSize.height);
  rows.at<double>(0, 0) = 1 / (0.01 * problem.lens[0]);
  rows.at<double>(0, 1) = -1 / (0.01 * problem.lens[1]);
  rows.at<double>(1, 2) = rows.at<double>(2, 3) = 1 / width;
  rows.at<double>(3, 4) = 1 / 0.05;
  rows.at<double>(4, 5) = 1 / 0.10;
  return rows;
}

// Only the rows and columns of the poses.
cv::Mat posesOnly(const cv::Mat& A) {
  return A(cv::Range(6, A.rows), cv::Range(6, A.cols)).clone();
}

struct DenseSystem {
  cv::Mat J, Omega, residuals;
};

DenseSystem denseSystem(const UncertainProblem& problem) {
  int rows = 0;
  for (const auto& points : problem.target) rows += 2 * static_cast<int>(points.size());
  const int unknowns = 6 + 6 * static_cast<int>(problem.poses.size());
  DenseSystem system{cv::Mat::zeros(rows, unknowns, CV_64F), cv::Mat::zeros(rows, rows, CV_64F),
                     cv::Mat(rows, 1, CV_64F)};
  int first = 0;
  for (size_t v = 0; v < problem.poses.size(); ++v) {
    const std::vector<cv::Point3d>& points = problem.target[v];
    const int count = static_cast<int>(points.size());
    const cv::Mat column = projectionColumn(problem.lens, problem.poses[v]);
    const cv::Mat J = support::differentiatedProjection(points, column);
    const auto numbers = support::projectionParameters(column);
    const cv::Range ofView(first, first + 2 * count);
    J.colRange(0, 6).copyTo(system.J(ofView, cv::Range(0, 6)));
    const int at = 6 + 6 * static_cast<int>(v);
    J.colRange(6, 12).copyTo(system.J(ofView, cv::Range(at, at + 6)));
    for (int i = 0; i < count; ++i) {
      const auto k = static_cast<size_t>(i);
      const auto pixel = support::projectPoint<double>(points[k], numbers);
      system.residuals.at<double>(first + 2 * i) = problem.pixels[v][k].x - pixel[0];
      system.residuals.at<double>(first + 2 * i + 1) = problem.pixels[v][k].y - pixel[1];
      for (int j = 0; j < count; ++j) {
        const double c = correlation(problem, v, k, static_cast<size_t>(j));
        system.Omega.at<double>(first + 2 * i, first + 2 * j) = c;
        system.Omega.at<double>(first + 2 * i + 1, first + 2 * j + 1) = c;
      }
    }
    first += 2 * count;
  }
  return system;
}

// The poses' own errors, and those by which they follow an error d of the lens: with the lens at p
// + d the poses move by -V^-1 W^T d, M = [U W; W^T V].
cv::Mat heldLensSigma(const UncertainProblem& problem, const Uncertainty& u, const cv::Mat& V,
                      const cv::Mat& B) {
  const cv::Mat A = inverseOf(V);
  cv::Mat Sigma = cv::Mat::zeros(u.M.size(), CV_64F);
  const cv::Mat ofPoses = u.variance * A * B * A;
  ofPoses.copyTo(Sigma(cv::Range(6, u.M.rows), cv::Range(6, u.M.cols)));
  cv::Mat follow = cv::Mat::eye(u.M.rows, 6, CV_64F);
  const cv::Mat WT = u.M(cv::Range(6, u.M.rows), cv::Range(0, 6));
  follow.rowRange(6, u.M.rows) = -A * WT;
  return Sigma + follow * cv::Mat(problem.heldLensCovariance) * follow.t();
}

}  // namespace

Uncertainty uncertainty(const UncertainProblem& problem) {
  const DenseSystem system = denseSystem(problem);
  Uncertainty u;
  u.M = system.J.t() * system.J;
  u.B = system.J.t() * system.Omega * system.J;
  u.rss = system.residuals.dot(system.residuals);
  const cv::Mat M = problem.holdLens ? posesOnly(u.M) : u.M;
  const cv::Mat B = problem.holdLens ? posesOnly(u.B) : u.B;
  u.t = cv::trace(cv::Mat(inverseOf(M) * B))[0];
  u.variance = problem.variance > 0 ? problem.variance : u.rss / (system.J.rows - u.t);
  u.kappa = u.variance * u.t / M.rows;
  u.gradient = system.J.t() * system.residuals;
  if (problem.holdLens) {
    u.gradient.rowRange(0, 6) = 0;
    u.Sigma = heldLensSigma(problem, u, M, B);
    return u;
  }
  cv::Mat P = cv::Mat::zeros(u.M.size(), CV_64F);
  if (problem.priors) {
    const cv::Mat rows = priorRows(problem, u.M.cols);
    P = rows.t() * rows;
    u.gradient -= u.kappa * rows.t() * priorDeviations(problem);
  }
  const cv::Mat A = inverseOf(cv::Mat(M / u.kappa + P));
  u.Sigma = A * (u.variance / (u.kappa * u.kappa) * B + P) * A;
  return u;
}

}  // namespace plain
