#include "robust/wrong_views.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "robust/median.h"
#include "robust/point_rows.h"
#include "robust/without_listed.h"

namespace fisheye_calibration::robust {
namespace {

constexpr double kSuspiciousView = 1.2;  // times the median rms of the views
constexpr double kWrongView = 4;

// A wrong view spoils the residuals of others, the more so the fewer they are, and the view with
// the largest is not always the one.
constexpr std::size_t kMostSuspects = 3;
constexpr std::size_t kFewViews = 6;

// Per coordinate, pixels.
double rmsOf(const solver::ViewPoints& view, const lens::Camera& camera, const lens::Pose& pose) {
  double squares = 0;
  for (const cv::Vec2d& e : viewRows(view, PosedCamera(camera, pose)).e) {
    squares += e.dot(e);
  }
  return std::sqrt(squares / static_cast<double>(2 * view.size()));
}

std::vector<double> rmsOfAll(const std::vector<solver::ViewPoints>& views, const Bundle& at) {
  std::vector<double> rms;
  for (std::size_t j = 0; j < views.size(); ++j) {
    rms.push_back(rmsOf(views[j], at.camera, at.poses[j]));
  }
  return rms;
}

// What the covariance of a lens adds to the squared rms of a view whose pose follows the lens: mean
// of tr(J Sigma J^T)/2, Sigma = Q L Q^T with the pose's share of Q as in ArrowInverse.
double explainedVariance(const solver::ViewPoints& view, const lens::Camera& camera,
                         const lens::Pose& pose, const cv::Matx66d& L) {
  const ViewRows rows = viewRows(view, PosedCamera(camera, pose));
  ViewMatrix M;
  for (const PointRows& point : rows.points) {
    addOuterProducts(M, point, 1);
  }
  mirrorLower(M);
  const ArrowInverse A({cv::Matx66d::zeros(), {M}}, true);
  if (!A.isAccurate()) {
    return std::numeric_limits<double>::infinity();
  }
  const ViewMatrix Sigma = A.followingLens(L, 0);
  double sum = 0;
  for (const PointRows& point : rows.points) {
    sum += point.u.dot(Sigma * point.u) + point.v.dot(Sigma * point.v);
  }
  return sum / static_cast<double>(2 * view.size());
}

// Indices of the views with the largest residuals, worst first and the first first among equals; of
// a few views, all.
std::vector<std::size_t> suspects(const std::vector<double>& rms) {
  const bool few = rms.size() <= kFewViews;
  const double limit = few ? 0 : kSuspiciousView * std::max(median(rms), kFinestNoise);
  std::vector<std::size_t> worst;
  for (std::size_t j = 0; j < rms.size(); ++j) {
    if (rms[j] > limit) {
      worst.push_back(j);
    }
  }
  std::stable_sort(worst.begin(), worst.end(),
                   [&](std::size_t a, std::size_t b) { return rms[a] > rms[b]; });
  worst.resize(std::min(worst.size(), few ? kFewViews : kMostSuspects));
  return worst;
}

// One view and the fit of the others.
struct LeftOut {
  std::vector<solver::ViewPoints> others;
  Fit fit;
  double contradiction = 0;  // the view's rms, in units of what the others explain
};

LeftOut leaveOut(const std::vector<solver::ViewPoints>& views, std::size_t index,
                 const FitSettings& settings, const Bundle& bundle) {
  LeftOut left{withoutListed(views, {index}), {}, 0};
  left.fit =
      fitWithNoise(left.others, settings, {bundle.camera, withoutListed(bundle.poses, {index})});
  const auto Sigma = covarianceOf(left.others, settings, left.fit);
  if (!Sigma) {
    return left;
  }
  const solver::ViewPoints& view = views[index];
  const lens::Camera& camera = left.fit.bundle.camera;
  const lens::Pose pose = poseWithLens(view, settings, camera, bundle.poses[index]);
  const double usual = std::max(median(rmsOfAll(left.others, left.fit.bundle)), kFinestNoise);
  const double explained =
      left.fit.noise.variance + explainedVariance(view, camera, pose, lensBlock(Sigma->front()));
  left.contradiction = rmsOf(view, camera, pose) / std::max(usual, std::sqrt(explained));
  return left;
}

}  // namespace

lens::Pose poseWithLens(const solver::ViewPoints& view, const FitSettings& settings,
                        const lens::Camera& camera, const lens::Pose& start) {
  const std::vector<solver::ViewPoints> one{view};
  const BundleProblem problem{&one, PointWeights(1), settings.prior, 1, true};
  const auto linear = startingBundle(one, camera, false);
  return solveBundle(problem, linear ? *linear : Bundle{camera, {start}}).bundle.poses.front();
}

std::vector<std::size_t> findWrongViews(const std::vector<solver::ViewPoints>& views,
                                        const FitSettings& settings, const Fit& fit) {
  std::vector<std::size_t> wrong;
  std::vector<solver::ViewPoints> kept = views;
  std::vector<std::size_t> indices(views.size());
  for (std::size_t j = 0; j < views.size(); ++j) {
    indices[j] = j;
  }
  Bundle bundle = fit.bundle;
  while (kept.size() >= kFewestSearchedViews) {
    std::size_t worst = 0;
    LeftOut best;
    for (const std::size_t j : suspects(rmsOfAll(kept, bundle))) {
      LeftOut left = leaveOut(kept, j, settings, bundle);
      if (left.contradiction > best.contradiction) {
        best = std::move(left);
        worst = j;
      }
    }
    if (!(best.contradiction > kWrongView)) {
      break;
    }
    wrong.push_back(indices[worst]);
    kept = std::move(best.others);
    indices = withoutListed(indices, {worst});
    bundle = best.fit.bundle;
  }
  std::sort(wrong.begin(), wrong.end());
  return wrong;
}

}  // namespace fisheye_calibration::robust
