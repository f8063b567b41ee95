// FishEyeImageStitching against the plain derivation of the same canvas: corrections step by step
// and the canvas loop pixel by pixel. Two 1280 x 960 cameras, so the views have 2560 x 1920 pixels.
// One thread, no debug files.
#include <cstdio>
#include <opencv2/core/utility.hpp>
#include <random>
#include <vector>

#include "fisheye_calibration.h"
#include "support/plain_stitching.h"
#include "timing.h"

namespace {

constexpr int kRounds = 7;
constexpr int kWidth = 1280;
constexpr int kHeight = 960;
constexpr float kPixel = 0.1F;           // world units
constexpr float kShiftOfSecond = 90.0F;  // world units between the cameras' datum points

plain::StitchCamera camera(int bits, float datumX, unsigned seed) {
  plain::StitchCamera result;
  result.width = kWidth;
  result.height = kHeight;
  result.bits = bits;
  result.image.resize(static_cast<std::size_t>(kWidth * kHeight * (bits / 8)));
  std::mt19937 random(seed);
  for (unsigned char& byte : result.image) byte = static_cast<unsigned char>(random() >> 24);
  FishEyeCalibrationParam& p = result.param;
  p.fx = 620;
  p.fy = 618;
  p.u0 = 642;
  p.v0 = 477;
  p.k0 = 0.02;
  p.k1 = -0.03;
  p.p1 = 1.05;
  p.p2 = 0.04;
  p.p4 = -0.03;
  p.p5 = 1.02;
  p.p7 = 1e-5;
  p.p8 = -2e-5;
  p.p9 = 1;
  p.ImageDx = -40;
  p.ImageDy = 20;
  p.Pixel = kPixel;
  p.DatumPtXw = datumX;
  p.DatumPtYw = 150;
  for (int i = 0; i < 35; ++i) {
    CalibrationPoint point{};
    point.PointId = i + 1;
    point.Xw = 110 + 15 * static_cast<float>(i % 7);
    point.Yw = 80 + 30 * static_cast<float>(i / 7);
    result.points.push_back(point);
  }
  return result;
}

bool stitch(plain::StitchCamera& first, plain::StitchCamera& second,
            std::vector<unsigned char>& canvas, int width, int height,
            DualFishEyeCalibrationParam& dual) {
  return FishEyeImageStitching(first.image.data(), first.width, first.height, first.bits,
                               first.param, first.points, second.image.data(), second.width,
                               second.height, second.bits, second.param, second.points,
                               canvas.data(), width, height, first.bits, dual);
}

// Prints one line for the whole call; returns false if the canvases differ.
bool compareAt(int bits) {
  plain::StitchCamera first = camera(bits, 128, 1);
  plain::StitchCamera second = camera(bits, 128 + kShiftOfSecond, 2);
  for (CalibrationPoint& point : second.points) point.Xw += 0.01F * point.Yw;  // not just a shift
  int width = 0;
  int height = 0;
  plain::stitchedImageSize(first, second, width, height);
  std::vector<unsigned char> ours(static_cast<std::size_t>(width) *
                                  static_cast<std::size_t>(height * (bits / 8)));
  std::vector<unsigned char> theirs = ours;
  DualFishEyeCalibrationParam dual{};
  const auto whole = bench::compare(
      kRounds, [&] { stitch(first, second, ours, width, height, dual); },
      [&] {
        plain::fishEyeImageStitching(first, second, theirs.data(), width, height, bits, dual);
      });
  std::printf("%4d  %4d x %d  %10.2f %12.2f %9.1f\n", bits, width, height, whole.ours, whole.theirs,
              whole.ratio);
  return ours == theirs;
}

}  // namespace

int main() {
  cv::setNumThreads(1);
  std::printf("bits  canvas          ours/ms     plain/ms     ratio\n");
  const bool agree = compareAt(8) && compareAt(24) && compareAt(32);
  if (!agree) {
    std::printf("The canvases differ.\n");
    return 1;
  }
  return 0;
}
