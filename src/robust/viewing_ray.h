// From a pixel to its viewing ray and to the point of the bed that it shows.
#pragma once

#include <opencv2/core.hpp>
#include <optional>

#include "lens/camera.h"

namespace fisheye_calibration::robust {

// Rays end here: the model's range is open at 90 degrees.
constexpr double kLargestAngle = 1.57;  // rad

// The lens maps angles to radii one to one up to this angle: where theta_d stops rising, or
// kLargestAngle.
double turningAngle(const lens::Camera& camera);

// Whether the lens is one to one from the axis up to theta. If theta_d rises up to kLargestAngle,
// it counts as rising up to 90 degrees.
bool isOneToOneUpTo(const lens::Camera& camera, double theta);

// The incidence angle theta in [0, turningAngle] with theta + k0 theta^2 + k1 theta^3 = thetaD, by
// Newton's method within a shrinking bracket; the end of the range nearest to it if there is none.
double incidenceAngle(const lens::Camera& camera, double thetaD);

// The unit vector, in the camera frame, of a raw pixel's viewing ray.
cv::Vec3d viewingRay(const lens::Camera& camera, const cv::Point2d& pixel);

// Whether a raw pixel lies within the lens's range, nearer to the axis than turningAngle.
bool isWithinRange(const lens::Camera& camera, const cv::Point2d& pixel);

// The point (X, Y) of the plane Z = 0 that a raw pixel shows; std::nullopt if its ray is beyond the
// lens's range or does not meet the plane in front of the camera.
std::optional<cv::Point2d> bedPointOf(const lens::Camera& camera, const lens::Pose& pose,
                                      const cv::Point2d& pixel);

}  // namespace fisheye_calibration::robust
