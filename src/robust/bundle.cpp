#include "robust/bundle.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "robust/point_rows.h"

namespace fisheye_calibration::robust {
namespace {

constexpr double kFirstDamping = 1e-3;
constexpr double kLeastDamping = 1e-14;
constexpr double kMostDamping = 1e12;
constexpr double kSmallestGain = 1e-16;  // share of the cost
constexpr double kRounding = 1e-24;      // px^2 per point: nothing below it can be gained

LensVector head(const ViewVector& x) { return LensVector(x.val); }
PoseVector tail(const ViewVector& x) { return PoseVector(x.val + kLensUnknowns); }

// Adds one view's sums. M has its lower triangle only until all points are in.
void addView(const solver::ViewPoints& view, const std::vector<double>& weights,
             const PosedCamera& posed, BundleEquations& equations) {
  ViewMatrix M;
  ViewVector b;
  for (std::size_t i = 0; i < view.size(); ++i) {
    const double w = weights.empty() ? 1 : weights[i];
    if (w == 0) {
      continue;
    }
    const PointRows rows = pointRows(posed, view.X[i], view.Y[i], view.Z[i]);
    const cv::Vec2d e = cv::Vec2d(view.image.x[i], view.image.y[i]) - rows.pixel;
    equations.allInFront = equations.allInFront && rows.depth > 0;
    equations.largestTheta = std::max(equations.largestTheta, rows.theta);
    equations.rss += w * e.dot(e);
    addOuterProducts(M, rows, w);
    b += w * e[0] * rows.u + w * e[1] * rows.v;
  }
  mirrorLower(M);
  equations.M.views.push_back(M);
  equations.b.lens += head(b);
  equations.b.poses.push_back(tail(b));
}

double cost(const BundleProblem& problem, const Bundle& at, const BundleEquations& equations) {
  if (!(at.camera.fx > 0 && at.camera.fy > 0)) {
    return std::numeric_limits<double>::infinity();
  }
  const cv::Vec<double, 5> h = problem.prior.deviations(at.camera);
  return equations.rss + (problem.holdLens ? 0 : problem.kappa * h.dot(h));
}

// b of the least squares with the prior: b - kappa (dh/dp)^T h.
ArrowVector gradient(const BundleProblem& problem, const Bundle& at,
                     const BundleEquations& equations) {
  ArrowVector b = equations.b;
  const auto d = problem.prior.derivatives(at.camera);
  b.lens -= problem.kappa * (d.t() * problem.prior.deviations(at.camera));
  return b;
}

// M + kappa P + damping times its diagonal.
ArrowMatrix damped(const BundleProblem& problem, const Bundle& at, const BundleEquations& equations,
                   double damping) {
  ArrowMatrix M = equations.M;
  M.prior = problem.kappa * problem.prior.information(at.camera);
  cv::Matx66d lens = M.prior;
  for (ViewMatrix& view : M.views) {
    lens += lensBlock(view);
    for (int i = kLensUnknowns; i < kViewUnknowns; ++i) {
      view(i, i) *= 1 + damping;
    }
  }
  for (int i = 0; i < kLensUnknowns; ++i) {
    M.prior(i, i) += damping * lens(i, i);
  }
  return M;
}

Bundle moved(const Bundle& from, const ArrowVector& step) {
  Bundle to = from;
  to.camera.fx += step.lens[0];
  to.camera.fy += step.lens[1];
  to.camera.cx += step.lens[2];
  to.camera.cy += step.lens[3];
  to.camera.k0 += step.lens[4];
  to.camera.k1 += step.lens[5];
  for (std::size_t j = 0; j < to.poses.size(); ++j) {
    for (int i = 0; i < 3; ++i) {
      to.poses[j].om[i] += step.poses[j][i];
      to.poses[j].T[i] += step.poses[j][3 + i];
    }
  }
  return to;
}

double dot(const ArrowVector& a, const ArrowVector& b, bool holdLens) {
  double sum = holdLens ? 0 : a.lens.dot(b.lens);
  for (std::size_t j = 0; j < a.poses.size(); ++j) {
    sum += a.poses[j].dot(b.poses[j]);
  }
  return sum;
}

// What the step without damping promises; a strongly damped one promises little anywhere.
double undampedGain(const BundleProblem& problem, const BundleResult& at, const ArrowVector& b) {
  const ArrowInverse A(damped(problem, at.bundle, at.equations, 0), problem.holdLens);
  return A.exists() ? dot(A.times(b), b, problem.holdLens) : 0;
}

}  // namespace

BundleEquations bundleEquations(const BundleProblem& problem, const Bundle& at) {
  BundleEquations equations;
  equations.allInFront = true;
  for (std::size_t j = 0; j < problem.views->size(); ++j) {
    addView((*problem.views)[j], problem.weights[j], PosedCamera(at.camera, at.poses[j]),
            equations);
  }
  return equations;
}

BundleResult solveBundle(const BundleProblem& problem, const Bundle& start, int maxSteps) {
  BundleResult result{start, bundleEquations(problem, start), 0, false};
  double current = cost(problem, start, result.equations);
  const double rounding = kRounding * static_cast<double>(solver::countPoints(*problem.views));
  double damping = kFirstDamping;
  while (std::isfinite(current) && result.steps < maxSteps && damping < kMostDamping) {
    const ArrowInverse A(damped(problem, result.bundle, result.equations, damping),
                         problem.holdLens);
    if (!A.exists()) {
      damping *= 10;
      continue;
    }
    const ArrowVector b = gradient(problem, result.bundle, result.equations);
    const ArrowVector step = A.times(b);
    const double gain = dot(step, b, problem.holdLens);
    const double smallest = kSmallestGain * current + rounding;
    if (gain <= smallest && undampedGain(problem, result, b) <= smallest) {
      result.converged = true;
      break;
    }
    ++result.steps;
    const Bundle next = moved(result.bundle, step);
    BundleEquations equations = bundleEquations(problem, next);
    const double reached = cost(problem, next, equations);
    if (reached < current) {
      result.bundle = next;
      result.equations = std::move(equations);
      current = reached;
      damping = std::max(damping / 10, kLeastDamping);
    } else if (gain <= 1e-12 * current) {
      result.converged = true;  // the cost is at the limit of its own rounding
      break;
    } else {
      damping *= 10;
    }
  }
  return result;
}

}  // namespace fisheye_calibration::robust
