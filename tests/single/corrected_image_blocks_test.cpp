// SingleCamCorrected against the plain pipeline, byte for byte, where the renderer's blocks of 32
// pixels begin, end and meet the borders of frames and views.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "fisheye_calibration.h"
#include "single/corrected_frames.h"
#include "single/corrected_scenes.h"
#include "support/dice.h"

namespace {

using frames::setHomography;
using frames::shift;
using scenes::Scene;
using scenes::View;
using support::Dice;

#ifdef __OPTIMIZE__
constexpr std::uint64_t kScenes = 4000;  // of each part
#else
constexpr std::uint64_t kScenes = 400;
#endif

// Turned, zoomed and tilted about the view's middle.
cv::Matx33d viewOf(Dice& dice, const Scene& scene) {
  const double turn = dice.oneIn(3) ? dice.number(4) : dice.number(0.2);
  const double scale = dice.magnitude(0.4, 3);
  const double tilt = dice.oneIn(4) ? 1.5 : 0.3;
  const cv::Matx33d turned(scale * std::cos(turn), -scale * std::sin(turn), 0,
                           scale * std::sin(turn), scale * std::cos(turn), 0,
                           dice.number(tilt) / scene.dstWidth, dice.number(tilt) / scene.dstHeight,
                           1);
  const double x = scene.dstWidth * 0.5;
  const double y = scene.dstHeight * 0.5;
  return shift(x, y) * turned * shift(-x, -y);
}

void setCamera(Dice& dice, Scene& scene) {
  FishEyeCalibrationParam& param = scene.param;
  const double focal = std::max(scene.srcWidth, scene.dstWidth) * dice.magnitude(0.1, 1.5);
  param.fx = static_cast<float>(focal);
  param.fy = static_cast<float>(focal * dice.uniform(0.95, 1.05));
  param.u0 = static_cast<float>(scene.srcWidth * dice.uniform(0.3, 0.7));
  param.v0 = static_cast<float>(scene.srcHeight * dice.uniform(0.3, 0.7));
  param.k0 = dice.number(0.1);
  param.k1 = dice.number(0.1);
  if (dice.oneIn(4)) param.skewness = dice.numberF(0.2F * param.fx);
  setHomography(param, viewOf(dice, scene));
  param.ImageDx = dice.numberF(3);
  param.ImageDy = dice.numberF(3);
  if (dice.oneIn(5)) {  // source pixels and positions on ties
    param.fx = param.fy = 1e6F;
    param.u0 = static_cast<float>(dice.whole(-200, 2000)) / 64;
    param.v0 = static_cast<float>(dice.whole(-200, 2000)) / 64;
    param.k0 = param.k1 = 0;
    setHomography(param, cv::Matx33d::diag({dice.oneIn(2) ? 1.0 : 0.5, 1, 1}));
    param.ImageDx = static_cast<float>(dice.whole(-80, 80)) / 4;
    param.ImageDy = static_cast<float>(dice.whole(-80, 80)) / 4;
  }
  if (dice.oneIn(12)) param.u0 = dice.numberF(4e4);  // far from the frame, up to wrapping around
}

void fill(Dice& dice, Scene& scene) {
  scene.src.resize(static_cast<std::size_t>(scene.srcWidth * scene.srcHeight * scene.bitCount / 8));
  const int kind = dice.whole(0, 3);
  for (unsigned char& byte : scene.src) {
    byte = static_cast<unsigned char>(kind == 0 ? 255 * dice.whole(0, 1) : dice.whole(0, 255));
  }
}

// Sizes around whole blocks, and frames around the least that can be read in vectors.
Scene sceneAroundBlocks(std::uint64_t seed) {
  Dice dice(seed);
  const int bitCounts[] = {8, 24, 32};
  const int widths[] = {31, 32, 33, 63, 64, 65, 96, 255, 256, 257, 288, 289};
  Scene scene;
  scene.bitCount = bitCounts[dice.whole(0, 2)];
  scene.srcWidth = dice.oneIn(3) ? dice.whole(1, 40) : dice.whole(40, 200);
  scene.srcHeight = dice.oneIn(3) ? dice.whole(1, 9) : dice.whole(9, 60);
  scene.dstWidth = dice.oneIn(2) ? widths[dice.whole(0, 11)] : dice.whole(30, 140);
  scene.dstHeight = dice.whole(1, 7);
  setCamera(dice, scene);
  if (dice.oneIn(2)) {  // views that look at the frame's middle even if they are low
    scene.param.ImageDy += static_cast<float>(dice.whole(-3, 3));
  }
  fill(dice, scene);
  return scene;
}

// Rows of about 32767 bytes.
Scene sceneWithLongRows(std::uint64_t seed) {
  Dice dice(seed);
  Scene scene;
  switch (dice.whole(0, 2)) {
    case 0:
      scene.bitCount = 8;
      scene.srcWidth = 32767 + dice.whole(-2, 2);
      break;
    case 1:
      scene.bitCount = 24;
      scene.srcWidth = 10922 + dice.whole(-1, 1);
      break;
    default:
      scene.bitCount = 32;
      scene.srcWidth = 8191 + dice.whole(-1, 2);
  }
  scene.srcHeight = dice.whole(2, 12);
  scene.dstWidth = dice.whole(32, 200);
  scene.dstHeight = dice.whole(1, 5);
  setCamera(dice, scene);
  scene.param.u0 = static_cast<float>(scene.srcWidth * dice.uniform(0, 1));
  if (dice.oneIn(2)) scene.param.fx = scene.param.fy = static_cast<float>(dice.uniform(50, 500));
  fill(dice, scene);
  return scene;
}

// Cameras and views of which float cannot describe most blocks.
Scene sceneBeyondFloat(std::uint64_t seed) {
  Dice dice(seed);
  Scene scene = sceneAroundBlocks(seed);
  FishEyeCalibrationParam& param = scene.param;
  switch (dice.whole(0, 4)) {
    case 0:  // a lens whose positions differ by more than 16 or 32 bits
      param.k0 = dice.number(1) * dice.magnitude(1e2, 1e10);
      param.k1 = dice.oneIn(2) ? -param.k0 : dice.number(1) * dice.magnitude(1e2, 1e10);
      break;
    case 1:  // all positions close to a tie
      param.fx = param.fy = static_cast<float>(dice.magnitude(1e-12, 1e-5));
      param.u0 = static_cast<float>(scene.srcWidth / 2) + 1.0F / 64;
      param.v0 = static_cast<float>(scene.srcHeight / 2) + 1.0F / 64;
      param.skewness = 0;
      break;
    case 2:  // whole pixels wrap around at 16 bits
      param.u0 += 65536.0F * static_cast<float>(dice.whole(-100, 100));
      param.v0 += 65536.0F * static_cast<float>(dice.whole(-100, 100));
      break;
    case 3: {  // steps of more than 4.5 pixels
      const double x = scene.dstWidth * 0.5;
      const double y = scene.dstHeight * 0.5;
      const double scale = dice.uniform(0.1, 0.25);
      setHomography(
          param, shift(x, y) * cv::Matx33d::diag({scale, dice.uniform(0.3, 1), 1}) * shift(-x, -y));
      break;
    }
    default:  // the horizon crosses the view
      param.p7 += dice.number(10) / scene.dstWidth;
  }
  return scene;
}

// A third of the scenes at least must show something, or the comparison would say little.
template <class Generator>
void expectPlain(const Generator& generator, std::uint64_t first, std::uint64_t count) {
  EXPECT_GT(scenes::compareWithPlain(generator, first, count), count / 3);
}

class CorrectedBlocks : public testing::TestWithParam<std::uint64_t> {};

TEST_P(CorrectedBlocks, EqualThePlainPipelineOnEveryInstructionSet) {
  expectPlain(sceneAroundBlocks, GetParam() * kScenes, kScenes);
}

INSTANTIATE_TEST_SUITE_P(Parts, CorrectedBlocks, testing::Range<std::uint64_t>(0, 10));

TEST(CorrectedBlocksBeyondFloat, EqualThePlainPipelineOnEveryInstructionSet) {
  expectPlain(sceneBeyondFloat, 0, kScenes);
}

TEST(CorrectedLongRows, EqualThePlainPipelineOnEveryInstructionSet) {
  expectPlain(sceneWithLongRows, 0, kScenes / 4);
}

// Rows of three million bytes, and blocks whose middle lies a thousand rows above the frame while
// their last pixels show its first row.
TEST(CorrectedLongRows, OffsetsFarFromTheFrameDoNotWrapAround) {
  Scene scene;
  scene.srcWidth = 1000000;
  scene.srcHeight = 2;
  scene.bitCount = 24;
  scene.dstWidth = 64;
  scene.dstHeight = 1000;
  scene.param.fx = scene.param.fy = 1e6F;
  scene.param.u0 = 132;
  scene.param.v0 = -430;
  setHomography(scene.param, cv::Matx33d(0, 1.0 / 30, 0, 1, 0, 0, 0, 0, 1));
  Dice dice(1);
  fill(dice, scene);
  const View expected = scenes::renderPlainly(scene);
  ASSERT_TRUE(expected.shown);
  support::onEveryInstructionSet([&] { EXPECT_TRUE(scenes::shows(scene, expected)); });
}

// Pixels that are not shown lie on the undistorted image's border, farther from the others than
// shown ones can. They must not be read from outside the frame.
TEST(CorrectedBlocksOnBorders, PixelsThatAreNotShownAreNotReadOutsideTheFrame) {
  Dice dice(3);
  for (int i = 0; i < 300; ++i) {
    Scene scene;
    scene.bitCount = 8 * dice.whole(3, 4);
    scene.srcWidth = 480;
    scene.srcHeight = dice.whole(8, 12);
    scene.dstWidth = 480;
    scene.dstHeight = 480;
    scene.param.fx = scene.param.fy = 8000;
    scene.param.u0 = static_cast<float>(dice.uniform(230, 250));
    scene.param.v0 = static_cast<float>(-239 + dice.uniform(-1, 1));
    setHomography(scene.param, shift(240, 478) * cv::Matx33d(0, -10, 0, 10, 0, 0, 0, 0, 1) *
                                   shift(-240 - dice.number(20), -478 - dice.number(2)));
    fill(dice, scene);
    const View expected = scenes::renderPlainly(scene);
    ASSERT_TRUE(scenes::shows(scene, expected)) << i;
  }
}

}  // namespace
