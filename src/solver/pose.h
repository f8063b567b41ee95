// Pose of a flat target in one view.
#pragma once

#include <opencv2/core.hpp>
#include <optional>

#include "lens/camera.h"
#include "solver/view_points.h"

namespace fisheye_calibration::solver {

// A flat target in its own plane: X_plane = R X + T lies at Z = 0 around the origin. Depends on the
// target points alone, so it serves every pose of the target.
struct TargetPlane {
  cv::Matx33d R;
  cv::Vec3d T;
  PlanarPoints points;
};

// Throws the image library's error if the view has no points or its lists do not pair.
TargetPlane targetPlane(const ViewPoints& view);

// Throws the image library's error unless both lists are present and of the right type.
void requirePoseInput(bool objectPoints, bool imagePoints);

// Initial pose by decomposing the homography between the target's plane and the ideal image (Zhang,
// "Flexible calibration from unknown orientations"). std::nullopt if the homography's scale is NaN.
std::optional<lens::Pose> initialPose(const ViewPoints& view, const TargetPlane& plane,
                                      const lens::Camera& camera);

// A pose after Gauss-Newton refinement.
struct RefinedPose {
  lens::Pose pose;
  lens::Pose evaluated;  // where the last iteration evaluated the derivatives
  bool moved = false;    // at least one step was accepted
};

// Takes at most 20 steps (compatibility 19), until a step's relative length is at most 1e-10. A
// step whose Jacobian's ratio of singular values exceeds maxConditionRatio is rejected and ends the
// refinement.
RefinedPose refinePose(const ViewPoints& view, const lens::Camera& camera, const lens::Pose& start,
                       double maxConditionRatio);

// initialPose, then refinePose; std::nullopt if there is no initial pose.
std::optional<RefinedPose> findPose(const ViewPoints& view, const TargetPlane& plane,
                                    const lens::Camera& camera, double maxConditionRatio);

// The 2N x 6 Jacobian of the projected points with respect to the pose, rows u and v for each point
// in turn, and the 2N residuals (measured minus projected).
cv::Mat poseJacobian(const ViewPoints& view, const lens::Camera& camera, const lens::Pose& pose,
                     cv::Mat& residuals);

// Largest singular value divided by the smallest.
double conditionRatio(const cv::Mat& J);

}  // namespace fisheye_calibration::solver
