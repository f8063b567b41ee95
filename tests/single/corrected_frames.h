// Small frames and records whose corrected images can be worked out by hand.
#pragma once

#include <algorithm>
#include <cstddef>
#include <opencv2/core.hpp>
#include <vector>

#include "fisheye_calibration.h"

namespace frames {

using Bytes = std::vector<unsigned char>;

constexpr unsigned char kUntouched = 0xA5;

// A lens so long that the distortion of a small frame vanishes: undistorted pixel (x, y) shows raw
// pixel (x, y) + (shiftX, shiftY) when the view has dstWidth x dstHeight pixels, both even.
inline FishEyeCalibrationParam flatCamera(int dstWidth, int dstHeight, float shiftX, float shiftY) {
  FishEyeCalibrationParam param{};
  param.fx = 1e6f;
  param.fy = 1e6f;
  param.u0 = static_cast<float>(dstWidth / 2) + shiftX;
  param.v0 = static_cast<float>(dstHeight / 2) + shiftY;
  param.p1 = param.p5 = param.p9 = 1;
  return param;
}

inline void setHomography(FishEyeCalibrationParam& param, const cv::Matx33d& H) {
  double* const p[] = {&param.p1, &param.p2, &param.p3, &param.p4, &param.p5,
                       &param.p6, &param.p7, &param.p8, &param.p9};
  for (int i = 0; i < 9; ++i) *p[i] = H.val[i];
}

inline cv::Matx33d shift(double x, double y) { return {1, 0, x, 0, 1, y, 0, 0, 1}; }

// A host's frame. Pictures are written top row first.
struct Frame {
  int width;
  int height;
  int bitCount;
  Bytes bytes;
};

inline Bytes upsideDown(const Bytes& rows, int height) {
  Bytes flipped(rows.size());
  const auto length = static_cast<std::ptrdiff_t>(rows.size()) / height;
  for (int y = 0; y < height; ++y) {
    std::copy_n(rows.begin() + y * length, length, flipped.begin() + (height - 1 - y) * length);
  }
  return flipped;
}

inline Frame frameOf(int width, int height, int bitCount, const Bytes& picture) {
  return {width, height, bitCount, upsideDown(picture, height)};
}

// Byte b of pixel (x, y) is 16 y + 2 x + 64 b (small frames).
inline Frame ramp(int width, int height, int bitCount) {
  Bytes picture;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      for (int b = 0; b < bitCount / 8; ++b) {
        picture.push_back(static_cast<unsigned char>(16 * y + 2 * x + 64 * b));
      }
    }
  }
  return frameOf(width, height, bitCount, picture);
}

struct View {
  bool shown;
  Bytes picture;  // top row first
  Bytes mask;
};

inline View render(const Frame& frame, const FishEyeCalibrationParam& param, int width,
                   int height) {
  Bytes src = frame.bytes;
  const auto pixels = static_cast<std::size_t>(width * height);
  Bytes dst(pixels * static_cast<std::size_t>(frame.bitCount / 8), kUntouched);
  Bytes mask(pixels, kUntouched);
  const bool shown = SingleCamCorrected(src.data(), frame.width, frame.height, frame.bitCount,
                                        param, dst.data(), width, height, mask.data());
  return {shown, upsideDown(dst, height), upsideDown(mask, height)};
}

}  // namespace frames
