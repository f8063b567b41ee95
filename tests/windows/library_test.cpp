// What crosses the boundary between host and dynamic library: messages, exceptions, vectors.
#include <gtest/gtest.h>

#include <exception>
#include <filesystem>
#include <string>
#include <vector>

#include "fisheye_calibration.h"
#include "support/message_boxes_windows.h"

namespace {

std::vector<CalibrationPoint> pointsInALine(int count) {
  std::vector<CalibrationPoint> points(static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) {
    CalibrationPoint& point = points[static_cast<std::size_t>(i)];
    point.PointId = i + 1;
    point.Xw = point.ImagePtX = static_cast<float>(10 * i);
  }
  return points;
}

#if FISHEYE_CALIBRATION_UNDER_WINE
// Without it the tests of the debug files would be skipped.
TEST(DebugDrive, Exists) { EXPECT_TRUE(std::filesystem::is_directory("D:/")); }
#endif

TEST(DynamicLibrary, EightPointsShowAMessageBox) {
  std::vector<CalibrationPoint> points = pointsInALine(8);
  FishEyeCalibrationParam camera{};
  double error = -1;
  bool result = true;
  const auto boxes = support::messageBoxesShownBy([&] {
    result = SingleCamCalibration(nullptr, 640, 480, 8, points, 640, 480, camera, error);
  });
  EXPECT_FALSE(result);
  ASSERT_EQ(boxes.size(), 1U);
  EXPECT_EQ(boxes[0].text,
            L"\u7279\u5F81\u70B9\u5C11\u4E8E9\u4E2A\u70B9\uFF0C\u65E0\u6CD5\u5B8C\u6210\u6807\u5B9A"
            L"\uFF01");
  EXPECT_EQ(boxes[0].buttons.size(), 1U);
}

TEST(DynamicLibrary, CropToNoMultipleOfFourShowsAMessageBox) {
  std::vector<unsigned char> pixels(642 * 480);
  DualFishEyeCalibrationParam dual{};
  const auto boxes = support::messageBoxesShownBy([&] {
    DualCam_CroppingImage(pixels.data(), 642, 480, 8, 0, 0, dual, pixels.data(), 642, 480);
  });
  ASSERT_EQ(boxes.size(), 1U);
  EXPECT_EQ(boxes[0].text,
            L"\u88C1\u526A\u540E\u56FE\u50CF\u7684\u957F\u548C\u5BBD\u5FC5\u987B\u662F4\u7684\u6574"
            L"\u6570\u500D\uFF01");
  EXPECT_EQ(boxes[0].buttons.size(), 1U);
}

TEST(DynamicLibrary, ExceptionsReachTheHostAsTheStandardOnes) {
  double value = 0;
  try {
    GetPerspectiveTransformationParam(pointsInALine(3), nullptr, value, value);
    ADD_FAILURE() << "Three points were accepted";
  } catch (const std::exception& failure) {
    EXPECT_NE(std::string(failure.what()).find("getPerspectiveTransform"), std::string::npos)
        << failure.what();
  }
}

TEST(DynamicLibrary, AppendsToVectorsOfTheHost) {
  std::vector<CalibrationPoint> first;
  std::vector<CalibrationPoint> second(1);
  for (int i = 0; i < 100; ++i) {
    GetCommonPoints(pointsInALine(20), pointsInALine(30), 50, first, second);
  }
  ASSERT_EQ(first.size(), 2000U);
  ASSERT_EQ(second.size(), 2001U);
  EXPECT_EQ(first[1999].PointId, 20);
  second.clear();
  second.shrink_to_fit();
}

}  // namespace
