#include "single/corrected_view_of.h"

#include <utility>

#include "rendering/inverse_warp.h"
#include "single/record.h"

namespace fisheye_calibration::single {
namespace {

// The zero matrix if the homography is singular; nothing then has content (compatibility 35).
cv::Matx33d inverseHomography(const FishEyeCalibrationParam& param) {
  cv::Matx33d inverse;
  cv::invert(homography(param), inverse, cv::DECOMP_LU);
  return inverse;
}

}  // namespace

std::optional<rendering::CorrectedView> correctedViewOf(const images::Frame& frame,
                                                        const FishEyeCalibrationParam& param,
                                                        const cv::Size& size) {
  const cv::Matx33d K(param.fx, param.skewness, param.u0, 0, param.fy, param.v0, 0, 0, 1);
  const rendering::InverseWarp warp{inverseHomography(param), param.ImageDx, param.ImageDy, size};
  std::optional<rendering::CorrectedView> view(std::in_place, frame, rawCamera(param), K, warp);
  if (!view->showsAnything()) {
    view.reset();
  }
  return view;
}

}  // namespace fisheye_calibration::single
