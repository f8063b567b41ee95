// Which of the numbers passed is the cause of a refusal that the layers below report as one.
#pragma once

#include <opencv2/core.hpp>
#include <span>
#include <string>

#include "fisheye_calibration_c.h"

namespace fisheye_calibration::c_api {

struct Cause {
  std::string argument;
  std::string what;
};

// Why fcal_calibrate_views cannot use its input. `refusedView` is the view that the refusal is
// about, or -1; `heldLens` may be null.
Cause causeOfBadInput(std::span<const fcal_target_view> views, int refusedView,
                      const fcal_solution* heldLens);

// Why fcal_place_view gives no view: arguments that are valid one by one, but have no homography.
Cause causeOfNoView(const cv::Point2d& corner, float pixel, const cv::Size& view,
                    const fcal_camera& camera);

}  // namespace fisheye_calibration::c_api
