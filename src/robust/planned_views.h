// What a calibration from given views would achieve, before they are taken.
#pragma once

#include <opencv2/core.hpp>
#include <optional>
#include <vector>

#include "lens/camera.h"
#include "robust/arrow_matrix.h"
#include "robust/smooth_noise.h"
#include "solver/view_points.h"

namespace fisheye_calibration::robust {

// A pose of the camera and the points (X, Y, 0) of the target that it would see.
struct PlannedView {
  lens::Pose pose;
  solver::PlanarPoints target;
};

struct PlanOptions {
  bool priors = true;
  NoiseKind noiseKind = NoiseKind::kSmooth;
};

// Covariances like those of RobustCalibration, one per view, that points with noise of standard
// deviation `sigma` (pixels per coordinate, at least 0) would give. To evaluate a remedy, pass the
// present views with it, or instead of them: one view more, a larger target, five views.
// std::nullopt if there is no view or image size, the lists do not pair, the views do not determine
// the lens, or the camera does not see a point: not in front of it, beyond the angle at which the
// lens stops being one to one, or outside the picture by more than a hundredth of its longer side.
std::optional<std::vector<ViewMatrix>> plannedCovariance(const lens::Camera& camera,
                                                         const std::vector<PlannedView>& views,
                                                         const cv::Size& imageSize, double sigma,
                                                         const PlanOptions& options = {});

// The pose at which the camera sees a target that is turned by the rotation vector `turn` (target
// frame, radians) about the point `centre` of its plane.
lens::Pose withTurnedTarget(const lens::Pose& pose, const cv::Point2d& centre,
                            const cv::Vec3d& turn);

}  // namespace fisheye_calibration::robust
