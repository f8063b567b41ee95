// Pose of a flat target from viewing rays, without a starting value.
#pragma once

#include <optional>
#include <vector>

#include "lens/camera.h"
#include "solver/view_points.h"

namespace fisheye_calibration::robust {

// With d_i the unit viewing ray of pixel i, H = [r1 r2 T] up to scale minimises
//
//   sum w_i |d_i x H (X_i, Y_i, 1)^T|^2,   |H| = 1
//
// and R is the rotation nearest to [r1 r2 r1 x r2]. No tangent of an angle is taken, so rays close
// to or beyond 90 degrees (clamped to 1.57 rad) do no harm. Target points have Z = 0; `weights` are
// empty (all 1) or one per point. std::nullopt if the points do not determine a pose: fewer than
// four, or on a line, or not finite.
std::optional<lens::Pose> linearPose(const solver::ViewPoints& view, const lens::Camera& camera,
                                     const std::vector<double>& weights);

// The same for views with wrong points, up to about a third: starts from the best of 40 random
// samples of five points, then five rounds of weights 1/(1 + (a/a_median)^2), a = angle between a
// point's ray and its fitted direction. Deterministic.
std::optional<lens::Pose> robustLinearPose(const solver::ViewPoints& view,
                                           const lens::Camera& camera);

}  // namespace fisheye_calibration::robust
