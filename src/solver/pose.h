// Pose of a flat target in one view.
#pragma once

#include <opencv2/core.hpp>
#include <optional>

#include "lens/camera.h"
#include "solver/view_points.h"

namespace fisheye_calibration::solver {

// A flat target turned into its own plane: X_plane = R X + T lies at Z = 0 around the origin.
// Depends on the target points alone, so one serves every pose of the target.
struct TargetPlane {
  cv::Matx33d R;
  cv::Vec3d T;
  PlanarPoints points;
};

// Raises the image library's error for a view without points, or of lists that do not pair.
TargetPlane targetPlane(const ViewPoints& view);

// Raises the image library's error unless both lists are there and of the right type.
void requirePoseInput(bool objectPoints, bool imagePoints);

// First pose by decomposing the homography between the target's plane and the ideal image (Zhang,
// "Flexible calibration from unknown orientations"). Nothing when the homography's scale is not a
// number.
std::optional<lens::Pose> initialPose(const ViewPoints& view, const TargetPlane& plane,
                                      const lens::Camera& camera);

// A pose after Gauss-Newton refinement.
struct RefinedPose {
  lens::Pose pose;
  lens::Pose evaluated;  // where the last iteration took its derivatives
  bool moved = false;    // at least one step was accepted
};

// At most 20 steps, until a step's relative length is 1e-10. A step whose Jacobian has a ratio of
// singular values above maxConditionRatio is refused and ends the refinement.
RefinedPose refinePose(const ViewPoints& view, const lens::Camera& camera, const lens::Pose& start,
                       double maxConditionRatio);

// Both in turn; nothing when there is no first pose.
std::optional<RefinedPose> findPose(const ViewPoints& view, const TargetPlane& plane,
                                    const lens::Camera& camera, double maxConditionRatio);

// The 2N x 6 Jacobian of the projected points by the pose, rows u and v of each point in turn, and
// the 2N residuals (measured minus projected).
cv::Mat poseJacobian(const ViewPoints& view, const lens::Camera& camera, const lens::Pose& pose,
                     cv::Mat& residuals);

// Largest singular value divided by the smallest.
double conditionRatio(const cv::Mat& J);

}  // namespace fisheye_calibration::solver
