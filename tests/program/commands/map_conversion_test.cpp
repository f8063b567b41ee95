#include "commands/map_conversion.h"

#include <gtest/gtest.h>

#include "base/failure.h"

namespace fisheye_calibration::program {
namespace {

bool provided(const std::string& from, const std::string& to) {
  try {
    findConversion(from, to);
    return true;
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.code(), kExitBadInput);
    return false;
  }
}

TEST(MapConversion, OneCameraHasSeven) {
  int count = 0;
  for (const char* from : {"world", "raw", "corrected", "second"}) {
    for (const char* to : {"world", "raw", "corrected", "second"}) {
      count += provided(from, to);
    }
  }
  EXPECT_EQ(count, 7);
  EXPECT_TRUE(provided("world", "raw"));
  EXPECT_TRUE(provided("world", "corrected"));
  EXPECT_TRUE(provided("world", "second"));
  EXPECT_TRUE(provided("second", "world"));
  EXPECT_TRUE(provided("raw", "world"));
  EXPECT_TRUE(provided("raw", "corrected"));
  EXPECT_TRUE(provided("raw", "second"));
}

TEST(MapConversion, WorldAndRawPictureNeedNoCorrectedSize) {
  EXPECT_FALSE(findConversion("raw", "world").needsCorrectedSize);
  EXPECT_TRUE(findConversion("raw", "second").needsCorrectedSize);
  EXPECT_FALSE(findConversion("world", "raw").needsCorrectedSize);
  EXPECT_TRUE(findConversion("world", "corrected").needsCorrectedSize);
  EXPECT_TRUE(findConversion("second", "world").needsCorrectedSize);
}

TEST(MapConversion, UnknownFramesAreRefused) { EXPECT_FALSE(provided("world", "moon")); }

}  // namespace
}  // namespace fisheye_calibration::program
