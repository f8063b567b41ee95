#include "single/placed_view.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <tuple>

#include "single/corrected_frames.h"

namespace fisheye_calibration::single {
namespace {

// Tilted by 20 and -15 degrees, 300 above the bed.
FishEyeCalibrationParam tiltedCamera() {
  FishEyeCalibrationParam param{};
  param.fx = 310;
  param.fy = 305;
  param.u0 = 324.5f;
  param.v0 = 236.25f;
  param.k0 = 0.01;
  param.k1 = -0.05;
  param.Rx = 0.35f;
  param.Ry = -0.25f;
  param.Rz = 0.05f;
  param.Tx = -120;
  param.Ty = -60;
  param.Tz = 300;
  return param;
}

struct Point {
  double x;
  double y;
};

// Rodrigues' formula: X cos a + (n x X) sin a + n (n X) (1 - cos a), then T.
std::array<double, 3> inCamera(const FishEyeCalibrationParam& param, Point bed) {
  const double om[3] = {param.Rx, param.Ry, param.Rz};
  const double angle = std::sqrt(om[0] * om[0] + om[1] * om[1] + om[2] * om[2]);
  const double n[3] = {om[0] / angle, om[1] / angle, om[2] / angle};
  const double along = (n[0] * bed.x + n[1] * bed.y) * (1 - std::cos(angle));
  const double s = std::sin(angle);
  const double c = std::cos(angle);
  return {bed.x * c - n[2] * bed.y * s + n[0] * along + static_cast<double>(param.Tx),
          bed.y * c + n[2] * bed.x * s + n[1] * along + static_cast<double>(param.Ty),
          (n[0] * bed.y - n[1] * bed.x) * s + n[2] * along + static_cast<double>(param.Tz)};
}

// Where the library's chain of pictures shows the bed point, with the principal point of the
// intermediate picture at (cx, cy).
Point secondCorrected(const FishEyeCalibrationParam& p, Point bed, double cx, double cy) {
  const auto Y = inCamera(p, bed);
  const double x = static_cast<double>(p.fx) * Y[0] / Y[2] + cx;
  const double y = static_cast<double>(p.fy) * Y[1] / Y[2] + cy;
  const double w = p.p7 * x + p.p8 * y + p.p9;
  return {(p.p1 * x + p.p2 * y + p.p3) / w + static_cast<double>(p.ImageDx),
          (p.p4 * x + p.p5 * y + p.p6) / w + static_cast<double>(p.ImageDy)};
}

TEST(PlacedView, PixelsLieOnTheBedFromTheCornerOn) {
  for (const auto& [width, height, pixel] : {std::tuple(800, 600, 0.5f), {801, 603, 0.3f}}) {
    FishEyeCalibrationParam param = tiltedCamera();
    ASSERT_TRUE(placeSecondCorrection({-20, 35.5}, pixel, width, height, param));
    EXPECT_EQ(param.Pixel, pixel);
    // The intermediate picture's centre is rounded up.
    const double cx = (width + 1) / 2;
    const double cy = (height + 1) / 2;
    for (const Point bed : {Point{-20, 35.5}, {0, 40}, {150, 200}, {240, 100}, {33, 215}}) {
      // The outer corner of the first pixel is half a pixel before its centre.
      const double x = (bed.x + 20) / static_cast<double>(pixel) - 0.5;
      const double y = (bed.y - 35.5) / static_cast<double>(pixel) - 0.5;
      const Point chain = secondCorrected(param, bed, cx, cy);
      EXPECT_NEAR(chain.x, x, 1e-3);
      EXPECT_NEAR(chain.y, y, 1e-3);
      float mappedX = 0;
      float mappedY = 0;
      WorldToSecondCorrectedImagePoint(static_cast<float>(bed.x), static_cast<float>(bed.y), 0,
                                       param, static_cast<float>(width * 0.5),
                                       static_cast<float>(height * 0.5), mappedX, mappedY);
      EXPECT_NEAR(static_cast<double>(mappedX), x, 1e-3);
      EXPECT_NEAR(static_cast<double>(mappedY), y, 1e-3);
    }
  }
}

// A bright square on the raw picture is found in the rendered one where its bed point belongs.
TEST(PlacedView, TheRenderedPictureShowsTheBedThere) {
  constexpr int kWidth = 640;
  constexpr int kHeight = 480;
  const Point bed{60, 90};
  for (const auto& [width, height] : {std::pair(800, 700), {801, 703}}) {
    FishEyeCalibrationParam param = tiltedCamera();
    ASSERT_TRUE(placeSecondCorrection({-40, -20}, 0.25f, width, height, param));
    float u = 0;
    float v = 0;
    WorldToRawImagePoint(static_cast<float>(bed.x), static_cast<float>(bed.y), 0, param, u, v);
    // Brightness falls off evenly from the point, so that its centre is known to a fraction of a
    // pixel.
    frames::Bytes picture;
    for (int y = 0; y < kHeight; ++y) {
      for (int x = 0; x < kWidth; ++x) {
        const double distance = std::hypot(x - static_cast<double>(u), y - static_cast<double>(v));
        picture.push_back(static_cast<unsigned char>(std::max(0.0, 240 - 60 * distance)));
      }
    }
    const frames::View view =
        frames::render(frames::frameOf(kWidth, kHeight, 8, picture), param, width, height);
    ASSERT_TRUE(view.shown);
    double sum = 0;
    double sumX = 0;
    double sumY = 0;
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) {
        const double value = view.picture[static_cast<std::size_t>(y * width + x)];
        sum += value;
        sumX += value * x;
        sumY += value * y;
      }
    }
    EXPECT_NEAR(sumX / sum, (bed.x + 40) / 0.25 - 0.5, 0.25) << width;
    EXPECT_NEAR(sumY / sum, (bed.y + 20) / 0.25 - 0.5, 0.25) << height;
  }
}

TEST(PlacedView, ACameraInTheBedsPlaneHasNone) {
  FishEyeCalibrationParam param = tiltedCamera();
  param.Rx = param.Ry = param.Rz = 0;
  param.Tz = 0;
  param.Pixel = 7;
  EXPECT_FALSE(placeSecondCorrection({0, 0}, 0.5f, 800, 600, param));
  EXPECT_EQ(param.Pixel, 7);
  EXPECT_EQ(param.p9, 0);
}

}  // namespace
}  // namespace fisheye_calibration::single
