#include "robust/wrong_points.h"

#include <algorithm>
#include <cmath>

#include "robust/median.h"
#include "robust/point_rows.h"
#include "robust/without_listed.h"

namespace fisheye_calibration::robust {
namespace {

// The median length of a vector of two independent normal errors of standard deviation 1.
constexpr double kMedianLength = 1.17741;

constexpr double kSuspicious = 4.5;  // robust standard deviations that start a search

// A wrong point among fewer than these bends the solution so much that its own residual is not
// conspicuous: the search runs in any case.
constexpr std::size_t kFewPoints = 30;

constexpr double kWrong = 6;
constexpr double kUnpredicted = 5;

constexpr int kSoftRounds = 4;
constexpr int kRounds = 12;
constexpr int kStepsPerRound = 4;
constexpr int kReadmissions = 10;

std::vector<double> lengths(const solver::ViewPoints& view, const lens::Camera& camera,
                            const lens::Pose& pose) {
  std::vector<double> e;
  for (const cv::Vec2d& residual : viewRows(view, PosedCamera(camera, pose)).e) {
    e.push_back(cv::norm(residual));
  }
  return e;
}

double robustScale(const std::vector<double>& e) {
  return std::max(median(e) / kMedianLength, kFinestNoise);
}

bool isSuspicious(const std::vector<solver::ViewPoints>& views, const Bundle& at) {
  for (std::size_t j = 0; j < views.size(); ++j) {
    if (views[j].size() < kFewestSearchedPoints) {
      continue;
    }
    const std::vector<double> e = lengths(views[j], at.camera, at.poses[j]);
    if (views[j].size() < kFewPoints ||
        *std::max_element(e.begin(), e.end()) > kSuspicious * robustScale(e)) {
      return true;
    }
  }
  return false;
}

// Weights of residuals of length e with robust scale s: Cauchy's 1/(1 + (e/2s)^2), which keeps all
// points, or Tukey's (1 - (e/6s)^2)^2, 0 beyond 6 s.
double weight(double e, double s, bool soft) {
  if (soft) {
    return 1 / (1 + e * e / (4 * s * s));
  }
  const double inside = std::max(0.0, 1 - e * e / (kWrong * kWrong * s * s));
  return inside * inside;
}

// Iteratively reweighted least squares; the poses start with wrong points down-weighted, too.
Bundle reweighted(const std::vector<solver::ViewPoints>& views, const FitSettings& settings,
                  const Bundle& start) {
  BundleProblem problem{&views, PointWeights(views.size()), settings.prior, 1, settings.holdLens};
  Bundle bundle = start;
  for (int round = 0; round < kRounds; ++round) {
    for (std::size_t j = 0; j < views.size(); ++j) {
      const std::vector<double> e = lengths(views[j], bundle.camera, bundle.poses[j]);
      const double s = robustScale(e);
      problem.weights[j].clear();
      for (const double length : e) {
        problem.weights[j].push_back(weight(length, s, round < kSoftRounds));
      }
    }
    bundle = solveBundle(problem, bundle, kStepsPerRound).bundle;
  }
  return bundle;
}

PointLists beyond(const std::vector<solver::ViewPoints>& views, const Bundle& at) {
  PointLists lists(views.size());
  for (std::size_t j = 0; j < views.size(); ++j) {
    if (views[j].size() < kFewestSearchedPoints) {
      continue;
    }
    const std::vector<double> e = lengths(views[j], at.camera, at.poses[j]);
    const double limit = kWrong * robustScale(e);
    for (std::size_t i = 0; i < e.size(); ++i) {
      if (e[i] > limit) {
        lists[j].push_back(i);
      }
    }
  }
  return lists;
}

// Whether the others do not explain point i, by the fit without it: e^T (s^2 I + J Sigma J^T)^-1 e.
bool isUnpredicted(const PointRows& rows, const cv::Vec2d& e, const ViewMatrix& Sigma,
                   double variance) {
  const cv::Vec<double, 12> ofU = Sigma * rows.u;
  const cv::Vec<double, 12> ofV = Sigma * rows.v;
  const cv::Matx22d S(variance + rows.u.dot(ofU), rows.u.dot(ofV),  //
                      rows.v.dot(ofU), variance + rows.v.dot(ofV));
  return e.dot(S.inv() * e) > kUnpredicted * kUnpredicted;
}

// The candidates that a fit without all of them does contradict. If the rest does not determine a
// camera, nothing speaks for the candidates and the calibration is to be refused: all of them.
PointLists confirmed(const std::vector<solver::ViewPoints>& views, const FitSettings& settings,
                     const PointLists& candidates, const Fit& rest) {
  const auto Sigma = covarianceOf(without(views, candidates), settings, rest);
  if (!Sigma) {
    return candidates;
  }
  PointLists lists(views.size());
  for (std::size_t j = 0; j < views.size(); ++j) {
    const ViewRows rows = viewRows(views[j], PosedCamera(rest.bundle.camera, rest.bundle.poses[j]));
    for (const std::size_t i : candidates[j]) {
      const double variance = std::max(rest.noise.variance, kFinestNoise * kFinestNoise);
      if (isUnpredicted(rows.points[i], rows.e[i], (*Sigma)[j], variance)) {
        lists[j].push_back(i);
      }
    }
  }
  return lists;
}

}  // namespace

solver::ViewPoints without(const solver::ViewPoints& view, const std::vector<std::size_t>& wrong) {
  solver::ViewPoints kept;
  kept.X = withoutListed(view.X, wrong);
  kept.Y = withoutListed(view.Y, wrong);
  kept.Z = withoutListed(view.Z, wrong);
  kept.image.x = withoutListed(view.image.x, wrong);
  kept.image.y = withoutListed(view.image.y, wrong);
  return kept;
}

std::vector<solver::ViewPoints> without(const std::vector<solver::ViewPoints>& views,
                                        const PointLists& wrong) {
  std::vector<solver::ViewPoints> kept;
  for (std::size_t j = 0; j < views.size(); ++j) {
    kept.push_back(without(views[j], wrong[j]));
  }
  return kept;
}

PointLists findWrongPoints(const std::vector<solver::ViewPoints>& views,
                           const FitSettings& settings, const Fit& fit, const lens::Camera& start) {
  PointLists candidates(views.size());
  if (fit.converged && !isSuspicious(views, fit.bundle)) {
    return candidates;
  }
  const auto robustStart = startingBundle(views, start, true);
  const Bundle bundle = reweighted(views, settings, robustStart ? *robustStart : fit.bundle);
  candidates = beyond(views, bundle);
  Fit rest{bundle, {}, {}, 0, false};
  for (int round = 0; round < kReadmissions; ++round) {
    rest = fitWithNoise(without(views, candidates), settings, rest.bundle);
    PointLists still = confirmed(views, settings, candidates, rest);
    if (still == candidates) {
      break;
    }
    candidates = std::move(still);
  }
  return candidates;
}

}  // namespace fisheye_calibration::robust
