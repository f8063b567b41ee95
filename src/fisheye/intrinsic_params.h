// Converts the intrinsic record to the camera model's parameters.
#pragma once

#include "fisheye/internal.h"
#include "lens/camera.h"

namespace fisheye_calibration::internal {

inline lens::Camera toCamera(const IntrinsicParams& param) {
  return {param.focalLength[0],
          param.focalLength[1],
          param.principalPoint[0],
          param.principalPoint[1],
          param.distortion[0],
          param.distortion[1],
          param.skew};
}

}  // namespace fisheye_calibration::internal
