// Positions asked for in any order are those of the maps.
#include "rendering/exact_positions.h"

#include <gtest/gtest.h>

#include <algorithm>
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

INSTANTIATE_TEST_SUITE_P(Views, PositionsInAnyOrder,
                         testing::Values(View{0, {700, 30}}, View{2.5, {700, 30}},
                                         View{-30, {150, 90}}, View{0, {30000, 2}},
                                         View{1.5, {30000, 2}}));

}  // namespace
