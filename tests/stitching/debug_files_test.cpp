#include <gtest/gtest.h>

#include <filesystem>
#include <map>

#include "fisheye_calibration.h"
#include "registration/debug_drive.h"
#include "stitching/rigs.h"

namespace {

using Files = std::map<std::string, std::string>;

void addView(Files& files, const std::string& side, const plain::StitchView& view) {
  files["D:/" + side + "CorrectedImage.bmp"] =
      plain::debugBitmap(view.pixels, view.width, view.height, view.bits);
  files["D:/" + side + "MaskImage.bmp"] = plain::debugBitmap(view.mask, view.width, view.height, 8);
}

// The files that either operation writes for the two views.
Files viewFiles(const rigs::Rig& rig) {
  Files files;
  addView(files, "Left", plain::doubledView(rig.first));
  addView(files, "Right", plain::doubledView(rig.second));
  return files;
}

class StitchingDebugFiles : public DebugDriveTest {
 protected:
  static void expectFiles(const Files& expected) {
    for (const auto& [path, content] : expected) {
      EXPECT_TRUE(contentOf(path.c_str()) == content) << path;
      std::filesystem::remove(path);
    }
#if !defined(_WIN32)
    EXPECT_TRUE(std::filesystem::is_empty("D:"));
#endif
  }

  static rigs::Rig rig(int bits) {
    support::Random random(41);
    return rigs::randomRig(random, bits);
  }
};

TEST_F(StitchingDebugFiles, TheSizeStepWritesBothViewsAndMasks) {
  SKIP_WITHOUT_DEBUG_DRIVE();
  for (const int bits : {8, 24, 32, 16}) {
    EXPECT_TRUE(rigs::sizeOf(rig(bits)).result);
    expectFiles(viewFiles(rig(bits)));
  }
}

TEST_F(StitchingDebugFiles, TheStitchingWritesTheCanvasToo) {
  SKIP_WITHOUT_DEBUG_DRIVE();
  for (const int bits : {8, 24, 32, 16}) {
    const auto out = rigs::stitch(rig(bits), 92, 56, bits, 3);
    Files files = viewFiles(rig(bits));
    files["D:/DImage.bmp"] = plain::debugBitmap(out.canvas, 92, 56, bits);
    expectFiles(files);
  }
}

TEST_F(StitchingDebugFiles, ACameraThatCannotBeCorrectedIsBlackAndMasked) {
  SKIP_WITHOUT_DEBUG_DRIVE();
  rigs::Rig dark = rig(24);
  std::fill(dark.first.image.begin(), dark.first.image.end(), static_cast<unsigned char>(0));
  dark.second.image.clear();
  rigs::sizeOf(dark);
  const std::string view = contentOf("D:/LeftCorrectedImage.bmp").value_or("");
  const std::string mask = contentOf("D:/RightMaskImage.bmp").value_or("");
  ASSERT_GT(view.size(), 54U);
  ASSERT_GT(mask.size(), 1078U);
  EXPECT_EQ(view.substr(54), std::string(view.size() - 54, '\0'));
  const auto count = static_cast<std::size_t>(4 * dark.second.width * dark.second.height);
  EXPECT_EQ(mask.substr(1078, count), std::string(count, '\xFF'));
  expectFiles(viewFiles(dark));
}

TEST_F(StitchingDebugFiles, ListsThatShareNothingStillShowTheViews) {
  SKIP_WITHOUT_DEBUG_DRIVE();
  rigs::Rig strangers = rig(8);
  for (CalibrationPoint& point : strangers.second.points) point.PointId = -1;
  EXPECT_FALSE(rigs::sizeOf(strangers).result);
  expectFiles(viewFiles(strangers));
  EXPECT_FALSE(rigs::stitch(strangers, 92, 56, 8, 3).result);
  expectFiles(viewFiles(strangers));
}

TEST_F(StitchingDebugFiles, LongerFilesOfAnEarlierCallAreReplaced) {
  SKIP_WITHOUT_DEBUG_DRIVE();
  rigs::sizeOf(rig(32));
  rigs::sizeOf(rig(8));
  expectFiles(viewFiles(rig(8)));
}

TEST_F(StitchingDebugFiles, AFileThatCannotBeOpenedDoesNotPreventTheOthers) {
  SKIP_WITHOUT_DEBUG_DRIVE();
  std::filesystem::create_directory("D:/LeftCorrectedImage.bmp");
  EXPECT_TRUE(rigs::sizeOf(rig(8)).result);
  Files files = viewFiles(rig(8));
  files.erase("D:/LeftCorrectedImage.bmp");
  for (const auto& [path, content] : files) {
    EXPECT_TRUE(contentOf(path.c_str()) == content) << path;
  }
}

TEST_F(StitchingDebugFiles, ACanvasThatCannotBeWrittenDoesNotChangeTheResult) {
  SKIP_WITHOUT_DEBUG_DRIVE();
  const auto written = rigs::stitch(rig(8), 92, 56, 8, 3);
  std::filesystem::remove("D:/DImage.bmp");
  std::filesystem::create_directory("D:/DImage.bmp");
  const auto unwritten = rigs::stitch(rig(8), 92, 56, 8, 3);
  std::filesystem::remove("D:/DImage.bmp");
  EXPECT_TRUE(unwritten.result);
  EXPECT_EQ(unwritten.canvas, written.canvas);
  EXPECT_TRUE(rigs::same(unwritten.dual, written.dual));
}

// With the drive, both views are rendered as a whole.
TEST_F(StitchingDebugFiles, ResultsAreTheSameWithAndWithoutTheDrive) {
  std::vector<rigs::Rig> rigsToTry;
  support::Random random(43);
  for (int i = 0; i < 30; ++i) {
    rigsToTry.push_back(rigs::randomRig(random, i % 3 == 0 ? 8 : i % 3 == 1 ? 24 : 32));
  }
  std::vector<rigs::Stitched> without;
  for (const rigs::Rig& rig : rigsToTry) {
    without.push_back(rigs::stitch(rig, 92, 56, rig.first.bits, 3));
  }
  const auto sizeWithout = rigs::sizeOf(rigsToTry[0]);
  SKIP_WITHOUT_DEBUG_DRIVE();
  for (std::size_t i = 0; i < rigsToTry.size(); ++i) {
    const auto with = rigs::stitch(rigsToTry[i], 92, 56, rigsToTry[i].first.bits, 3);
    EXPECT_EQ(with.canvas, without[i].canvas);
    EXPECT_TRUE(rigs::same(with.dual, without[i].dual));
  }
  const auto sizeWith = rigs::sizeOf(rigsToTry[0]);
  EXPECT_EQ(sizeWith.width, sizeWithout.width);
  EXPECT_EQ(sizeWith.height, sizeWithout.height);
}

#if !defined(_WIN32)
TEST_F(StitchingDebugFiles, WithoutTheDriveNothingIsWritten) {
  rigs::stitch(rig(8), 92, 56, 8, 3);
  rigs::sizeOf(rig(8));
  EXPECT_TRUE(std::filesystem::is_empty("."));
}

TEST_F(StitchingDebugFiles, AreNotWrittenIfDisabledAtBuildTime) {
  if (FISHEYE_CALIBRATION_DEBUG_FILES != 0) GTEST_SKIP() << "Built with debug files";
  std::filesystem::create_directory("D:");
  rigs::stitch(rig(8), 92, 56, 8, 3);
  rigs::sizeOf(rig(8));
  EXPECT_TRUE(std::filesystem::is_empty("D:"));
}
#endif

}  // namespace
