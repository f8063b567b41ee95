// The C functions on two cameras give the results of the C++ functions and write no debug files.
#include <gtest/gtest.h>

#include <filesystem>

#include "c_api/host_pictures.h"
#include "c_api/records.h"
#include "registration/debug_drive.h"
#include "stitching/rigs.h"
#include "support/dice.h"

using namespace c_api_tests;

namespace {

const RowLayout& someLayout(support::Dice& dice) {
  return kRowLayouts[static_cast<std::size_t>(
      dice.whole(0, static_cast<int>(kRowLayouts.size()) - 1))];
}

// One camera with its records and its frame in some layout.
class HostCamera {
 public:
  HostCamera(const plain::StitchCamera& camera, const RowLayout& layout)
      : picture_(camera.width, camera.height, camera.bits, layout),
        camera_(cameraOf(camera.param)),
        points_(pointsOf(camera.points)) {
    picture_.fill(camera.image);
  }

  fcal_rig_view view() const {
    return {*picture_.image(), &camera_, points_.data(), countOf(points_)};
  }
  bool isGuardIntact() const { return picture_.isGuardIntact(); }

 private:
  HostPicture picture_;
  fcal_camera camera_;
  std::vector<fcal_point> points_;
};

TEST(CStitching, EveryRowLayoutGivesTheBytesAndTheRecordOfTheCxxFunction) {
  support::Dice dice(21);
  constexpr int kAllBits[] = {8, 24, 32};
  for (int run = 0; run < 300; ++run) {
    const int bits = kAllBits[run % 3];
    const rigs::Rig rig = rigs::randomRig(dice, bits);
    const int width = dice.whole(1, 120);
    const int height = dice.whole(1, 80);
    const rigs::Stitched expected = rigs::stitch(rig, width, height, bits, 7);
    ASSERT_TRUE(expected.result);
    const HostCamera first(rig.first, someLayout(dice));
    const HostCamera second(rig.second, someLayout(dice));
    const fcal_rig_view firstView = first.view();
    const fcal_rig_view secondView = second.view();
    HostPicture canvas(width, height, bits, someLayout(dice), 7);
    fcal_dual dual{};
    ASSERT_TRUE(succeeds(fcal_stitch(&firstView, &secondView, canvas.image(), &dual)));
    ASSERT_EQ(canvas.content(), expected.canvas) << run;
    ASSERT_TRUE(equalBytes(dual, expected.dual)) << run;
    ASSERT_TRUE(canvas.isGuardIntact() && first.isGuardIntact() && second.isGuardIntact());
  }
}

TEST(CStitching, TheCanvasMayOverwriteAFrame) {
  support::Dice dice(22);
  for (int run = 0; run < 30; ++run) {
    const rigs::Rig rig = rigs::randomRig(dice, 24);
    const rigs::Stitched expected = rigs::stitch(rig, rig.first.width, rig.first.height, 24, 7);
    const HostCamera second(rig.second, someLayout(dice));
    const fcal_rig_view secondView = second.view();
    HostPicture shared(rig.first.width, rig.first.height, 24, someLayout(dice));
    shared.fill(rig.first.image);
    const fcal_camera camera = cameraOf(rig.first.param);
    const std::vector<fcal_point> points = pointsOf(rig.first.points);
    const fcal_rig_view firstView{*shared.image(), &camera, points.data(), countOf(points)};
    fcal_dual dual{};
    ASSERT_TRUE(succeeds(fcal_stitch(&firstView, &secondView, shared.image(), &dual)));
    // Pixels without content keep the frame's value.
    Bytes result = expected.canvas;
    const rigs::Stitched marked = rigs::stitch(rig, rig.first.width, rig.first.height, 24, 8);
    for (std::size_t i = 0; i < result.size(); ++i) {
      if (result[i] != marked.canvas[i]) {
        result[i] = rig.first.image[i];
      }
    }
    ASSERT_EQ(shared.content(), result) << run;
  }
}

TEST(CStitchedSize, IsThatOfTheCxxFunctionAndNeedsNoPixels) {
  support::Dice dice(23);
  for (int run = 0; run < 100; ++run) {
    const rigs::Rig rig = rigs::randomRig(dice, 8);
    const rigs::Size expected = rigs::sizeOf(rig);
    const HostCamera first(rig.first, kRowLayouts[0]);
    const HostCamera second(rig.second, kRowLayouts[0]);
    fcal_rig_view firstView = first.view();
    fcal_rig_view secondView = second.view();
    if (run % 2 == 0) {
      firstView.frame.data = nullptr;
      secondView.frame.data = nullptr;
    }
    int32_t width = -1;
    int32_t height = -1;
    ASSERT_TRUE(succeeds(fcal_stitched_size(&firstView, &secondView, &width, &height)));
    ASSERT_EQ(width, expected.width);
    ASSERT_EQ(height, expected.height);
  }
}

TEST(CStitching, CamerasWithoutCommonPointsHaveNoResult) {
  support::Dice dice(24);
  rigs::Rig rig = rigs::randomRig(dice, 8);
  rig.second.points.clear();
  const HostCamera first(rig.first, kRowLayouts[0]);
  const HostCamera second(rig.second, kRowLayouts[0]);
  const fcal_rig_view firstView = first.view();
  const fcal_rig_view secondView = second.view();
  HostPicture canvas(40, 40, 8, kRowLayouts[0], 7);
  fcal_dual dual{1, 2, 3, 4, 5, 6, 7};
  const fcal_dual before = dual;
  const char* const text = "points: the cameras share none, or they do not pair";
  EXPECT_TRUE(fails(fcal_stitch(&firstView, &secondView, canvas.image(), &dual), FCAL_FALSE, text));
  EXPECT_EQ(canvas.content(), Bytes(1600, 7));
  EXPECT_TRUE(equalBytes(dual, before));
  int32_t width = -1;
  int32_t height = -1;
  EXPECT_TRUE(
      fails(fcal_stitched_size(&firstView, &secondView, &width, &height), FCAL_FALSE, text));
  EXPECT_EQ(width, -1);
  EXPECT_EQ(height, -1);
}

TEST(CStitching, ADoubledViewBeyondTheLimitIsNoMemory) {
  support::Dice dice(25);
  const rigs::Rig rig = rigs::randomRig(dice, 8);
  const HostCamera first(rig.first, kRowLayouts[0]);
  const HostCamera second(rig.second, kRowLayouts[0]);
  fcal_rig_view firstView = first.view();
  const fcal_rig_view secondView = second.view();
  firstView.frame = {nullptr, 30000, 30000, 0, 8};
  int32_t width = -1;
  int32_t height = -1;
  EXPECT_TRUE(fails(fcal_stitched_size(&firstView, &secondView, &width, &height), FCAL_NO_MEMORY,
                    "memory: too little, or an image of more than 2^31 - 1 bytes"));
}

class CDebugFiles : public DebugDriveTest {};

TEST_F(CDebugFiles, NoFunctionWritesAny) {
  SKIP_WITHOUT_DEBUG_DRIVE();
  support::Dice dice(26);
  const rigs::Rig rig = rigs::randomRig(dice, 8);
  const HostCamera first(rig.first, kRowLayouts[0]);
  const HostCamera second(rig.second, kRowLayouts[0]);
  const fcal_rig_view firstView = first.view();
  const fcal_rig_view secondView = second.view();
  HostPicture canvas(40, 40, 8, kRowLayouts[0]);
  fcal_dual dual{};
  int32_t width = 0;
  int32_t height = 0;
  ASSERT_TRUE(succeeds(fcal_stitch(&firstView, &secondView, canvas.image(), &dual)));
  ASSERT_TRUE(succeeds(fcal_stitched_size(&firstView, &secondView, &width, &height)));
  double coefficients[6];
  double errors[2];
  ASSERT_TRUE(succeeds(
      fcal_fit_affine(firstView.points, firstView.count, coefficients, &errors[0], &errors[1])));
  for (const char* name :
       {"D:/LeftCorrectedImage.bmp", "D:/LeftMaskImage.bmp", "D:/DImage.bmp",
        "D:/RightCorrectedImage.bmp", "D:/RightMaskImage.bmp", "D:/Affine.txt"}) {
    EXPECT_FALSE(std::filesystem::exists(name)) << name;
  }
  rigs::stitch(rig, 40, 40, 8, 7);  // the C++ function still does
  EXPECT_TRUE(std::filesystem::exists("D:/DImage.bmp"));
  EXPECT_TRUE(std::filesystem::exists("D:/LeftCorrectedImage.bmp"));
}

// ---- common points

std::vector<CalibrationPoint> pointsWithRandomIds(support::Dice& dice) {
  std::vector<CalibrationPoint> points(static_cast<std::size_t>(dice.whole(0, 12)));
  for (CalibrationPoint& point : points) {
    point = {dice.whole(-2, 14), 1, 2, dice.numberF(9), 4, 5, 6, 7, 8, 9, 10, 11};
  }
  return points;
}

TEST(CCommonPoints, AreThoseOfTheCxxFunction) {
  support::Dice dice(27);
  for (int run = 0; run < 300; ++run) {
    const auto first = pointsWithRandomIds(dice);
    const auto second = pointsWithRandomIds(dice);
    const int idCount = dice.whole(-1, 14);
    std::vector<CalibrationPoint> expected[2];
    GetCommonPoints(first, second, idCount, expected[0], expected[1]);
    const auto points1 = pointsOf(first);
    const auto points2 = pointsOf(second);
    std::vector<fcal_point> common1(points1.size());
    std::vector<fcal_point> common2(points2.size());
    int32_t needed1 = -1;
    int32_t needed2 = -1;
    ASSERT_TRUE(succeeds(fcal_common_points(
        points1.data(), countOf(points1), points2.data(), countOf(points2), idCount, common1.data(),
        countOf(common1), &needed1, common2.data(), countOf(common2), &needed2)));
    common1.resize(static_cast<std::size_t>(needed1));
    common2.resize(static_cast<std::size_t>(needed2));
    ASSERT_TRUE(equalBytes(common1, expected[0]));
    ASSERT_TRUE(equalBytes(common2, expected[1]));
  }
}

TEST(CCommonPoints, CountsCanBeAskedForFirst) {
  std::vector<fcal_point> points(3);
  points[0].id = 3;
  points[1].id = 1;
  points[2].id = 2;
  int32_t needed1 = -1;
  int32_t needed2 = -1;
  EXPECT_TRUE(succeeds(fcal_common_points(points.data(), 3, points.data(), 2, 9, nullptr, 0,
                                          &needed1, nullptr, 0, &needed2)));
  EXPECT_EQ(needed1, 2);
  EXPECT_EQ(needed2, 2);
}

TEST(CCommonPoints, TooFewPlacesReceiveNothingButTheCounts) {
  std::vector<fcal_point> points(3);
  points[0].id = 3;
  points[1].id = 1;
  points[2].id = 2;
  std::vector<fcal_point> common(6);
  int32_t needed1 = -1;
  int32_t needed2 = -1;
  EXPECT_TRUE(refuses(fcal_common_points(points.data(), 3, points.data(), 3, 9, common.data(), 3,
                                         &needed1, common.data() + 3, 2, &needed2),
                      "capacity1, capacity2: smaller than needed"));
  EXPECT_EQ(needed1, 3);
  EXPECT_EQ(needed2, 3);
  for (const fcal_point& point : common) {
    EXPECT_EQ(point.id, 0);
  }
}

}  // namespace
