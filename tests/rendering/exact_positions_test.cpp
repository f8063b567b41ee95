// Positions asked for in any order are those of the maps.
#include "rendering/exact_positions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <opencv2/core.hpp>
#include <random>
#include <vector>

#include "fisheye/fisheye.h"

using namespace fisheye_calibration;

namespace {

struct View {
  double skew;
  cv::Size size;
};

class PositionsInAnyOrder : public testing::TestWithParam<View> {};

TEST_P(PositionsInAnyOrder, AreThoseOfTheMaps) {
  const auto [skew, size] = GetParam();
  const lens::Camera camera{210, 190, 0.49 * size.width, 0.52 * size.height, 0.03, -0.01, 0};
  const cv::Matx33d P(200, skew, 0, 0, 205, 0, 0, 0, 1);
  const cv::Matx33d K(camera.fx, 0, camera.cx, 0, camera.fy, camera.cy, 0, 0, 1);
  cv::Mat whole;
  cv::Mat fraction;
  fisheye::initUndistortRectifyMap(K, cv::Vec2d(camera.k0, camera.k1), cv::noArray(), P, size,
                                   CV_16SC2, whole, fraction);
  std::vector<int> pixels(static_cast<std::size_t>(size.area()));
  std::iota(pixels.begin(), pixels.end(), 0);
  std::mt19937 engine(5);
  std::shuffle(pixels.begin(), pixels.end(), engine);

  rendering::ExactPositions positions(
      rendering::rectifyingRays(camera, cv::Matx33d::eye(), P, size), size.width);
  for (const int pixel : pixels) {
    const int column = pixel % size.width;
    const int row = pixel / size.width;
    const rendering::RawPosition p = positions.at(column, row);
    ASSERT_EQ(cv::Vec2s(static_cast<short>(p.u >> 5), static_cast<short>(p.v >> 5)),
              whole.at<cv::Vec2s>(row, column))
        << column << ", " << row;
    ASSERT_EQ((p.v & 31) * 32 + (p.u & 31), fraction.at<std::uint16_t>(row, column))
        << column << ", " << row;
  }
}

// Rays of pixels that lie along a row, along a column, far apart or one behind the other.
TEST_P(PositionsInAnyOrder, OfManyPixelsAreThoseOfEach) {
  const auto [skew, size] = GetParam();
  constexpr int kCount = 32;
  const lens::Camera camera{210, 190, 0.49 * size.width, 0.52 * size.height, 0.03, -0.01, 0};
  const cv::Matx33d P(200, skew, 0, 0, 205, 0, 0, 0, 1);
  const double c = std::cos(0.2);
  const double s = std::sin(0.2);
  std::mt19937 engine(6);
  const auto whole = [&](int low, int high) {
    return std::uniform_int_distribution<int>(low, high)(engine);
  };
  for (const cv::Matx33d& RR : {cv::Matx33d::eye(), cv::Matx33d(c, -s, 0, s, c, 0, 0, 0, 1),
                                cv::Matx33d(c, 0, s, 0, 1, 0, -s, 0, c)}) {
    const rendering::RectifyingRays rays = rendering::rectifyingRays(camera, RR, P, size);
    rendering::ExactPositions together(rays, size.width);
    rendering::ExactPositions single(rays, size.width);
    for (int i = 0; i < 100; ++i) {
      const cv::Point step(whole(-8, 8), i % 2 == 0 ? 0 : whole(-2, 2));
      const cv::Point first(whole(0, size.width - 1), whole(0, size.height - 1));
      int columns[kCount];
      int rows[kCount];
      for (int k = 0; k < kCount; ++k) {
        columns[k] = std::clamp(first.x + k * step.x / 3, 0, size.width - 1);
        rows[k] = std::clamp(first.y + k * step.y / 3, 0, size.height - 1);
      }
      double X[kCount];
      double Y[kCount];
      double W[kCount];
      together.rays(columns, rows, kCount, X, Y, W);
      for (int k = 0; k < kCount; ++k) {
        for (int axis = 0; axis < 3; ++axis) {
          double sum = rows[k] * rays.iR(axis, 1) + rays.iR(axis, 2);
          for (int n = 0; n < columns[k]; ++n) sum += rays.iR(axis, 0);
          ASSERT_EQ((axis == 0 ? X : axis == 1 ? Y : W)[k], sum) << k << ", axis " << axis;
        }
        const rendering::RawPosition one = single.at(columns[k], rows[k]);
        const rendering::RawPosition same = rendering::rawPosition(camera, X[k], Y[k], W[k]);
        ASSERT_EQ(cv::Point(one.u, one.v), cv::Point(same.u, same.v));
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Views, PositionsInAnyOrder,
                         testing::Values(View{0, {700, 30}}, View{2.5, {700, 30}},
                                         View{-30, {150, 90}}, View{0, {30000, 2}},
                                         View{1.5, {30000, 2}}));

}  // namespace
