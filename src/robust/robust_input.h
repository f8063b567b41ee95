// What a robust calibration refuses before it starts.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "robust/robust_calibration.h"

namespace fisheye_calibration::robust {

struct Refusal {
  RobustStatus status;
  std::optional<std::size_t> view;  // the view that it is about, if it is about one
};

// Whether a matrix is symmetric and without negative eigenvalues, in units in which its diagonal is
// 1, but for rounding and for digits that a file may have lost (1e-6).
bool isCovariance(const cv::Matx66d& L);

std::optional<Refusal> checkInput(const std::vector<solver::ViewPoints>& views,
                                  const cv::Size& imageSize, const RobustOptions& options);

}  // namespace fisheye_calibration::robust
