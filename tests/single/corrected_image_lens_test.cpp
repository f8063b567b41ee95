// Corrected images of a lens with distortion, pixels of which were worked out apart from the code.
//
// The numbers come from a few lines of Python, with math.atan and fractions.Fraction:
//   C   = H^-1 (x - ImageDx, y - ImageDy, 1) in exact fractions, (i, j) = int(C + 1/2)
//   X   = (i - 32)/fx, Y = (j - 24)/fy, r = hypot(X, Y), t = atan(r)
//   s   = (t + k0 t^2 + k1 t^3)/r
//   u   = fx X s + u0, v = fy Y s + v0, both rounded to 1/32
// and the bilinear mean of the frame's four bytes, byte(x, y) = (7 x + 13 y + x y) mod 256, with
// the fractions of u and v. No position lies nearer than 0.004/32 to where its rounding turns.
#include <gtest/gtest.h>

#include <cstddef>

#include "fisheye_calibration.h"
#include "single/corrected_frames.h"

namespace {

constexpr int kWidth = 64;  // of the view
constexpr int kHeight = 48;

FishEyeCalibrationParam distortedCamera() {
  FishEyeCalibrationParam param{};
  param.fx = 40;
  param.fy = 38;
  param.u0 = 41.25F;
  param.v0 = 28.5F;
  param.k0 = 0.0625;
  param.k1 = -0.09375;
  param.p1 = param.p5 = param.p9 = 1;
  return param;
}

frames::Frame frame() {
  frames::Bytes picture;
  for (int y = 0; y < 60; ++y) {
    for (int x = 0; x < 80; ++x) {
      picture.push_back(static_cast<unsigned char>((7 * x + 13 * y + x * y) % 256));
    }
  }
  return frames::frameOf(80, 60, 8, picture);
}

struct Pixel {
  int x;
  int y;
  int value;
  int mask;
};

template <std::size_t Count>
void expectPixels(const FishEyeCalibrationParam& param, const Pixel (&pixels)[Count]) {
  const frames::View view = frames::render(frame(), param, kWidth, kHeight);
  ASSERT_TRUE(view.shown);
  for (const Pixel& pixel : pixels) {
    const auto at = static_cast<std::size_t>(pixel.y * kWidth + pixel.x);
    EXPECT_EQ(view.picture[at], pixel.value) << pixel.x << ", " << pixel.y;
    EXPECT_EQ(view.mask[at], pixel.mask) << pixel.x << ", " << pixel.y;
  }
}

TEST(CorrectedImageLens, UndistortsPixelsWorkedOutByHand) {
  const Pixel pixels[] = {
      {32, 24, 43, 0},   // (41.25, 28.5), the principal point: 42.875
      {33, 24, 78, 0},   // (42.2513, 28.5): 78.375
      {32, 10, 75, 0},   // (41.25, 14.9471): 75.11
      {0, 0, 154, 0},    // (16.5313, 9.9610): 154.11
      {63, 0, 203, 0},   // (65.3869, 9.8134): 202.68
      {63, 47, 71, 0},   // (65.5481, 46.5276): 71.05
      {5, 40, 169, 0},   // (18.4502, 42.0110): 169.44
      {48, 9, 126, 0},   // (55.9351, 14.7327): 126.24
      {20, 30, 133, 0},  // (29.5599, 34.3450): 132.69
  };
  expectPixels(distortedCamera(), pixels);
}

TEST(CorrectedImageLens, SecondCorrectionOfPixelsWorkedOutByHand) {
  FishEyeCalibrationParam param = distortedCamera();
  param.p1 = 1.25;
  param.p2 = 0.1;
  param.p3 = -9;
  param.p4 = -0.05;
  param.p5 = 1.2;
  param.p6 = -3;
  param.p7 = 0.0005;
  param.p8 = 0.001;
  param.ImageDx = 2.5F;
  param.ImageDy = -1.5F;
  const Pixel pixels[] = {
      {32, 24, 76, 0},   // shows (30, 26) at (39.2454, 30.5046): 76.375
      {10, 8, 64, 0},    // (12, 11) at (23.1562, 16.7391): 63.71
      {60, 5, 75, 0},    // (54, 10) at (60.7706, 16.0778): 74.58
      {30, 44, 128, 0},  // (27, 44) at (36.6303, 46.9788): 128.20
      {1, 30, 103, 0},   // (4, 30) at (16.9002, 33.7178): 102.75
      {0, 0, 12, 0},     // (5, 4) at (18.9799, 12.0037): 12.41
      {45, 33, 166, 0},  // (40, 35) at (49.0225, 39.1872): 166.07
      {63, 0, 154, 0},   // (57, 6) at (62.4530, 13.2339): 154.25
      {63, 47, 0, 255},  // (55, 48), below the view
  };
  expectPixels(param, pixels);
}

}  // namespace
