// Normal equations of all intrinsics and poses together.
#pragma once

#include <array>
#include <opencv2/core.hpp>
#include <vector>

#include "lens/camera.h"
#include "solver/view_points.h"

namespace fisheye_calibration::solver {

// Which intrinsics are estimated; the others are held. The order is focal x, focal y, principal x,
// principal y, skew, k0, k1.
constexpr std::size_t kIntrinsics = 7;
using EstimatedIntrinsics = std::array<bool, kIntrinsics>;

// JJ2 G = ex3 for the step G of the estimated intrinsics, followed by six pose unknowns per view.
struct ReducedSystem {
  cv::Mat JJ2;
  cv::Mat ex3;
};

// For the sum of squared reprojection errors at `camera` and `poses`, one pose per view.
ReducedSystem reducedNormalEquations(const std::vector<ViewPoints>& views,
                                     const lens::Camera& camera,
                                     const std::vector<lens::Pose>& poses,
                                     const EstimatedIntrinsics& estimated);

}  // namespace fisheye_calibration::solver
