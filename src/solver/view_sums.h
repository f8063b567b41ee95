// The solver's hot loops over a view's points. They process vectors of points with the machine's
// best instruction set; sums agree between instruction sets to rounding.
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

// For the reprojection error of one view with respect to its pose (rotation vector, translation).
NormalEquations<6> poseNormalEquations(const ViewPoints& view, const lens::Camera& camera,
                                       const lens::Pose& pose);

// The same with respect to all 13 parameters: focal lengths, principal point, skew, distortion,
// pose.
constexpr std::size_t kAllParameters = 13;
NormalEquations<kAllParameters> fullNormalEquations(const ViewPoints& view,
                                                    const lens::Camera& camera,
                                                    const lens::Pose& pose);

// L^T L of the design matrix of the direct linear transform: rows (M, 0, -x M) and (0, M, -y M) for
// each pair of an image point (x, y) and a plane point M = (X, Y, 1).
LowerTriangle<9> designProduct(const PlanarPoints& image, const PlanarPoints& plane);

// For the image error of a homography H (H(2,2) = 1) from the plane points to the image points,
// with respect to its first eight elements.
NormalEquations<8> homographyNormalEquations(const PlanarPoints& image, const PlanarPoints& plane,
                                             const cv::Matx33d& H);

}  // namespace fisheye_calibration::solver
