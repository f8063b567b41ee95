#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <filesystem>
#include <opencv2/core.hpp>
#include <vector>

#include "fisheye_calibration.h"
#include "registration/debug_drive.h"

namespace {

// window_check tests everything that needs the window, under a virtual display.
using Perspective = DebugDriveTest;

std::vector<CalibrationPoint> square(std::size_t count) {
  std::vector<CalibrationPoint> points(count);
  for (std::size_t i = 0; i < count; ++i) {
    points[i].ImagePtX = points[i].Xw = i % 2 == 0 ? 0.0f : 1.0f;
    points[i].ImagePtY = points[i].Yw = i < 2 ? 0.0f : 1.0f;
  }
  return points;
}

TEST_F(Perspective, EmptyListReturnsFalseAndWritesNothing) {
  std::array<double, 6> params{1, 2, 3, 4, 5, 6};
  double value1 = 7;
  double value2 = 8;
  EXPECT_FALSE(GetPerspectiveTransformationParam({}, params.data(), value1, value2));
  EXPECT_EQ(params, (std::array<double, 6>{1, 2, 3, 4, 5, 6}));
  EXPECT_EQ(value1, 7);
  EXPECT_EQ(value2, 8);
  EXPECT_TRUE(std::filesystem::is_empty("."));
}

TEST_F(Perspective, OtherNumbersOfPointsThanFourRaiseTheImageLibrarysAssertion) {
  double value1 = 0;
  double value2 = 0;
  for (const std::size_t count : {1u, 2u, 3u, 5u, 9u}) {
    // A list of exactly this capacity: reading a fourth point that is not there is seen by ASan.
    std::vector<CalibrationPoint> points = square(count);
    points.shrink_to_fit();
    try {
      GetPerspectiveTransformationParam(points, nullptr, value1, value2);
      ADD_FAILURE() << count << " points were accepted";
    } catch (const cv::Exception& error) {
      EXPECT_EQ(error.code, cv::Error::StsAssert) << count << " points";
    }
  }
}

TEST_F(Perspective, MissingPictureRaisesTheImageLibrarysException) {
  double value1 = 0;
  double value2 = 0;
  EXPECT_THROW(GetPerspectiveTransformationParam(square(4), nullptr, value1, value2),
               cv::Exception);
}

}  // namespace
