// The loops over a view's points that the solver spends its time in. They run on whole vectors of
// points, on the best instruction set the machine has; sums of different instruction sets agree to
// rounding.
#pragma once

#include <array>

#include "lens/camera.h"
#include "solver/symmetric_solver.h"
#include "solver/view_points.h"

namespace fisheye_calibration::solver {

// Ideal normalised coordinates of raw pixels: (tan theta / theta_d) times the distorted normalised
// point, theta by at most ten Newton steps to 1e-8; pixels without a solution give (-1e6, -1e6).
void normalizePixels(const PlanarPoints& pixels, const lens::Camera& camera,
                     PlanarPoints& normalized);

// One Gauss-Newton step A d = b.
template <std::size_t N>
struct NormalEquations {
  LowerTriangle<N> A{};
  std::array<double, N> b{};
};

// Reprojection error of one view by its pose (rotation vector, translation).
NormalEquations<6> poseNormalEquations(const ViewPoints& view, const lens::Camera& camera,
                                       const lens::Pose& pose);

// The same by all 13 parameters: focal lengths, principal point, skew, distortion, pose.
constexpr std::size_t kAllParameters = 13;
NormalEquations<kAllParameters> fullNormalEquations(const ViewPoints& view,
                                                    const lens::Camera& camera,
                                                    const lens::Pose& pose);

// L^T L of the design matrix of the direct linear transform: rows (M, 0, -x M) and (0, M, -y M) of
// each pair of an image point (x, y) and a plane point M = (X, Y, 1).
LowerTriangle<9> designProduct(const PlanarPoints& image, const PlanarPoints& plane);

// Error of a homography H (H(2,2) = 1) that should carry the plane points to the image points, by
// its first eight elements.
NormalEquations<8> homographyNormalEquations(const PlanarPoints& image, const PlanarPoints& plane,
                                             const cv::Matx33d& H);

}  // namespace fisheye_calibration::solver
