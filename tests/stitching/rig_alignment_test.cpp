#include "stitching/rig_alignment.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "stitching/rigs.h"

using namespace fisheye_calibration;

namespace {

CalibrationPoint point(int id, float Xw, float Yw) {
  CalibrationPoint result{};
  result.PointId = id;
  result.Xw = Xw;
  result.Yw = Yw;
  return result;
}

stitching::CameraInput camera(const plain::StitchCamera& c) {
  return {nullptr, c.width, c.height, c.bits, c.param, c.points};
}

std::optional<stitching::CornerPairs> cornersOf(const std::vector<CalibrationPoint>& first,
                                                const std::vector<CalibrationPoint>& second) {
  const FishEyeCalibrationParam param{};
  return stitching::cornerPairs({nullptr, 1, 1, 8, param, first},
                                {nullptr, 1, 1, 8, param, second});
}

std::vector<cv::Point2f> listed(const std::array<cv::Point2f, 4>& points) {
  return {points.begin(), points.end()};
}

using Points = std::vector<cv::Point2f>;

TEST(CornerPairs, AreNearestToTheCornersOfTheSharedPointsBox) {
  // Ids 3...6 are shared; their box is 10...90 x 20...70. Id 1 and 2 would stretch it.
  const auto pairs = cornersOf(
      {point(1, 1, 1), point(6, 85, 70), point(3, 10, 25), point(4, 90, 20), point(5, 15, 66)},
      {point(3, 11, 26), point(4, 91, 21), point(5, 16, 67), point(6, 86, 71), point(2, 500, 500)});
  ASSERT_TRUE(pairs);
  EXPECT_EQ(listed(pairs->first), (Points{{10, 25}, {90, 20}, {15, 66}, {85, 70}}));
  EXPECT_EQ(listed(pairs->second), (Points{{11, 26}, {91, 21}, {16, 67}, {86, 71}}));
}

TEST(CornerPairs, OfEquallyNearPointsTheEarliestIsTaken) {
  // (0, 3) and (3, 0) are both 3 from the box's top-left corner (0, 0); so are (9, 3) and (6, 0)
  // from the top-right one, and so on.
  const std::vector<CalibrationPoint> points = {point(1, 3, 0), point(2, 0, 3), point(3, 9, 3),
                                                point(4, 6, 0), point(5, 0, 6), point(6, 3, 9),
                                                point(7, 6, 9), point(8, 9, 6)};
  const auto pairs = cornersOf(points, points);
  ASSERT_TRUE(pairs);
  EXPECT_EQ(listed(pairs->first), (Points{{3, 0}, {9, 3}, {0, 6}, {6, 9}}));
}

TEST(CornerPairs, OnePointServesAllCorners) {
  const auto pairs = cornersOf({point(1, 40, 50)}, {point(1, 41, 51)});
  ASSERT_TRUE(pairs);
  EXPECT_EQ(listed(pairs->first), Points(4, {40, 50}));
  EXPECT_EQ(listed(pairs->second), Points(4, {41, 51}));
}

// The box starts at 10000 and 0, so points left of 0 lie within one that reaches to 0.
TEST(CornerPairs, TheBoxOfNegativePointsReachesToZero) {
  const auto pairs = cornersOf({point(1, -100, -1), point(2, -60, -100), point(3, -50, -300)},
                               {point(1, 0, 0), point(2, 0, 0), point(3, 0, 0)});
  ASSERT_TRUE(pairs);
  // Corners (-100, -300), (0, -300), (-100, 0), (0, 0). To the last one 100.005, 116.6 and 304.1.
  EXPECT_EQ(listed(pairs->first), (Points{{-50, -300}, {-50, -300}, {-100, -1}, {-100, -1}}));
}

// If all points are farther than 10000 from a corner, the first one is taken.
TEST(CornerPairs, PointsFarBeyondTheBedLeaveTheFirstOne) {
  const auto pairs = cornersOf({point(1, 30000, 5), point(2, 20000, 5), point(3, 30000, 0)},
                               {point(1, 0, 0), point(2, 0, 0), point(3, 0, 0)});
  ASSERT_TRUE(pairs);
  EXPECT_EQ(listed(pairs->first), (Points{{30000, 5}, {30000, 0}, {30000, 5}, {30000, 5}}));
}

TEST(CornerPairs, NanCoordinatesAreNeverNearest) {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  const auto pairs = cornersOf({point(1, 5, 5), point(2, nan, 1), point(3, 8, 8)},
                               {point(1, 0, 0), point(2, 0, 0), point(3, 0, 0)});
  ASSERT_TRUE(pairs);
  EXPECT_EQ(listed(pairs->first), (Points{{5, 5}, {5, 5}, {5, 5}, {8, 8}}));
}

TEST(CornerPairs, ListsThatShareNothingOrDoNotPairGiveNone) {
  EXPECT_FALSE(cornersOf({}, {}));
  EXPECT_FALSE(cornersOf({point(1, 0, 0)}, {point(2, 0, 0)}));
  EXPECT_FALSE(cornersOf({point(1, 0, 0), point(1, 1, 1)}, {}));
  EXPECT_FALSE(cornersOf({point(1, 0, 0), point(1, 1, 1), point(2, 3, 3)}, {point(2, 0, 0)}));
  EXPECT_FALSE(cornersOf({point(0, 0, 0)}, {point(0, 0, 0)}));
  EXPECT_FALSE(cornersOf({point(3, 0, 0)}, {point(3, 0, 0)}));  // beyond the lists' joint length
}

TEST(ViewPixel, TheQuotientIsA32BitFloat) {
  FishEyeCalibrationParam param{};
  param.DatumPtXw = 7.3F;
  param.Pixel = 0.3F;
  // All in double it would be 708.66668...
  EXPECT_EQ(stitching::viewPixel({27.9F, 0}, param, {640, 480}, {}).x, 708.6666259765625F);
}

TEST(ViewPixel, AMirroredRowIsNarrowedOnlyAtTheEnd) {
  FishEyeCalibrationParam param{};
  param.Pixel = 0.3F;
  // Narrowed before it is mirrored it would be 446.66668...
  EXPECT_EQ(stitching::viewPixel({0, 9.7F}, param, {640, 480}, 959).y, 446.6666564941406F);
}

void expectNear(const cv::Matx33d& M, const cv::Matx33d& expected) {
  EXPECT_LT(cv::norm(M - expected, cv::NORM_INF), 1e-9) << M << "\nand not\n" << expected;
}

cv::Matx33d shift(double dx, double dy) { return {1, 0, dx, 0, 1, dy, 0, 0, 1}; }

TEST(RigAlignment, TheFirstCamerasHalvesCentreBothCamerasPoints) {
  auto first = rigs::flatCamera(640, 480, 8, 0);
  auto second = rigs::flatCamera(320, 240, 8, 0);
  first.points = second.points = rigs::corners(10, 20, 110, 90);
  const auto pairs = stitching::cornerPairs(camera(first), camera(second));
  expectNear(
      stitching::firstToSecond(*pairs, camera(first), camera(second), stitching::Rows::kPicture),
      cv::Matx33d::eye());
}

TEST(RigAlignment, BufferRowsAreMirroredAtEachViewsOwnHeight) {
  auto first = rigs::flatCamera(640, 480, 8, 0);
  auto second = rigs::flatCamera(320, 240, 8, 0);
  first.points = second.points = rigs::corners(10, 20, 110, 90);
  const auto pairs = stitching::cornerPairs(camera(first), camera(second));
  // v1 = 959 - (Y + 480) and v2 = 479 - (Y + 480).
  expectNear(
      stitching::firstToSecond(*pairs, camera(first), camera(second), stitching::Rows::kBuffer),
      shift(0, -480));
}

TEST(RigAlignment, DatumAndPixelSizeSetTheTransform) {
  auto first = rigs::flatCamera(100, 50, 8, 0);
  auto second = rigs::flatCamera(100, 50, 8, 0);
  first.points = second.points = rigs::corners(10, 20, 110, 90);
  first.param.Pixel = 0.5F;
  first.param.DatumPtXw = 30;
  second.param.Pixel = 0.25F;
  second.param.DatumPtYw = 7;
  const auto pairs = stitching::cornerPairs(camera(first), camera(second));
  // u1 = (X - 30)/0.5 + 100 and u2 = X/0.25 + 100: u2 = 2 u1 + 20. v1 = Y/0.5 + 50 and
  // v2 = (Y - 7)/0.25 + 50: v2 = 2 v1 - 78.
  expectNear(
      stitching::firstToSecond(*pairs, camera(first), camera(second), stitching::Rows::kPicture),
      {2, 0, 20, 0, 2, -78, 0, 0, 1});
  // Mirrored at 99: 99 - (2 (99 - v1) - 78) = 2 v1 - 21.
  expectNear(
      stitching::firstToSecond(*pairs, camera(first), camera(second), stitching::Rows::kBuffer),
      {2, 0, 20, 0, 2, -21, 0, 0, 1});
}

TEST(RigAlignment, EqualsThePlainTransformToTheBit) {
  support::Random random(17);
  for (int i = 0; i < 500; ++i) {
    const rigs::Rig rig = rigs::randomRig(random, 8);
    const auto pairs = stitching::cornerPairs(camera(rig.first), camera(rig.second));
    for (const bool buffer : {false, true}) {
      const cv::Matx33d M =
          stitching::firstToSecond(*pairs, camera(rig.first), camera(rig.second),
                                   buffer ? stitching::Rows::kBuffer : stitching::Rows::kPicture);
      ASSERT_EQ(M, plain::firstToSecond(rig.first, rig.second, buffer)) << "rig " << i;
    }
  }
}

}  // namespace
