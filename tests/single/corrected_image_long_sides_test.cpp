// Frames and views with a side beyond the 32767 pixels that the image library's remap takes,
// against the steps written out, on every instruction set.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
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

// --- the steps ---

struct Maps {
  explicit Maps(const Scene& scene) {
    const FishEyeCalibrationParam& p = scene.param;
    const cv::Mat K = (cv::Mat_<double>(3, 3) << p.fx, p.skewness, p.u0, 0, p.fy, p.v0, 0, 0, 1);
    const cv::Mat D = (cv::Mat_<double>(2, 1) << p.k0, p.k1);
    plain::undistortRectifyMap(K, D, cv::Mat(), K, scene.view, whole, fraction);
  }

  cv::Mat whole;
  cv::Mat fraction;
};

// The mean of four bytes, weighted by the fractions at view pixel (x, y).
int mean(const Maps& maps, int x, int y, const std::function<int(int, int)>& P) {
  const auto at = maps.whole.at<cv::Vec2s>(y, x);
  const int fraction = maps.fraction.at<std::uint16_t>(y, x);
  const int a = fraction % 32;
  const int b = fraction / 32;
  const int upper = (32 - a) * P(at[0], at[1]) + a * P(at[0] + 1, at[1]);
  const int lower = (32 - a) * P(at[0], at[1] + 1) + a * P(at[0] + 1, at[1] + 1);
  return ((32 - b) * upper + b * lower + 512) / 1024;
}

struct Images {
  cv::Mat picture;
  cv::Mat mask;
};

Images undistorted(const Scene& scene, const cv::Mat& frame) {
  const Maps maps(scene);
  const int bytes = frame.channels();
  Images images{cv::Mat(scene.view, frame.type(), cv::Scalar::all(0)),
                cv::Mat(scene.view, CV_8UC1)};
  const cv::Rect all(0, 0, frame.cols, frame.rows);
  for (int y = 0; y < scene.view.height; ++y) {
    for (int x = 0; x < scene.view.width; ++x) {
      const auto outside = [&](int i, int j) { return all.contains({i, j}) ? 0 : 255; };
      images.mask.at<unsigned char>(y, x) = mean(maps, x, y, outside) > 127 ? 255 : 0;
      const auto at = maps.whole.at<cv::Vec2s>(y, x);
      if (!all.contains({at[0], at[1]}) || !all.contains({at[0] + 1, at[1] + 1})) continue;
      for (int c = 0; c < bytes; ++c) {
        const auto P = [&](int i, int j) { return int{frame.ptr(j, i)[c]}; };
        images.picture.ptr(y, x)[c] = static_cast<unsigned char>(mean(maps, x, y, P));
      }
    }
  }
  return images;
}

struct Output {
  Bytes view;
  Bytes mask;

  explicit Output(const Scene& scene, int bitCount)
      : view(static_cast<std::size_t>(scene.view.area()) * static_cast<std::size_t>(bitCount / 8)),
        mask(static_cast<std::size_t>(scene.view.area())) {}
};

Output plainOutput(const Scene& scene, const Bytes& frame, int bitCount) {
  const FishEyeCalibrationParam& p = scene.param;
  const Images images = undistorted(
      scene, plain::imageOfBuffer(frame.data(), scene.frame.width, scene.frame.height, bitCount));
  const cv::Mat H =
      (cv::Mat_<double>(3, 3) << p.p1, p.p2, p.p3, p.p4, p.p5, p.p6, p.p7, p.p8, p.p9);
  const cv::Mat Hinv = H.inv(cv::DECOMP_LU);
  Output output(scene, bitCount);
  const auto warped = [&](const cv::Mat& image, unsigned char fill) {
    return plain::warpByInverseHomography(image, Hinv, p.ImageDx, p.ImageDy, fill);
  };
  plain::storeInBuffer(warped(images.picture, 0), output.view.data());
  plain::storeInBuffer(warped(images.mask, 255), output.mask.data());
  return output;
}

// --- comparison ---

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
