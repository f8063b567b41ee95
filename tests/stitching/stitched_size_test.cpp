#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <limits>
#include <new>

#include "fisheye_calibration.h"
#include "registration/debug_drive.h"
#include "stitching/rigs.h"

namespace {

// Two equal cameras of one scale. A point at (u, v) of the first view is at (u + dx, v + dy) of the
// second.
rigs::Rig shifted(int width, int height, float dx, float dy) {
  rigs::Rig rig{rigs::flatCamera(width, height, 8, 1), rigs::flatCamera(width, height, 8, 1)};
  rig.second.param.DatumPtXw = -dx;
  rig.second.param.DatumPtYw = -dy;
  rig.first.points = rig.second.points = rigs::corners(16, 32, 144, 96);
  return rig;
}

class StitchedSize : public DebugDriveTest {
 protected:
  static void expectSize(const rigs::Rig& rig, int width, int height) {
    const rigs::Size size = rigs::sizeOf(rig);
    EXPECT_TRUE(size.result);
    EXPECT_EQ(size.width, width);
    EXPECT_EQ(size.height, height);
  }
};

TEST_F(StitchedSize, HoldsTheSecondRectangleAndItsTransformedImage) {
  expectSize(shifted(640, 480, 100, 0), 1380, 960);
}

TEST_F(StitchedSize, IsRoundedUpToAMultipleOfFour) {
  expectSize(shifted(640, 480, 101, 0), 1384, 960);
  expectSize(shifted(640, 480, 0, 1), 1280, 964);
  expectSize(shifted(640, 480, 104, 4), 1384, 964);
}

TEST_F(StitchedSize, MappedCornersAreTruncatedAfterAddingHalf) {
  // -77.4 + 0.5 is cut to -76, so the width is 1280 + 76 and not 1280 + 77, which would give 1360.
  expectSize(shifted(640, 480, -77.4F, 0), 1356, 960);
  expectSize(shifted(640, 480, 0, -77.4F), 1280, 1036);
  // 1280 + 100.6 + 0.5 = 1381.1
  expectSize(shifted(640, 480, 100.6F, 0), 1384, 960);
}

TEST_F(StitchedSize, UsesTheFirstCamerasHalvesForBothCameras) {
  rigs::Rig rig{rigs::flatCamera(640, 480, 8, 1), rigs::flatCamera(320, 240, 8, 1)};
  rig.first.points = rig.second.points = rigs::corners(16, 32, 144, 96);
  expectSize(rig, 640, 480);  // with its own halves the second would be moved by (-320, -240)
}

TEST_F(StitchedSize, BitsAreTheFirstCameras) {
  rigs::Rig rig = shifted(8, 6, 0, 0);
  for (const int bits : {24, 8, 32, 16, 0, -3}) {
    rig.first.bits = bits;
    rig.first.image.assign(8 * 6 * 4, 1);
    for (const int other : {8, 24}) {
      rig.second.bits = other;
      rig.second.image.assign(8 * 6 * 4, 1);
      EXPECT_EQ(rigs::sizeOf(rig).bits, bits);
    }
  }
}

// Without a size, which keeps what it was.
void expectOnlyBits(const rigs::Size& size) {
  EXPECT_FALSE(size.result);
  EXPECT_EQ(size.width, -7);
  EXPECT_EQ(size.height, -7);
  EXPECT_EQ(size.bits, 8);
}

TEST_F(StitchedSize, WithoutASharedPointOnlyTheBitsAreSet) {
  rigs::Rig rig = shifted(8, 6, 0, 0);
  for (CalibrationPoint& point : rig.second.points) point.PointId += 4;
  expectOnlyBits(rigs::sizeOf(rig));
}

TEST_F(StitchedSize, WithoutPointsOnlyTheBitsAreSet) {
  rigs::Rig rig = shifted(8, 6, 0, 0);
  rig.first.points.clear();
  rig.second.points.clear();
  expectOnlyBits(rigs::sizeOf(rig));
}

TEST_F(StitchedSize, ListsThatDoNotPairOnlySetTheBits) {
  rigs::Rig rig = shifted(8, 6, 0, 0);
  rig.first.points[3].PointId = 5;
  rig.first.points.push_back(rig.first.points[3]);  // twice in one list
  rig.second.points.pop_back();
  expectOnlyBits(rigs::sizeOf(rig));
}

TEST_F(StitchedSize, DegenerateCornersGiveSomeMultipleOfFour) {
  std::vector<std::vector<CalibrationPoint>> lists = {
      rigs::corners(50, 50, 50, 50), rigs::corners(0, 50, 100, 50), rigs::corners(0, 0, 0, 90)};
  lists.push_back({rigs::corners(0, 0, 9, 9)[0]});
  for (const auto& points : lists) {
    rigs::Rig rig = shifted(8, 6, 3, 2);
    rig.first.points = rig.second.points = points;
    const rigs::Size size = rigs::sizeOf(rig);
    EXPECT_TRUE(size.result);
    EXPECT_GE(size.width, 16);
    EXPECT_GE(size.height, 12);
    EXPECT_EQ(size.width % 4, 0);
    EXPECT_EQ(size.height % 4, 0);
  }
}

// If the transform is NaN, only the second view's own rectangle is known.
TEST_F(StitchedSize, ANanTransformLeavesTheSecondRectangle) {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  for (const float pixel : {0.0F, nan}) {
    rigs::Rig rig = shifted(9, 7, 3, 2);
    rig.second.param.Pixel = pixel;
    expectSize(rig, 20, 16);  // 18 x 14 rounded up
  }
  rigs::Rig rig = shifted(9, 7, 3, 2);
  rig.first.param.DatumPtXw = nan;
  expectSize(rig, 20, 16);
}

TEST_F(StitchedSize, SizesBeyond32BitsSaturate) {
  rigs::Rig rig = shifted(640, 480, 0, 0);
  rig.first.points = rig.second.points = rigs::corners(100, 100, 9000, 9000);
  rig.first.param.Pixel = 16;
  rig.second.param.Pixel = 1e-9F;
  expectSize(rig, 2147483644, 2147483644);
  rig.second.param.Pixel = 1e-25F;
  expectSize(rig, 2147483644, 2147483644);
}

TEST_F(StitchedSize, NonPositiveSizesAreAccepted) {
  rigs::Rig rig = shifted(640, 480, 100, 0);
  rig.second.width = rig.second.height = 0;
  expectSize(rig, 100, 0);
  rig.first.width = rig.first.height = -5;
  rig.second.width = rig.second.height = -6;
  expectSize(rig, 112, 12);  // -12...0 and 88...100
}

TEST_F(StitchedSize, BuffersBeyond31BitsRaiseTheAllocationError) {
  constexpr int highest = std::numeric_limits<int>::max();
  struct Case {
    int width, height, bits;
  };
  for (const Case& c : {Case{23171, 23171, 8}, Case{highest, highest, 8}, Case{highest, 1, 8},
                        Case{14000, 14000, 24}, Case{100, 100, highest}}) {
    for (const bool isFirst : {true, false}) {
      rigs::Rig rig = shifted(8, 6, 0, 0);
      plain::StitchCamera& camera = isFirst ? rig.first : rig.second;
      camera.width = c.width;
      camera.height = c.height;
      camera.bits = c.bits;
      EXPECT_THROW(rigs::sizeOf(rig), std::bad_alloc) << c.width << " x " << c.height;
    }
  }
}

TEST_F(StitchedSize, EqualsThePlainSizeForRandomRigs) {
  support::Random random(23);
  for (int i = 0; i < 1000; ++i) {
    const rigs::Rig rig = rigs::randomRig(random, 8);
    const cv::Matx33d M = plain::firstToSecond(rig.first, rig.second, false);
    if (cv::norm(M, cv::NORM_INF) > 1e3) continue;  // beyond the plain way's integers
    int width = 0;
    int height = 0;
    plain::stitchedImageSize(rig.first, rig.second, width, height);
    const rigs::Size size = rigs::sizeOf(rig);
    if (width > 1000000 || height > 1000000) continue;
    ASSERT_EQ(size.width, width) << "rig " << i;
    ASSERT_EQ(size.height, height) << "rig " << i;
  }
}

// A frame at an address that must not be read.
bool sizeWithoutFrames(const rigs::Rig& rig, ImageLong& width, ImageLong& height) {
  auto* const nowhere = reinterpret_cast<unsigned char*>(std::uintptr_t{64});
  int bits = 0;
  return ComputeStitchedImageSize(nowhere, rig.first.width, rig.first.height, rig.first.bits,
                                  rig.first.param, rig.first.points, nowhere, rig.second.width,
                                  rig.second.height, rig.second.bits, rig.second.param,
                                  rig.second.points, width, height, bits);
}

#if !defined(_WIN32)  // there the drive is the system's
TEST_F(StitchedSize, WithoutADebugDriveNoFrameIsRead) {
  ImageLong width = 0;
  ImageLong height = 0;
  EXPECT_TRUE(sizeWithoutFrames(shifted(640, 480, 100, 0), width, height));
  EXPECT_EQ(width, 1380);
  EXPECT_EQ(height, 960);
  EXPECT_TRUE(std::filesystem::is_empty("."));
}
#endif

TEST_F(StitchedSize, WhereNoDebugFileCanBeOpenedNoFrameIsRead) {
  if (!makeDebugDrive()) GTEST_SKIP() << "No drive D:";
  for (const char* name : {"D:/LeftCorrectedImage.bmp", "D:/LeftMaskImage.bmp",
                           "D:/RightCorrectedImage.bmp", "D:/RightMaskImage.bmp"}) {
    std::filesystem::create_directories(name);  // a folder in the file's place
  }
  ImageLong width = 0;
  ImageLong height = 0;
  EXPECT_TRUE(sizeWithoutFrames(shifted(640, 480, 100, 0), width, height));
  EXPECT_EQ(width, 1380);
}

}  // namespace
