// The intrinsic record as the inputs of the camera model.
#pragma once

#include "fisheye/camera.h"
#include "fisheye/internal.h"

namespace internal {

inline fisheye::Camera toCamera(const IntrinsicParams& param) {
  return {param.focalLength[0],
          param.focalLength[1],
          param.principalPoint[0],
          param.principalPoint[1],
          param.distortion[0],
          param.distortion[1],
          param.skew};
}

// [fx, skew fx, cx; 0, fy, cy; 0, 0, 1]
inline cv::Matx33d cameraMatrix(const IntrinsicParams& param) {
  const fisheye::Camera c = toCamera(param);
  return {c.fx, c.alpha * c.fx, c.cx, 0, c.fy, c.cy, 0, 0, 1};
}

}  // namespace internal
