// The calibration of any number of views.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <opencv2/core.hpp>
#include <span>
#include <string>
#include <vector>

#include "c_api/arguments.h"
#include "c_api/causes.h"
#include "c_api/records.h"
#include "c_api/solutions.h"
#include "robust/robust_calibration.h"
#include "single/solver_view.h"

namespace fisheye_calibration::c_api {
namespace {

using robust::RobustStatus;

// The first versions of the records that grow.
constexpr std::size_t kFirstOptions = 32;
constexpr std::size_t kFirstResult = 40;
static_assert(sizeof(fcal_views_options) == kFirstOptions);
static_assert(sizeof(fcal_views_result) == kFirstResult);

struct Outcome {
  int32_t code;
  const char* text;
};

Outcome outcomeOf(RobustStatus status) {
  switch (status) {
    case RobustStatus::kSolved:
      return {FCAL_SOLVED, ""};
    case RobustStatus::kBadInput:
      return {FCAL_BAD_INPUT, "bad input"};  // causeOfBadInput says more
    case RobustStatus::kTooFewPoints:
      return {FCAL_TOO_FEW_POINTS, "too few points"};
    case RobustStatus::kDegenerate:
      return {FCAL_DEGENERATE, "the points do not determine the camera"};
    case RobustStatus::kNotConverged:
      return {FCAL_NOT_CONVERGED, "the iteration does not converge"};
    case RobustStatus::kBehindCamera:
      return {FCAL_BEHIND_CAMERA, "the best solution has a point beyond 90 degrees"};
    case RobustStatus::kFoldedLens:
      return {FCAL_FOLDED_LENS, "the best solution has a point where the lens is not one to one"};
    case RobustStatus::kTooManyWrongPoints:
      return {FCAL_TOO_MANY_WRONG_POINTS, "more than a fifth of the points contradict the rest"};
    case RobustStatus::kTooManyWrongViews:
      return {FCAL_TOO_MANY_WRONG_VIEWS, "more than a fifth of the views contradict the rest"};
  }
  return {FCAL_BAD_INPUT, "unknown"};
}

std::string nameOf(std::size_t view) { return "views[" + std::to_string(view) + "]"; }

std::vector<solver::ViewPoints> checkedViews(std::span<const fcal_target_view> views) {
  std::vector<solver::ViewPoints> checked;
  for (std::size_t j = 0; j < views.size(); ++j) {
    checked.push_back(
        single::solverView(recordsOf(checkedArray(views[j].points, views[j].count, nameOf(j)))));
  }
  return checked;
}

robust::RobustOptions checkedOptions(const fcal_views_options* given) {
  const fcal_views_options options = readGrowing(given, kFirstOptions, "options");
  if (options.noise != FCAL_NOISE_SMOOTH && options.noise != FCAL_NOISE_WHITE) {
    refuse("options", "noise is none of FCAL_NOISE_...");
  }
  const double factor = options.start_focal_factor;
  if (!std::isfinite(factor) || factor < 0) {
    refuse("options", "start_focal_factor is negative or not finite");
  }
  robust::RobustOptions checked;
  checked.priors = options.no_prior == 0;
  checked.noiseKind =
      options.noise == FCAL_NOISE_SMOOTH ? robust::NoiseKind::kSmooth : robust::NoiseKind::kWhite;
  checked.keepAll = options.keep_all != 0;
  checked.startFocalFactor = factor != 0 ? factor : 1;
  if (options.held_lens != nullptr) {
    const robust::BedView held = bedViewOf(*options.held_lens);
    checked.heldLens = {held.camera, held.covariance.get_minor<6, 6>(0, 0)};
  }
  return checked;
}

void mark(const std::vector<std::size_t>& listed, std::span<uint8_t> flags) {
  std::fill(flags.begin(), flags.end(), uint8_t{0});
  for (const std::size_t index : listed) {
    flags[index] = 1;
  }
}

// Either array may be null.
void writeFlags(const robust::RobustCalibration& solved,
                const std::vector<solver::ViewPoints>& views, uint8_t* wrongPoints,
                uint8_t* wrongViews) {
  if (wrongViews != nullptr) {
    mark(solved.wrongViews, {wrongViews, views.size()});
  }
  if (wrongPoints != nullptr) {
    for (std::size_t j = 0; j < views.size(); ++j) {
      mark(j < solved.wrongPoints.size() ? solved.wrongPoints[j] : std::vector<std::size_t>(),
           {wrongPoints, views[j].size()});
      wrongPoints += views[j].size();
    }
  }
}

fcal_views_result resultOf(const robust::RobustCalibration& solved) {
  fcal_views_result result{};
  result.outcome = outcomeOf(solved.status).code;
  result.refused_view = solved.refusedView ? static_cast<int32_t>(*solved.refusedView) : -1;
  if (solved.status == RobustStatus::kSolved) {
    result.steps = solved.steps;
    result.rms = solved.rms;
    result.noise_sigma = solved.noiseSigma;
    result.noise_assumed = solved.noiseAssumed ? 1 : 0;
  }
  return result;
}

fcal_status withoutSolution(const robust::RobustCalibration& solved,
                            std::span<const fcal_target_view> views,
                            const fcal_views_options* options) {
  if (solved.status == RobustStatus::kBadInput) {
    // A held lens is an option of every version.
    const Cause cause = causeOfBadInput(views, resultOf(solved).refused_view,
                                        options != nullptr ? options->held_lens : nullptr);
    return withoutResult(cause.argument, cause.what);
  }
  return withoutResult(solved.refusedView ? nameOf(*solved.refusedView) : "views",
                       outcomeOf(solved.status).text);
}

}  // namespace
}  // namespace fisheye_calibration::c_api

using namespace fisheye_calibration;
using namespace fisheye_calibration::c_api;

// NOLINTBEGIN(readability-identifier-naming): parameters have their names in C

fcal_status fcal_calibrate_views(int32_t width, int32_t height, const fcal_target_view* views,
                                 int32_t view_count, const fcal_views_options* options,
                                 fcal_views_result* result, fcal_solution* solutions,
                                 uint8_t* wrong_points, uint8_t* wrong_views) {
  return guarded([&]() -> fcal_status {
    requirePositive(width, "width");
    requirePositive(height, "height");
    const auto list = checkedArray(views, view_count, "views");
    const std::vector<solver::ViewPoints> points = checkedViews(list);
    const robust::RobustOptions checked = checkedOptions(options);
    const std::size_t size = declaredSize(required(result, "result"), kFirstResult, "result");
    const robust::RobustCalibration solved =
        robust::calibrateRobustly(points, cv::Size(width, height), checked);
    writeGrowing(resultOf(solved), size, *result);
    writeFlags(solved, points, wrong_points, wrong_views);
    if (solved.status != RobustStatus::kSolved) {
      return withoutSolution(solved, list, options);
    }
    if (solutions != nullptr) {
      for (std::size_t j = 0; j < points.size(); ++j) {
        solutions[j] = solutionOf(
            {.camera = solved.camera, .pose = solved.poses[j], .covariance = solved.covariance[j]});
      }
    }
    return FCAL_OK;
  });
}

// NOLINTEND(readability-identifier-naming)
