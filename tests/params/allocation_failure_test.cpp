// Memory may run out at any moment of a load or a save.
#include <gtest/gtest.h>

#include "fisheye_calibration.h"
#include "support/limited_memory.h"
#include "support/temporary_folder.h"

namespace {

using support::runsOutOfMemory;

class AllocationFailure : public testing::Test {
 protected:
  void SetUp() override {
    param.u0 = 5.0f;
    param.ImageDy = 6.0f;
    SaveCalibrationParam(path.c_str(), param);
  }

  support::TemporaryFolder folder;
  const std::string path = folder.file("camera.ini");
  FishEyeCalibrationParam param{};
};

TEST_F(AllocationFailure, LoadIsTrueAndGivesEverythingOrZeros) {
  int count = 0;
  for (bool ranOut = true; ranOut && count < 10000; ++count) {
    FishEyeCalibrationParam loaded = param;
    loaded.v0 = 7.0f;
    bool result = false;
    ranOut = runsOutOfMemory(count, [&] { result = LoadCalibrationParam(path.c_str(), loaded); });
    EXPECT_TRUE(result);
    EXPECT_EQ(loaded.v0, 0.0f);
    EXPECT_TRUE((loaded.u0 == 5.0f && loaded.ImageDy == 6.0f) ||
                (loaded.u0 == 0.0f && loaded.ImageDy == 0.0f))
        << loaded.u0 << ", " << loaded.ImageDy;
  }
  EXPECT_GT(count, 2) << "nothing ran out of memory";
}

TEST_F(AllocationFailure, SaveIsTrueAndLeavesAWholeFileAndNothingElse) {
  const std::string old = support::bytesOf(path);
  param.u0 = 1.0f;
  param.ImageDy = 2.0f;
  const std::string otherPath = folder.file("other.ini");
  SaveCalibrationParam(otherPath.c_str(), param);
  const std::string expected = support::bytesOf(otherPath);
  int count = 0;
  for (bool ranOut = true; ranOut && count < 10000; ++count) {
    bool result = false;
    ranOut = runsOutOfMemory(count, [&] { result = SaveCalibrationParam(path.c_str(), param); });
    EXPECT_TRUE(result);
    const std::string bytes = support::bytesOf(path);
    EXPECT_TRUE(bytes == old || bytes == expected) << bytes;
    EXPECT_EQ(folder.entryCount(), 2);
  }
  EXPECT_GT(count, 2) << "nothing ran out of memory";
  EXPECT_EQ(support::bytesOf(path), expected);
}

}  // namespace
