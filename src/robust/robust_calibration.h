// Calibration of one camera from any number of views of flat targets, with the uncertainty of the
// result. docs/accuracy.md describes the method.
#pragma once

#include <cstddef>
#include <opencv2/core.hpp>
#include <optional>
#include <vector>

#include "lens/camera.h"
#include "robust/arrow_matrix.h"
#include "robust/smooth_noise.h"
#include "solver/view_points.h"

namespace fisheye_calibration::robust {

// A lens known beforehand: only poses are solved.
struct HeldLens {
  lens::Camera camera;     // its skew is kept
  cv::Matx66d covariance;  // of fx, fy, cx, cy, k0, k1; 0 counts the lens as exact
};

struct RobustOptions {
  bool priors = true;  // LensPrior; without it a single view may leave the lens far off
  std::optional<HeldLens> heldLens;
  NoiseKind noiseKind = NoiseKind::kSmooth;
  bool keepAll = false;         // wrong points and views are listed, but used all the same
  double startFocalFactor = 1;  // of max(width, height)/pi
};

enum class RobustStatus {
  kSolved,
  kBadInput,      // no view or image size, lists that do not pair, numbers that are not finite,
                  // target points with Z other than 0, a held lens without focal length or with
                  // a matrix that is no covariance (not symmetric, or a negative variance)
  kTooFewPoints,  // a view has fewer than four, a single one fewer than seven
  kDegenerate,    // a view's points do not determine its pose, or the views not the lens
  kNotConverged,
  kBehindCamera,        // the best solution has a point beyond 90 degrees, where the model ends
  kFoldedLens,          // a point at or beyond the angle at which the lens stops being one to one
  kTooManyWrongPoints,  // more than a fifth of a view's points contradict the rest
  kTooManyWrongViews,   // more than a fifth of the views contradict the rest
};

// With any status but kSolved only `status`, `refusedView` and the lists of wrong points and views
// are set.
struct RobustCalibration {
  RobustStatus status = RobustStatus::kBadInput;
  std::optional<std::size_t> refusedView;  // the view that the status is about, if it is about one

  lens::Camera camera;
  std::vector<lens::Pose> poses;  // one per view, also of wrong views
  double rms = 0;                 // reprojection error of the points in use, pixels

  // Ascending indices.
  std::vector<std::vector<std::size_t>> wrongPoints;  // one list per view
  std::vector<std::size_t> wrongViews;

  // Covariance of fx, fy, cx, cy, k0, k1 and the view's rotation vector and translation, one per
  // view; NaN for a wrong view that is left out.
  std::vector<ViewMatrix> covariance;
  double noiseSigma = 0;      // s: standard deviation of a coordinate, pixels
  bool noiseAssumed = false;  // too few points to estimate it: s is at least 0.5
  int steps = 0;              // of the iteration, for the final solution
};

// Levenberg-Marquardt with the priors, all views together, from poses of viewing rays; on measured
// views the result does not depend on `startFocalFactor` from 0.75 to 1.33 beyond rounding. Wrong
// points and views are found and left out first: never more than a fifth of a view's points, nor of
// the views (but one of three or four), otherwise the calibration is refused. Views of fewer than
// nine points are not searched for wrong points, nor fewer than three views for wrong ones.
// Deterministic. Throws only if memory runs out: std::bad_alloc or the image library's error.
RobustCalibration calibrateRobustly(const std::vector<solver::ViewPoints>& views,
                                    const cv::Size& imageSize, const RobustOptions& options = {});

}  // namespace fisheye_calibration::robust
