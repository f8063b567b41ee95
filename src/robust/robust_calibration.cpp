#include "robust/robust_calibration.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include "robust/consistent_views.h"
#include "robust/robust_input.h"
#include "robust/viewing_ray.h"
#include "robust/wrong_views.h"

namespace fisheye_calibration::robust {
namespace {

FitSettings settingsOf(const cv::Size& imageSize, const RobustOptions& options) {
  const bool held = options.heldLens.has_value();
  return {LensPrior(imageSize, options.priors && !held), options.noiseKind, held,
          held ? options.heldLens->covariance : cv::Matx66d::zeros()};
}

// An equidistant lens, centred in the image.
lens::Camera equidistantCamera(const cv::Size& imageSize, double factor) {
  const double f = factor * std::max(imageSize.width, imageSize.height) / std::numbers::pi;
  return {.fx = f, .fy = f, .cx = (imageSize.width - 1) / 2.0, .cy = (imageSize.height - 1) / 2.0};
}

std::optional<Bundle> findStart(const std::vector<solver::ViewPoints>& views,
                                const cv::Size& imageSize, const RobustOptions& options) {
  const lens::Camera camera = options.heldLens
                                  ? options.heldLens->camera
                                  : equidistantCamera(imageSize, options.startFocalFactor);
  const auto bundle = startingBundle(views, camera, false);
  return bundle ? bundle : startingBundle(views, camera, true);
}

// The first view without a start of its own.
std::optional<std::size_t> viewWithoutStart(const std::vector<solver::ViewPoints>& views,
                                            const cv::Size& imageSize,
                                            const RobustOptions& options) {
  for (std::size_t j = 0; j < views.size(); ++j) {
    if (!findStart({views[j]}, imageSize, options)) {
      return j;
    }
  }
  return std::nullopt;
}

bool isListed(const std::vector<std::size_t>& listed, std::size_t index) {
  return std::binary_search(listed.begin(), listed.end(), index);
}

// The first view in use of whose points more than a fifth are wrong.
std::optional<std::size_t> viewWithTooManyWrongPoints(const std::vector<solver::ViewPoints>& views,
                                                      const ConsistentViews& found) {
  for (std::size_t j = 0; j < views.size(); ++j) {
    if (!isListed(found.wrongViews, j) && 5 * found.wrongPoints[j].size() > views[j].size()) {
      return j;
    }
  }
  return std::nullopt;
}

ViewMatrix notANumber() { return ViewMatrix::all(std::numeric_limits<double>::quiet_NaN()); }

// Copies the solution of the views in use; a view left out gets the pose that the lens gives it.
void store(const std::vector<solver::ViewPoints>& views, const ConsistentViews& solved,
           const FitSettings& settings, const std::vector<ViewMatrix>& Sigma,
           const Bundle& ofAllViews, RobustCalibration& result) {
  const Fit& fit = solved.fit;
  result.camera = fit.bundle.camera;
  result.rms = std::sqrt(fit.equations.rss / static_cast<double>(solver::countPoints(solved.used)));
  result.noiseSigma = std::sqrt(fit.noise.variance);
  result.noiseAssumed = fit.noise.assumed;
  result.steps = fit.steps;
  std::size_t next = 0;
  for (std::size_t j = 0; j < views.size(); ++j) {
    if (isListed(solved.wrongViews, j)) {
      result.poses.push_back(poseWithLens(without(views[j], solved.wrongPoints[j]), settings,
                                          result.camera, ofAllViews.poses[j]));
      result.covariance.push_back(notANumber());
    } else {
      result.poses.push_back(fit.bundle.poses[next]);
      result.covariance.push_back(Sigma[next]);
      ++next;
    }
  }
}

RobustCalibration refused(RobustCalibration result, RobustStatus status,
                          std::optional<std::size_t> view = std::nullopt) {
  result.status = status;
  result.refusedView = view;
  return result;
}

// Why a solution is none, if so.
std::optional<RobustStatus> refusalOf(const Fit& fit) {
  if (!fit.converged) {
    return RobustStatus::kNotConverged;
  }
  if (!fit.equations.allInFront) {
    return RobustStatus::kBehindCamera;
  }
  if (!isOneToOneUpTo(fit.bundle.camera, fit.equations.largestTheta)) {
    return RobustStatus::kFoldedLens;
  }
  return std::nullopt;
}

}  // namespace

RobustCalibration calibrateRobustly(const std::vector<solver::ViewPoints>& views,
                                    const cv::Size& imageSize, const RobustOptions& options) {
  RobustCalibration result;
  result.wrongPoints.resize(views.size());
  if (const auto refusal = checkInput(views, imageSize, options)) {
    return refused(result, refusal->status, refusal->view);
  }
  const FitSettings settings = settingsOf(imageSize, options);
  const auto start = findStart(views, imageSize, options);
  if (!start) {
    return refused(result, RobustStatus::kDegenerate, viewWithoutStart(views, imageSize, options));
  }

  const Fit all = fitWithNoise(views, settings, *start);
  if (!std::isfinite(all.equations.rss)) {
    return refused(result, RobustStatus::kNotConverged);
  }
  ConsistentViews found = findConsistentViews(views, settings, all, start->camera);
  result.wrongPoints = found.wrongPoints;
  result.wrongViews = found.wrongViews;
  if (options.keepAll) {
    found = {PointLists(views.size()), {}, views, all};
  }
  if (const auto view = viewWithTooManyWrongPoints(views, found)) {
    return refused(result, RobustStatus::kTooManyWrongPoints, view);
  }
  if (found.wrongViews.size() > std::max<std::size_t>(1, views.size() / 5)) {
    return refused(result, RobustStatus::kTooManyWrongViews);
  }
  if (const auto status = refusalOf(found.fit)) {
    return refused(result, *status);
  }
  const auto Sigma = covarianceOf(found.used, settings, found.fit);
  if (!Sigma) {
    return refused(result, RobustStatus::kDegenerate);
  }
  store(views, found, settings, *Sigma, all.bundle, result);
  result.status = RobustStatus::kSolved;
  return result;
}

}  // namespace fisheye_calibration::robust
