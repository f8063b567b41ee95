#include "robust/smooth_noise.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "robust/point_rows.h"

namespace fisheye_calibration::robust {
namespace {

constexpr double kWhiteShare = 0.1;
constexpr double kSmoothShare = 1 - kWhiteShare;
constexpr double kCorrelationLength = 0.25;  // of the target's diagonal
constexpr double kMostPoints = 2000;

// A direction whose information is lost in rounding gets this much, of a unit diagonal, for the
// trace: it contributes nothing to B, either.
constexpr double kRidge = 1e-13;

struct Sample {
  std::vector<double> X, Y;
  std::vector<PointRows> rows;
};

double squaredDiagonal(const std::vector<double>& X, const std::vector<double>& Y) {
  const auto [left, right] = std::minmax_element(X.begin(), X.end());
  const auto [top, bottom] = std::minmax_element(Y.begin(), Y.end());
  return (*right - *left) * (*right - *left) + (*bottom - *top) * (*bottom - *top);
}

// Whether point i of `count` is one of about kMostPoints. The multiples of the golden ratio are
// spread evenly whatever the rows of the target are; every k-th point may be a single column of it.
bool isSampled(std::size_t i, std::size_t count) {
  const double multiple = static_cast<double>(i) * std::numbers::phi;
  return (multiple - std::floor(multiple)) * static_cast<double>(count) < kMostPoints;
}

// sum_ij exp(-|X_i - X_j|^2/(2 l^2)) J_i^T J_j = C + C^T + sum_i J_i^T J_i with C the sum over j <
// i, collected as J_i^T (sum_j exp() J_j).
ViewMatrix smoothSum(const Sample& sample, double squaredLength) {
  ViewMatrix C;
  for (std::size_t i = 0; i < sample.rows.size(); ++i) {
    ViewVector u = 0.5 * sample.rows[i].u;
    ViewVector v = 0.5 * sample.rows[i].v;
    for (std::size_t j = 0; j < i; ++j) {
      const double dX = sample.X[i] - sample.X[j];
      const double dY = sample.Y[i] - sample.Y[j];
      const double correlation = std::exp(-(dX * dX + dY * dY) / (2 * squaredLength));
      for (int k = 0; k < kViewUnknowns; ++k) {
        u[k] += correlation * sample.rows[j].u[k];
        v[k] += correlation * sample.rows[j].v[k];
      }
    }
    C += sample.rows[i].u * u.t() + sample.rows[i].v * v.t();
  }
  return C + C.t();
}

std::size_t countUnknowns(const BundleProblem& problem) {
  return (problem.holdLens ? 0 : kLensUnknowns) + kPoseUnknowns * problem.views->size();
}

// tr(M^-1 B)
double trace(const ArrowMatrix& M, const ArrowMatrix& B, bool holdLens) {
  const ArrowInverse inverse(M, holdLens);
  if (inverse.isAccurate()) {
    return inverse.traceWith(B);
  }
  ArrowMatrix ridged = M;
  for (ViewMatrix& view : ridged.views) {
    for (int i = 0; i < kViewUnknowns; ++i) {
      view(i, i) *= 1 + kRidge;
    }
  }
  const ArrowInverse nearly(ridged, holdLens);
  return nearly.exists() ? nearly.traceWith(B) : 0;
}

ArrowMatrix noiseProducts(const BundleProblem& problem, const Bundle& at,
                          const BundleEquations& equations, NoiseKind kind) {
  if (kind == NoiseKind::kWhite) {
    return equations.M;
  }
  ArrowMatrix B;
  for (std::size_t j = 0; j < problem.views->size(); ++j) {
    B.views.push_back(smoothProduct((*problem.views)[j], at.camera, at.poses[j]));
  }
  return B;
}

}  // namespace

ViewMatrix smoothProduct(const solver::ViewPoints& view, const lens::Camera& camera,
                         const lens::Pose& pose) {
  if (view.size() == 0) {
    return {};
  }
  const PosedCamera posed(camera, pose);
  Sample sample;
  ViewMatrix M;
  for (std::size_t i = 0; i < view.size(); ++i) {
    const PointRows rows = pointRows(posed, view.X[i], view.Y[i], view.Z[i]);
    addOuterProducts(M, rows, 1);
    if (isSampled(i, view.size())) {
      sample.X.push_back(view.X[i]);
      sample.Y.push_back(view.Y[i]);
      sample.rows.push_back(rows);
    }
  }
  mirrorLower(M);
  const double share = static_cast<double>(view.size()) / static_cast<double>(sample.rows.size());
  const double squaredLength =
      kCorrelationLength * kCorrelationLength * squaredDiagonal(view.X, view.Y);
  return kWhiteShare * M + kSmoothShare * share * share * smoothSum(sample, squaredLength);
}

NoiseFit noiseOfVariance(const BundleProblem& problem, const Bundle& at,
                         const BundleEquations& equations, NoiseKind kind, double variance) {
  NoiseFit noise;
  const auto unknowns = static_cast<double>(countUnknowns(problem));
  noise.B = noiseProducts(problem, at, equations, kind);
  noise.t = kind == NoiseKind::kWhite ? unknowns : trace(equations.M, noise.B, problem.holdLens);
  noise.variance = variance;
  noise.kappa = variance * noise.t / unknowns;
  return noise;
}

NoiseFit fitNoise(const BundleProblem& problem, const Bundle& at, const BundleEquations& equations,
                  NoiseKind kind) {
  NoiseFit noise = noiseOfVariance(problem, at, equations, kind, 1);
  const double rows = 2 * static_cast<double>(solver::countPoints(*problem.views));
  const auto unknowns = static_cast<double>(countUnknowns(problem));
  noise.variance = rows > unknowns ? equations.rss / (rows - noise.t) : 0;
  noise.assumed = rows < unknowns + kFewestSpareRows;
  if (noise.assumed) {
    noise.variance = std::max(noise.variance, kAssumedVariance);
  }
  noise.kappa *= noise.variance;
  return noise;
}

std::optional<std::vector<ViewMatrix>> covariance(const BundleProblem& problem, const Bundle& at,
                                                  const BundleEquations& equations,
                                                  const NoiseFit& noise,
                                                  const cv::Matx66d& heldLensCovariance) {
  const cv::Matx66d P = problem.prior.information(at.camera);
  ArrowMatrix M = equations.M;
  M.prior = noise.kappa * P;
  const ArrowInverse A(M, problem.holdLens);
  if (!A.isAccurate()) {
    return std::nullopt;
  }
  ArrowMatrix C = noise.B;
  C.prior = noise.kappa * noise.kappa * P;
  for (ViewMatrix& view : C.views) {
    view = noise.variance * view;
  }
  std::vector<ViewMatrix> sigma;
  for (std::size_t j = 0; j < problem.views->size(); ++j) {
    sigma.push_back(A.product(C, j));
    if (problem.holdLens) {
      sigma.back() += A.followingLens(heldLensCovariance, j);
    }
    if (!cv::checkRange(sigma.back())) {
      return std::nullopt;
    }
  }
  return sigma;
}

}  // namespace fisheye_calibration::robust
