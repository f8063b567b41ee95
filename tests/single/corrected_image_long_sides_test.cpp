// Frames and views with a side beyond the 32767 pixels that the image library's remap takes,
// against the steps written out, on every instruction set.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <opencv2/core.hpp>
#include <vector>

#include "fisheye_calibration.h"
#include "support/dice.h"
#include "support/instruction_sets.h"
#include "support/plain_correction.h"

namespace {

using Bytes = std::vector<unsigned char>;

constexpr int kLong = 33000;

struct Scene {
  cv::Size frame;
  cv::Size view;
  FishEyeCalibrationParam param{};
};

// The frame's middle shows in the view's.
Scene sceneOf(const cv::Size& frame, const cv::Size& view, float focal) {
  Scene scene{frame, view, {}};
  FishEyeCalibrationParam& param = scene.param;
  param.fx = param.fy = focal;
  param.u0 = static_cast<float>(frame.width) / 2 - 0.6F;
  param.v0 = static_cast<float>(frame.height) / 2 - 0.6F;
  param.k0 = 0.01;
  param.k1 = -0.02;
  param.p1 = param.p5 = param.p9 = 1;
  return scene;
}

struct Output {
  Bytes view;
  Bytes mask;

  explicit Output(const Scene& scene, int bitCount)
      : view(static_cast<std::size_t>(scene.view.area()) * static_cast<std::size_t>(bitCount / 8)),
        mask(static_cast<std::size_t>(scene.view.area())) {}
};

Output plainOutput(const Scene& scene, const Bytes& frame, int bitCount) {
  Output output(scene, bitCount);
  EXPECT_TRUE(plain::singleCamCorrected(frame.data(), scene.frame.width, scene.frame.height,
                                        bitCount, scene.param, output.view.data(), scene.view.width,
                                        scene.view.height, output.mask.data()));
  return output;
}

void expectPlainBytes(const Scene& scene) {
  for (const int bitCount : {8, 24, 32}) {
    SCOPED_TRACE(bitCount);
    support::Dice dice(11);
    Bytes frame(static_cast<std::size_t>(scene.frame.area()) *
                static_cast<std::size_t>(bitCount / 8));
    for (unsigned char& byte : frame) byte = static_cast<unsigned char>(dice.whole(1, 255));
    const Output wanted = plainOutput(scene, frame, bitCount);
    // Both kinds of pixels are there, or the comparison would say little.
    EXPECT_GT(std::count(wanted.mask.begin(), wanted.mask.end(), 0), 20);
    EXPECT_GT(std::count(wanted.mask.begin(), wanted.mask.end(), 255), 20);
    EXPECT_LT(std::count(wanted.view.begin(), wanted.view.end(), 0),
              static_cast<std::ptrdiff_t>(wanted.view.size()) - 20);
    support::onEveryInstructionSet([&] {
      Output got(scene, bitCount);
      ASSERT_TRUE(SingleCamCorrected(frame.data(), scene.frame.width, scene.frame.height, bitCount,
                                     scene.param, got.view.data(), scene.view.width,
                                     scene.view.height, got.mask.data()));
      EXPECT_TRUE(got.view == wanted.view);
      EXPECT_TRUE(got.mask == wanted.mask);
    });
  }
}

// The same scene, moved and tilted.
Scene corrected(Scene scene) {
  FishEyeCalibrationParam& param = scene.param;
  param.p1 = 0.98;
  param.p2 = 0.3 / scene.view.height;
  param.p4 = 0.3 / scene.view.width;
  param.p5 = 1.01;
  param.p7 = 1e-7;
  param.p8 = 2e-7;
  param.ImageDx = 0.03F * static_cast<float>(scene.view.width);
  param.ImageDy = 0.03F * static_cast<float>(scene.view.height);
  return scene;
}

TEST(CorrectedImageLongSides, WideView) {
  const Scene scene = sceneOf({400, 30}, {kLong, 2}, 300);
  expectPlainBytes(scene);
  expectPlainBytes(corrected(scene));
}

TEST(CorrectedImageLongSides, TallView) {
  const Scene scene = sceneOf({30, 400}, {2, kLong}, 300);
  expectPlainBytes(scene);
  expectPlainBytes(corrected(scene));
}

// Columns beyond 32767 wrap to negative ones and lie outside.
TEST(CorrectedImageLongSides, WideFrame) {
  Scene scene = sceneOf({kLong, 2}, {900, 4}, 10000);
  scene.param.u0 = 32767;
  expectPlainBytes(scene);
  expectPlainBytes(corrected(scene));
}

TEST(CorrectedImageLongSides, TallFrame) {
  Scene scene = sceneOf({2, kLong}, {4, 900}, 10000);
  scene.param.v0 = 32767;
  expectPlainBytes(scene);
  expectPlainBytes(corrected(scene));
}

TEST(CorrectedImageLongSides, WideFrameInAWideView) {
  Scene scene = sceneOf({kLong, 3}, {kLong, 2}, 20000);
  scene.param.u0 = 25000;
  expectPlainBytes(scene);
  expectPlainBytes(corrected(scene));
}

}  // namespace
