// SingleCamCorrected against the plain pipeline, byte for byte. This proves that the fused renderer
// is the plain pipeline; corrected_image_test.cpp proves that the pictures are the right ones.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <opencv2/core/utility.hpp>
#include <thread>
#include <vector>

#include "fisheye_calibration.h"
#include "single/corrected_frames.h"
#include "single/corrected_scenes.h"
#include "support/dice.h"
#include "support/scene_factor.h"

namespace {

using frames::setHomography;
using frames::shift;
using scenes::Bytes;
using scenes::Scene;
using scenes::View;
using support::Dice;

// --- records ---

// Turns and scales about the view's centre, with a perspective of `tilt` over half the view.
cv::Matx33d tiltedView(Dice& dice, const Scene& scene, double turn, double tilt) {
  const double halfWidth = scene.dstWidth * 0.5;
  const double halfHeight = scene.dstHeight * 0.5;
  const double scale = dice.uniform(0.6, 1.6);
  const cv::Matx33d turned(scale * std::cos(turn), -scale * std::sin(turn), 0,
                           scale * std::sin(turn), scale * std::cos(turn), 0,
                           dice.number(tilt) / halfWidth, dice.number(tilt) / halfHeight, 1);
  return shift(halfWidth, halfHeight) * turned * shift(-halfWidth, -halfHeight);
}

void realisticCamera(Dice& dice, Scene& scene) {
  FishEyeCalibrationParam& param = scene.param;
  const double focal = scene.srcWidth / CV_PI * dice.uniform(0.9, 1.3);
  param.fx = static_cast<float>(focal);
  param.fy = static_cast<float>(focal * dice.uniform(0.98, 1.02));
  param.u0 = static_cast<float>(scene.srcWidth * dice.uniform(0.45, 0.55));
  param.v0 = static_cast<float>(scene.srcHeight * dice.uniform(0.45, 0.55));
  param.k0 = dice.number(0.05);
  param.k1 = dice.number(0.05);
  setHomography(param, tiltedView(dice, scene, dice.number(0.3), 0.3));
  param.ImageDx = dice.numberF(3);
  param.ImageDy = dice.numberF(3);
}

void distortCamera(Dice& dice, FishEyeCalibrationParam& param) {
  switch (dice.whole(0, 5)) {
    case 0:
      param.skewness = dice.numberF(30);
      break;
    case 1:  // short or mirrored focal lengths
      param.fx = dice.numberF(20);
      param.fy = dice.numberF(20);
      break;
    case 2:  // positions beyond 16 and 32 bits
      param.u0 = dice.numberF(dice.oneIn(2) ? 1e5 : 1e8);
      param.v0 = dice.numberF(1e5);
      break;
    case 3:  // positions that spread over thousands of pixels
      param.fx = dice.numberF(1e5);
      param.k0 = dice.number(1e4);
      break;
    case 4:  // the distorted angle turns back
      param.k0 = dice.number(3);
      param.k1 = dice.number(3);
      break;
    default:  // positions on whole pixels and on halves of 1/32
      param.fx = param.fy = 1e6f;
      param.u0 = static_cast<float>(dice.whole(-100, 1000)) / 64;
      param.v0 = static_cast<float>(dice.whole(-100, 1000)) / 64;
      param.k0 = param.k1 = 0;
  }
}

void distortView(Dice& dice, Scene& scene) {
  FishEyeCalibrationParam& param = scene.param;
  switch (dice.whole(0, 6)) {
    case 0:
      setHomography(param, cv::Matx33d::eye());
      param.ImageDx = static_cast<float>(dice.whole(-8, 8)) / 4;
      param.ImageDy = static_cast<float>(dice.whole(-8, 8)) / 4;
      break;
    case 1:  // exact quarter turns
      setHomography(param, cv::Matx33d(0, -1, scene.dstWidth - 1.0, 1, 0, 0, 0, 0, 1));
      param.ImageDx = param.ImageDy = 0;
      break;
    case 2:  // a horizon crosses the view
      setHomography(param, tiltedView(dice, scene, dice.number(4), 4));
      break;
    case 3:  // singular
      setHomography(param,
                    dice.oneIn(2) ? cv::Matx33d::zeros() : cv::Matx33d(1, 2, 3, 2, 4, 6, 1, 1, 1));
      break;
    case 4:
      param.ImageDx = dice.numberF(2.0 * scene.dstWidth);
      param.ImageDy = dice.numberF(2.0 * scene.dstHeight);
      break;
    case 5:
      setHomography(param, cv::Matx33d::diag({1e-3, 1e-3, 1}));  // every pixel shows the centre
      break;
    default:  // any nine numbers
      cv::Matx33d H;
      for (double& element : H.val) element = dice.number(3);
      setHomography(param, H);
  }
}

// What no camera has.
void spoil(Dice& dice, FishEyeCalibrationParam& param) {
  const double values[] = {std::numeric_limits<double>::quiet_NaN(),
                           std::numeric_limits<double>::infinity(),
                           -std::numeric_limits<double>::infinity(),
                           1e38,
                           -1e30,
                           2147483648.0,
                           -2147483648.5,
                           1e-40,
                           0.0,
                           -0.0};
  float* const floats[] = {&param.u0,       &param.v0,      &param.fx,     &param.fy,
                           &param.skewness, &param.ImageDx, &param.ImageDy};
  double* const doubles[] = {&param.k0, &param.k1, &param.p1, &param.p2, &param.p3, &param.p4,
                             &param.p5, &param.p6, &param.p7, &param.p8, &param.p9};
  for (int i = dice.whole(1, 2); i > 0; --i) {
    const double value = values[dice.whole(0, 9)];
    const int field = dice.whole(0, 17);
    if (field < 7) {
      *floats[field] = static_cast<float>(value);
    } else {
      *doubles[field - 7] = value;
    }
  }
}

// --- frames ---

Bytes frameOf(Dice& dice, std::size_t count, std::size_t pixelBytes) {
  Bytes bytes(count * pixelBytes, 0);
  switch (dice.whole(0, 9)) {
    case 0:  // black
      break;
    case 1:  // one lit byte
      bytes[static_cast<std::size_t>(dice.uniform(0, static_cast<double>(bytes.size())))] = 255;
      break;
    case 2:
      bytes.assign(bytes.size(), 255);
      break;
    default:
      for (unsigned char& byte : bytes) byte = static_cast<unsigned char>(dice.uniform(0, 256));
  }
  return bytes;
}

int lengthOf(Dice& dice) {
  if (dice.oneIn(8)) return 1;
  return dice.oneIn(6) ? dice.whole(60, 150) : dice.whole(2, 40);
}

Scene randomScene(std::uint64_t seed) {
  Dice dice(seed);
  const int bitCounts[] = {8, 24, 32};
  Scene scene;
  scene.bitCount = dice.oneIn(50) ? 16 : bitCounts[dice.whole(0, 2)];
  scene.srcWidth = lengthOf(dice);
  scene.srcHeight = lengthOf(dice);
  scene.dstWidth = lengthOf(dice);
  scene.dstHeight = lengthOf(dice);
  if (dice.oneIn(3)) {  // as two cameras are rendered for stitching
    scene.dstWidth = 2 * scene.srcWidth;
    scene.dstHeight = 2 * scene.srcHeight;
  }
  scene.masked = !dice.oneIn(5);
  realisticCamera(dice, scene);
  if (dice.oneIn(2)) distortCamera(dice, scene.param);
  if (dice.oneIn(2)) distortView(dice, scene);
  if (dice.oneIn(6)) spoil(dice, scene.param);
  scene.src = frameOf(dice, static_cast<std::size_t>(scene.srcWidth * scene.srcHeight),
                      static_cast<std::size_t>(scene.bitCount / 8));
  return scene;
}

// A tilted camera over a frame that is large enough for every fast path.
Scene largeScene(std::uint64_t seed, int bitCount) {
  Dice dice(seed);
  Scene scene;
  scene.bitCount = bitCount;
  scene.srcWidth = 411;
  scene.srcHeight = 307;
  scene.dstWidth = 523;
  scene.dstHeight = 401;
  realisticCamera(dice, scene);
  scene.src.resize(static_cast<std::size_t>(scene.srcWidth * scene.srcHeight * bitCount / 8));
  for (unsigned char& byte : scene.src) byte = static_cast<unsigned char>(dice.uniform(0, 256));
  return scene;
}

// --- comparison ---

TEST(CorrectedImageRandom, GeneratorReachesBothOutcomes) {
  int shown = 0;
  int partly = 0;
  for (std::uint64_t seed = 0; seed < 400; ++seed) {
    const View view = scenes::renderPlainly(randomScene(seed));
    const auto outside = std::count(view.mask.begin(), view.mask.end(), 255);
    const auto inside = std::count(view.mask.begin(), view.mask.end(), 0);
    shown += view.shown ? 1 : 0;
    partly += outside > 0 && inside > 0 ? 1 : 0;
  }
  EXPECT_GT(shown, 200);
  EXPECT_LT(shown, 380);
  EXPECT_GT(partly, 100);
}

class CorrectedImageParts : public testing::TestWithParam<int> {};

TEST_P(CorrectedImageParts, EqualThePlainPipelineOnEveryInstructionSet) {
  constexpr std::uint64_t kScenes = 4000;
  scenes::compareWithPlain(randomScene, static_cast<std::uint64_t>(GetParam()) * kScenes, kScenes);
}

INSTANTIATE_TEST_SUITE_P(Random, CorrectedImageParts, testing::Range(0, support::kSceneFactor));

TEST(CorrectedImageRandom, LargeViewsEqualThePlainPipelineOnEveryInstructionSet) {
  for (const int bitCount : {8, 24, 32}) {
    scenes::compareWithPlain([=](std::uint64_t seed) { return largeScene(seed, bitCount); }, 0,
                             std::uint64_t{4} * support::kSceneFactor);
  }
}

TEST(CorrectedImageRandom, NumberOfThreadsOfTheImageLibraryDoesNotMatter) {
  const int threads = cv::getNumThreads();
  const Scene scene = largeScene(9, 24);
  const View expected = scenes::renderPlainly(scene);
  for (const int count : {1, 2, 5}) {
    cv::setNumThreads(count);
    EXPECT_TRUE(scenes::shows(scene, expected)) << count << " threads";
  }
  cv::setNumThreads(threads);
}

TEST(CorrectedImageRandom, ConcurrentCallsGiveTheSameBytes) {
  constexpr std::size_t kCallers = 4;
  std::vector<Scene> scenes;
  std::vector<View> expected;
  for (std::size_t i = 0; i < kCallers; ++i) {
    scenes.push_back(largeScene(20 + i, i % 2 == 0 ? 8 : 24));
    expected.push_back(scenes::renderPlainly(scenes.back()));
  }
  std::vector<int> wrong(kCallers, 0);
  std::vector<std::thread> callers;
  for (std::size_t i = 0; i < kCallers; ++i) {
    callers.emplace_back([&, i] {
      for (int round = 0; round < 5; ++round) {
        wrong[i] += scenes::render(SingleCamCorrected, scenes[i]) == expected[i] ? 0 : 1;
      }
    });
  }
  for (std::thread& caller : callers) caller.join();
  EXPECT_EQ(wrong, std::vector<int>(kCallers, 0));
}

}  // namespace
