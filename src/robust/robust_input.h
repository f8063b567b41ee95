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

std::optional<Refusal> checkInput(const std::vector<solver::ViewPoints>& views,
                                  const cv::Size& imageSize, const RobustOptions& options);

}  // namespace fisheye_calibration::robust
