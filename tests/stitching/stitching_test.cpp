#include <gtest/gtest.h>

#include <limits>
#include <new>
#include <opencv2/core/utility.hpp>

#include "fisheye_calibration.h"
#include "registration/debug_drive.h"
#include "stitching/rigs.h"
#include "support/instruction_sets.h"
#include "support/scene_factor.h"

namespace {

using Bytes = std::vector<unsigned char>;

// Two flat cameras of 8 x 6 pixels: each doubled view has 16 x 12 pixels and shows the frame in
// columns 4...11 and rows 3...8. The second view lies `step` columns to the right.
rigs::Rig flatRig(int bits, float step) {
  rigs::Rig rig{rigs::flatCamera(8, 6, bits, 100), rigs::flatCamera(8, 6, bits, 200)};
  rig.second.param.DatumPtXw = step;
  rig.first.points = rig.second.points = rigs::corners(0, 0, 64, 32);
  return rig;
}

class Stitching : public DebugDriveTest {};

TEST_F(Stitching, JoinsTwoFlatViewsWithARamp) {
  const auto out = rigs::stitch(flatRig(8, 4), 24, 12, 8, 1);
  ASSERT_TRUE(out.result);
  // The first view's content is in columns 4...11; the second's is 4 to the right, 8...15. The
  // ramp runs from column 8 to the seam 11: t = 1, 2/3, 1/3, 0.
  const Bytes row(out.canvas.begin() + 5 * 24, out.canvas.begin() + 6 * 24);
  EXPECT_EQ(row, (Bytes{1,   1,   1,   1,   100, 100, 100, 100, 100, 132, 166, 200,
                        200, 200, 200, 200, 1,   1,   1,   1,   1,   1,   1,   1}));
  EXPECT_EQ(Bytes(out.canvas.begin(), out.canvas.begin() + 24), Bytes(24, 1));
}

TEST_F(Stitching, DescribesTheCanvasByTheFirstCamera) {
  rigs::Rig rig{rigs::flatCamera(640, 480, 8, 1), rigs::flatCamera(640, 480, 8, 1)};
  rig.first.points = rig.second.points = rigs::corners(0, 0, 64, 32);
  rig.first.param.Pixel = 0.5F;
  rig.first.param.DatumPtXw = 12.5F;
  rig.first.param.DatumPtYw = -3.25F;
  const auto out = rigs::stitch(rig, 1380, 960, 8, 0);
  EXPECT_TRUE(out.result);
  EXPECT_TRUE(rigs::same(out.dual, {0.5F, 1380, 960, 640, 480, 12.5F, -3.25F}));
  // offsetY = 100 and -100.
  EXPECT_EQ(rigs::stitch(rig, 1380, 1160, 8, 0).dual.DatumImagePtY, 580);
  EXPECT_EQ(rigs::stitch(rig, 1380, 760, 8, 0).dual.DatumImagePtY, 380);
  // (957 - 960)/2 = -1.5 is cut to -1.
  EXPECT_EQ(rigs::stitch(rig, 4, 957, 8, 0).dual.DatumImagePtY, 479);
}

TEST_F(Stitching, EqualsThePlainCanvasForRandomRigsOnEveryInstructionSet) {
#if defined(_WIN32)
  constexpr int kRigs = 600;  // each writes five debug files
#else
  constexpr int kRigs = 600 * support::kSceneFactor;
#endif
  support::Random random(31);
  int written = 0;
  for (int i = 0; i < kRigs; ++i) {
    const int bits = i % 3 == 0 ? 8 : i % 3 == 1 ? 24 : 32;
    const rigs::Rig rig = rigs::randomRig(random, bits);
    const int width = rigs::whole(random, 1, 200);
    const int height = rigs::whole(random, 1, 90);
    const auto fill = static_cast<unsigned char>(i);
    const auto plainly = rigs::stitchPlainly(rig, width, height, bits, fill);
    support::onEveryInstructionSet([&] {
      const auto ours = rigs::stitch(rig, width, height, bits, fill);
      ASSERT_TRUE(ours.result);
      ASSERT_EQ(ours.canvas, plainly.canvas) << "rig " << i;
      ASSERT_TRUE(rigs::same(ours.dual, plainly.dual)) << "rig " << i;
    });
    if (HasFatalFailure()) return;
    if (plainly.canvas != Bytes(plainly.canvas.size(), fill)) ++written;
  }
  EXPECT_GT(written, kRigs * 5 / 6);  // most rigs show something
}

TEST_F(Stitching, BytesDoNotDependOnTheNumberOfThreads) {
  const int before = cv::getNumThreads();
  support::Random random(37);
  for (int i = 0; i < 20; ++i) {
    const rigs::Rig rig = rigs::randomRig(random, 24);
    const Bytes expected = rigs::stitchPlainly(rig, 150, 80, 24, 3).canvas;
    for (const int threads : {1, 2, 5}) {
      cv::setNumThreads(threads);
      ASSERT_EQ(rigs::stitch(rig, 150, 80, 24, 3).canvas, expected) << threads << " threads";
    }
  }
  cv::setNumThreads(before);
}

TEST_F(Stitching, OtherBitCountsWriteOnlyTheRecord) {
  for (const int bits : {16, 1, 12}) {
    rigs::Rig rig = flatRig(32, 4);
    rig.first.bits = rig.second.bits = bits;
    const auto out = rigs::stitch(rig, 24, 12, bits, 9);
    EXPECT_TRUE(out.result);
    EXPECT_EQ(out.canvas, Bytes(out.canvas.size(), 9)) << bits;
    EXPECT_EQ(out.dual.StdImageWidth, 24);
  }
}

TEST_F(Stitching, BitCountsThatDifferFromTheCanvasWriteNoPixel) {
  for (const int bits : {8, 24, 32}) {
    for (const bool firstDiffers : {true, false}) {
      rigs::Rig rig = flatRig(bits, 4);
      (firstDiffers ? rig.first : rig.second) = rigs::flatCamera(8, 6, bits == 8 ? 24 : 8, 50);
      rig.first.points = rig.second.points = rigs::corners(0, 0, 64, 32);
      const auto out = rigs::stitch(rig, 24, 12, bits, 9);
      EXPECT_TRUE(out.result);
      EXPECT_EQ(out.canvas, Bytes(out.canvas.size(), 9));
      EXPECT_EQ(out.dual.StdImageHeight, 12);
    }
  }
}

TEST_F(Stitching, WithoutASharedPointNothingIsTouched) {
  rigs::Rig rig = flatRig(8, 4);
  for (CalibrationPoint& point : rig.second.points) point.PointId += 4;
  const auto none = rigs::stitch(rig, 24, 12, 8, 9);
  rig = flatRig(8, 4);
  rig.first.points.push_back(rig.first.points[0]);
  rig.first.points.back().PointId = 5;
  rig.first.points.push_back(rig.first.points.back());
  const auto unpaired = rigs::stitch(rig, 24, 12, 8, 9);
  rig = flatRig(8, 4);
  rig.first.points.clear();
  rig.second.points.clear();
  const auto empty = rigs::stitch(rig, 24, 12, 8, 9);
  for (const auto& out : {none, unpaired, empty}) {
    EXPECT_FALSE(out.result);
    EXPECT_EQ(out.canvas, Bytes(24 * 12, 9));
    EXPECT_TRUE(rigs::same(out.dual, {}));
  }
}

TEST_F(Stitching, ACameraWithoutAPictureContributesNothing) {
  rigs::Rig rig = flatRig(8, 4);
  const Bytes both = rigs::stitch(rig, 24, 12, 8, 1).canvas;
  rig.first.image.clear();  // a null pointer
  const Bytes second = rigs::stitch(rig, 24, 12, 8, 1).canvas;
  EXPECT_EQ(Bytes(second.begin() + 5 * 24, second.begin() + 6 * 24),
            (Bytes{1,   1,   1,   1,   1, 1, 1, 1, 200, 200, 200, 200,
                   200, 200, 200, 200, 1, 1, 1, 1, 1,   1,   1,   1}));
  rig = flatRig(8, 4);
  rig.second.image.assign(48, 0);  // black
  const Bytes first = rigs::stitch(rig, 24, 12, 8, 1).canvas;
  EXPECT_EQ(Bytes(first.begin() + 5 * 24, first.begin() + 6 * 24),
            (Bytes{1, 1, 1, 1, 100, 100, 100, 100, 100, 100, 100, 100,
                   1, 1, 1, 1, 1,   1,   1,   1,   1,   1,   1,   1}));
  rig.first.image.assign(48, 0);
  const auto none = rigs::stitch(rig, 24, 12, 8, 1);
  EXPECT_TRUE(none.result);
  EXPECT_EQ(none.canvas, Bytes(24 * 12, 1));
  EXPECT_EQ(none.dual.StdImageWidth, 24);
  EXPECT_NE(both, first);
}

TEST_F(Stitching, DegenerateCornersStayInsideTheBuffers) {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  const float infinity = std::numeric_limits<float>::infinity();
  std::vector<rigs::Rig> rigsToTry;
  for (const auto& points : {rigs::corners(50, 50, 50, 50), rigs::corners(0, 50, 100, 50),
                             rigs::corners(0, 0, 0, 90), rigs::corners(0, nan, 50, 50)}) {
    rigsToTry.push_back(flatRig(24, 4));
    rigsToTry.back().first.points = points;
    rigsToTry.push_back(flatRig(24, 4));
    rigsToTry.back().second.points = points;
    rigsToTry.push_back(flatRig(24, 4));
    rigsToTry.back().first.points = rigsToTry.back().second.points = points;
  }
  for (const float pixel : {0.0F, nan, infinity, 1e-38F, 1e38F, -1.0F}) {
    rigsToTry.push_back(flatRig(24, 4));
    rigsToTry.back().first.param.Pixel = pixel;
    rigsToTry.push_back(flatRig(24, 4));
    rigsToTry.back().second.param.Pixel = pixel;
  }
  for (std::size_t i = 0; i < rigsToTry.size(); ++i) {
    const auto ours = rigs::stitch(rigsToTry[i], 24, 14, 24, 9);
    EXPECT_TRUE(ours.result);
    EXPECT_EQ(ours.canvas, rigs::stitchPlainly(rigsToTry[i], 24, 14, 24, 9).canvas) << i;
  }
}

TEST_F(Stitching, ANullCanvasOnlyFillsTheRecord) {
  rigs::Rig rig = flatRig(8, 4);
  DualFishEyeCalibrationParam dual{};
  EXPECT_TRUE(FishEyeImageStitching(rig.first.image.data(), 8, 6, 8, rig.first.param,
                                    rig.first.points, rig.second.image.data(), 8, 6, 8,
                                    rig.second.param, rig.second.points, nullptr, 24, 12, 8, dual));
  EXPECT_TRUE(rigs::same(dual, {1, 24, 12, 8, 6, 0, 0}));
}

TEST_F(Stitching, NonPositiveSizesWriteNothing) {
  rigs::Rig rig = flatRig(8, 4);
  for (const auto& [width, height] :
       {std::pair{0, 12}, std::pair{24, 0}, std::pair{-4, -4}, std::pair{-4, 12}}) {
    unsigned char untouched = 9;
    DualFishEyeCalibrationParam dual{};
    EXPECT_TRUE(FishEyeImageStitching(
        rig.first.image.data(), 8, 6, 8, rig.first.param, rig.first.points, rig.second.image.data(),
        8, 6, 8, rig.second.param, rig.second.points, &untouched, width, height, 8, dual));
    EXPECT_EQ(untouched, 9);
    EXPECT_EQ(dual.StdImageWidth, width);
  }
  rig.first.width = -8;
  rig.second.height = 0;
  const auto out = rigs::stitch(rig, 24, 12, 8, 9);
  EXPECT_TRUE(out.result);
  EXPECT_EQ(out.canvas, Bytes(24 * 12, 9));
}

TEST_F(Stitching, HostileSizesSaturateInTheRecord) {
  constexpr int highest = std::numeric_limits<int>::max();
  constexpr int lowest = std::numeric_limits<int>::min();
  rigs::Rig rig = flatRig(8, 4);
  rig.first.width = rig.first.height = lowest;
  DualFishEyeCalibrationParam dual{};
  unsigned char untouched = 9;
  EXPECT_TRUE(FishEyeImageStitching(rig.first.image.data(), lowest, lowest, 8, rig.first.param,
                                    rig.first.points, rig.second.image.data(), 8, 6, 8,
                                    rig.second.param, rig.second.points, &untouched, 0, highest, 8,
                                    dual));
  EXPECT_EQ(dual.DatumImagePtX, -(1 << 30));
  // offsetY = trunc((2^31 - 1 + 2^31)/2) = 2^31 - 1; -2^30 + 2^31 - 1 = 2^30 - 1
  EXPECT_EQ(dual.DatumImagePtY, (1 << 30) - 1);
}

TEST_F(Stitching, BuffersBeyond31BitsRaiseTheAllocationErrorWithTheCanvasUntouched) {
  rigs::Rig rig = flatRig(8, 4);
  for (plain::StitchCamera* const camera : {&rig.first, &rig.second}) {
    const plain::StitchCamera before = *camera;
    camera->width = camera->height = 23171;
    unsigned char untouched = 9;
    DualFishEyeCalibrationParam dual{};
    EXPECT_THROW(FishEyeImageStitching(rig.first.image.data(), rig.first.width, rig.first.height, 8,
                                       rig.first.param, rig.first.points, rig.second.image.data(),
                                       rig.second.width, rig.second.height, 8, rig.second.param,
                                       rig.second.points, &untouched, 1, 1, 8, dual),
                 std::bad_alloc);
    EXPECT_EQ(untouched, 9);
    EXPECT_TRUE(rigs::same(dual, {}));
    *camera = before;
  }
}

}  // namespace
