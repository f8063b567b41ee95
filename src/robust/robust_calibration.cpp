#include "robust/robust_calibration.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <numeric>

#include "robust/fit.h"
#include "robust/robust_input.h"
#include "robust/wrong_points.h"
#include "robust/wrong_views.h"

namespace fisheye_calibration::robust {
namespace {

FitSettings settingsOf(const cv::Size& imageSize, const RobustOptions& options) {
  const bool held = options.heldLens.has_value();
  return {LensPrior(imageSize, options.priors && !held), options.noise, held,
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

std::optional<std::size_t> viewWithTooManyWrongPoints(const std::vector<solver::ViewPoints>& views,
                                                      const PointLists& wrong) {
  for (std::size_t j = 0; j < views.size(); ++j) {
    if (5 * wrong[j].size() > views[j].size()) {
      return j;
    }
  }
  return std::nullopt;
}

bool anyListed(const PointLists& lists) {
  return std::any_of(lists.begin(), lists.end(), [](const auto& list) { return !list.empty(); });
}

template <class T>
std::vector<T> withoutListed(const std::vector<T>& all, const std::vector<std::size_t>& listed) {
  std::vector<T> kept;
  for (std::size_t j = 0; j < all.size(); ++j) {
    if (!std::binary_search(listed.begin(), listed.end(), j)) {
      kept.push_back(all[j]);
    }
  }
  return kept;
}

ViewMatrix notANumber() { return ViewMatrix::all(std::numeric_limits<double>::quiet_NaN()); }

std::size_t countPoints(const std::vector<solver::ViewPoints>& views) {
  return std::accumulate(
      views.begin(), views.end(), std::size_t{0},
      [](std::size_t sum, const solver::ViewPoints& v) { return sum + v.size(); });
}

// Copies the solution of the views in use; a view left out gets the pose that the lens gives it.
void store(const std::vector<solver::ViewPoints>& views,
           const std::vector<solver::ViewPoints>& used, const FitSettings& settings, const Fit& fit,
           const std::vector<ViewMatrix>& Sigma, const Bundle& ofAllViews,
           const std::vector<std::size_t>& leftOut, RobustCalibration& result) {
  result.camera = fit.bundle.camera;
  result.rms = std::sqrt(fit.equations.rss / static_cast<double>(countPoints(used)));
  result.noise = std::sqrt(fit.noise.variance);
  result.noiseAssumed = fit.noise.assumed;
  result.steps = fit.steps;
  std::size_t next = 0;
  for (std::size_t j = 0; j < views.size(); ++j) {
    if (std::binary_search(leftOut.begin(), leftOut.end(), j)) {
      result.poses.push_back(poseWithLens(views[j], settings, result.camera, ofAllViews.poses[j]));
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

  Fit fit = fitWithNoise(views, settings, *start);
  if (!std::isfinite(fit.equations.rss)) {
    return refused(result, RobustStatus::kNotConverged);
  }
  const Bundle ofAllViews = fit.bundle;
  result.wrongPoints = findWrongPoints(views, settings, fit, start->camera);
  std::vector<solver::ViewPoints> used = views;
  if (anyListed(result.wrongPoints) && !options.keepAll) {
    if (const auto view = viewWithTooManyWrongPoints(views, result.wrongPoints)) {
      return refused(result, RobustStatus::kTooManyWrongPoints, view);
    }
    used = without(views, result.wrongPoints);
    const auto again = startingBundle(used, start->camera, false);
    fit = fitWithNoise(used, settings, again ? *again : fit.bundle);
  }

  result.wrongViews = findWrongViews(used, settings, fit);
  std::vector<std::size_t> leftOut;
  if (!result.wrongViews.empty() && !options.keepAll) {
    leftOut = result.wrongViews;
    if (leftOut.size() > std::max<std::size_t>(1, views.size() / 5)) {
      return refused(result, RobustStatus::kTooManyWrongViews);
    }
    used = withoutListed(used, leftOut);
    fit =
        fitWithNoise(used, settings, {fit.bundle.camera, withoutListed(fit.bundle.poses, leftOut)});
  }

  if (!fit.converged) {
    return refused(result, RobustStatus::kNotConverged);
  }
  if (!fit.equations.allInFront) {
    return refused(result, RobustStatus::kBehindCamera);
  }
  const auto Sigma = covarianceOf(used, settings, fit);
  if (!Sigma) {
    return refused(result, RobustStatus::kDegenerate);
  }
  store(views, used, settings, fit, *Sigma, ofAllViews, leftOut, result);
  result.status = RobustStatus::kSolved;
  return result;
}

}  // namespace fisheye_calibration::robust
