// Normal equations of all intrinsics and poses together.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "fisheye/internal.h"
#include "fisheye/pose.h"

namespace fisheye {

struct ReducedSystem {
  cv::Mat JJ2;  // estimated intrinsics, then six pose unknowns a view
  cv::Mat ex3;
};

// poses holds one pose a view.
ReducedSystem reducedNormalEquations(const std::vector<ViewPoints>& views,
                                     const internal::IntrinsicParams& param,
                                     const std::vector<Pose>& poses);

}  // namespace fisheye
