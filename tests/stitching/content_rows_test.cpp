// In which rows of a stitched image the content of a mapped world point lies. Two fisheye cameras
// are calibrated over a bed; each sees a bright spot around one world point.
#include <gtest/gtest.h>

#include <cmath>

#include "fisheye_calibration.h"
#include "registration/debug_drive.h"
#include "stitching/rigs.h"
#include "support/synthetic_rig.h"

namespace {

constexpr int kWidth = 640;
constexpr int kHeight = 480;
constexpr double kSpotRadius = 7;   // raw pixels
constexpr double kTolerance = 1.0;  // canvas pixels

support::Bed bed() {
  support::Bed result;
  result.columns = 9;
  result.rows = 7;
  result.spacing = 40;
  return result;
}

plain::StitchCamera calibrated(double offsetX) {
  support::RigCamera lens;
  lens.imageSize = {kWidth, kHeight};
  lens.fx = lens.fy = 205;
  lens.cx = 322;
  lens.cy = 238;
  const auto pose = support::poseOver(bed(), 260, 0.12, -0.1, 0.05, offsetX);
  plain::StitchCamera camera;
  camera.width = kWidth;
  camera.height = kHeight;
  camera.points = support::calibrationPoints(support::seen(lens, bed(), pose));
  double error = 0;
  EXPECT_TRUE(SingleCamCalibration(nullptr, kWidth, kHeight, 8, camera.points, 2 * kWidth,
                                   2 * kHeight, camera.param, error));
  EXPECT_LT(error, 0.1);
  return camera;
}

// The frame is dark but for the spot. Frames are stored bottom-up.
void showSpot(plain::StitchCamera& camera, float Xw, float Yw) {
  float x = 0;
  float y = 0;
  WorldToRawImagePoint(Xw, Yw, 0, camera.param, x, y);
  camera.image.assign(kWidth * kHeight, 0);
  for (int row = 0; row < kHeight; ++row) {
    for (int column = 0; column < kWidth; ++column) {
      if (std::hypot(static_cast<double>(column) - x, static_cast<double>(row) - y) < kSpotRadius) {
        camera.image[static_cast<std::size_t>((kHeight - 1 - row) * kWidth + column)] = 200;
      }
    }
  }
}

struct Spot {
  double column;
  double bufferRow;
};

Spot spotOn(const std::vector<unsigned char>& canvas, int width, int height) {
  double sum = 0;
  Spot spot{};
  for (int r = 0; r < height; ++r) {
    for (int c = 0; c < width; ++c) {
      const double value = canvas[static_cast<std::size_t>(r * width + c)];
      sum += value;
      spot.column += value * c;
      spot.bufferRow += value * r;
    }
  }
  EXPECT_GT(sum, 0);
  return {spot.column / sum, spot.bufferRow / sum};
}

class ContentRows : public DebugDriveTest {
 protected:
  void SetUp() override {
    DebugDriveTest::SetUp();
    rig_ = {calibrated(-30), calibrated(30)};
  }

  // The canvas with the spot at one world point.
  rigs::Stitched withSpotAt(float Xw, float Yw) {
    showSpot(rig_.first, Xw, Yw);
    showSpot(rig_.second, Xw, Yw);
    const rigs::Size size = rigs::sizeOf(rig_);
    width_ = size.width;
    height_ = size.height;
    return rigs::stitch(rig_, width_, height_, 8, 0);
  }

  rigs::Rig rig_;
  int width_ = 0;
  int height_ = 0;
};

struct Mapped {
  float u = 0;
  float v = 0;
};

Mapped mapped(float Xw, float Yw, const DualFishEyeCalibrationParam& dual) {
  Mapped result;
  DualCam_WorldToSecondCorrectedImagePoint(Xw, Yw, 0, dual, result.u, result.v);
  return result;
}

const cv::Point2f kWorldPoints[] = {{120, 90}, {200, 90}, {160, 200}, {240, 220}};

TEST_F(ContentRows, OfAWholeCanvasAreVCountedFromTheTop) {
  for (const cv::Point2f& world : kWorldPoints) {
    const auto out = withSpotAt(world.x, world.y);
    const Mapped at = mapped(world.x, world.y, out.dual);
    const Spot spot = spotOn(out.canvas, width_, height_);
    EXPECT_NEAR(spot.column, at.u, kTolerance) << world;
    EXPECT_NEAR(height_ - 1 - spot.bufferRow, at.v, kTolerance) << world;
  }
}

TEST_F(ContentRows, OfAnyCropAreVMirroredAtTheDatumRow) {
  for (const cv::Point2f& world : kWorldPoints) {
    const auto out = withSpotAt(world.x, world.y);
    for (const auto& [left, top, right, bottom] :
         {std::array{0, 0, 0, 0}, std::array{40, 60, 0, 4}, std::array{8, 0, 100, 120}}) {
      const int width = (width_ - left - right) / 4 * 4;
      const int height = (height_ - top - bottom) / 4 * 4;
      std::vector<unsigned char> source = out.canvas;
      std::vector<unsigned char> cropped(static_cast<std::size_t>(width * height));
      DualFishEyeCalibrationParam dual = out.dual;
      DualCam_CroppingImage(source.data(), width_, height_, 8, left, top, dual, cropped.data(),
                            width, height);
      const Mapped at = mapped(world.x, world.y, dual);
      const Spot spot = spotOn(cropped, width, height);
      EXPECT_NEAR(spot.column, at.u, kTolerance) << world;
      EXPECT_NEAR(spot.bufferRow, 2.0 * dual.DatumImagePtY - 1 - at.v, kTolerance) << world;
    }
  }
}

}  // namespace
