#include "images/debug_bitmap.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <numeric>
#include <vector>

#include "registration/debug_drive.h"
#include "support/plain_stitching.h"

using namespace fisheye_calibration;

namespace {

class DebugBitmap : public WorkingDirectoryTest {
 protected:
  static std::vector<unsigned char> ascending(std::size_t count) {
    std::vector<unsigned char> bytes(count);
    std::iota(bytes.begin(), bytes.end(), static_cast<unsigned char>(1));
    return bytes;
  }

  static std::string written(const std::vector<unsigned char>& pixels, int width, int height,
                             int bits) {
    EXPECT_TRUE(WriteDebugBitmap(pixels.data(), width, height, bits, "image.bmp"));
    return contentOf("image.bmp").value_or("no file");
  }
};

std::string bytes(std::initializer_list<int> values) {
  std::string text;
  for (const int value : values) text += static_cast<char>(value);
  return text;
}

TEST_F(DebugBitmap, RowsOfNineBytesArePackedUnderAHeaderOfTwelve) {
  const std::string file = written(ascending(18), 3, 2, 24);
  const std::string expected =
      bytes({'B', 'M', 78, 0, 0, 0, 0, 0, 0, 0, 54, 0, 0, 0}) +
      bytes({40, 0, 0, 0, 3, 0, 0, 0, 2, 0, 0, 0, 1, 0, 24, 0, 0, 0, 0, 0}) +
      bytes({24, 0, 0, 0, 0x6D, 0x0B, 0, 0, 0x6D, 0x0B, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}) +
      bytes({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18}) +
      bytes({0, 0, 0, 0, 0, 0});
  EXPECT_EQ(file, expected);
}

TEST_F(DebugBitmap, EightBitsHaveAPaletteOfAllGreys) {
  const std::string file = written({9, 8, 7, 6}, 4, 1, 8);
  ASSERT_EQ(file.size(), 54U + 1024 + 4);
  EXPECT_EQ(file.substr(2, 4), bytes({0x3A, 0x04, 0, 0}));   // 1082
  EXPECT_EQ(file.substr(10, 4), bytes({0x36, 0x04, 0, 0}));  // 1078
  for (int i = 0; i < 256; ++i) {
    EXPECT_EQ(file.substr(static_cast<std::size_t>(54 + 4 * i), 4), bytes({i, i, i, 0})) << i;
  }
  EXPECT_EQ(file.substr(1078), bytes({9, 8, 7, 6}));
}

TEST_F(DebugBitmap, OneBitHasTwoDarkPaletteEntries) {
  const std::string file = written({0xAA, 0x55}, 8, 2, 1);
  ASSERT_EQ(file.size(), 54U + 8 + 8);
  EXPECT_EQ(file.substr(54),
            bytes({0, 0, 0, 0, 1, 1, 1, 0}) + bytes({0xAA, 0x55}) + bytes({0, 0, 0, 0, 0, 0}));
}

TEST_F(DebugBitmap, FourBitsHaveSixteenPaletteEntries) {
  const std::string file = written({0x12, 0x34, 0x56, 0x78}, 8, 1, 4);
  ASSERT_EQ(file.size(), 54U + 64 + 4);
  EXPECT_EQ(file.substr(54 + 60, 4), bytes({15, 15, 15, 0}));
  EXPECT_EQ(file.substr(54 + 64), bytes({0x12, 0x34, 0x56, 0x78}));
}

// 33 pixels of one bit: the packed image has 33 x 10 / 8 = 41 bytes, the file 8 a row.
TEST_F(DebugBitmap, ZerosFollowThePackedRowsUpToTheDeclaredLength) {
  const std::string file = written(ascending(41), 33, 10, 1);
  ASSERT_EQ(file.size(), 54U + 8 + 80);
  EXPECT_EQ(file.substr(34, 4), bytes({80, 0, 0, 0}));
  EXPECT_EQ(file[62 + 40], 41);
  EXPECT_EQ(file.substr(62 + 41), std::string(39, '\0'));
}

TEST_F(DebugBitmap, EveryBitCountAndSizeEqualsThePlainFile) {
  for (const int bits : {1, 4, 8, 16, 24, 32}) {
    for (int width = 1; width <= 40; ++width) {
      for (const int height : {1, 2, 7}) {
        const auto pixels = ascending(static_cast<std::size_t>(width * height * bits / 8));
        EXPECT_EQ(written(pixels, width, height, bits),
                  plain::debugBitmap(pixels, width, height, bits))
            << bits << " bits, " << width << " x " << height;
      }
    }
  }
}

TEST_F(DebugBitmap, ALongerFileIsReplacedCompletely) {
  written(ascending(64), 4, 4, 32);
  EXPECT_EQ(written(ascending(4), 1, 1, 32).size(), 58U);
}

TEST_F(DebugBitmap, APathThatCannotBeOpenedFails) {
  EXPECT_FALSE(WriteDebugBitmap(ascending(4).data(), 1, 1, 32, "no such folder/image.bmp"));
  EXPECT_FALSE(WriteDebugBitmap(ascending(4).data(), 1, 1, 32, ""));
}

TEST_F(DebugBitmap, NullPathAndNullPixelsWriteNothing) {
  EXPECT_FALSE(WriteDebugBitmap(ascending(4).data(), 1, 1, 32, nullptr));
  written(ascending(4), 1, 1, 32);
  EXPECT_FALSE(WriteDebugBitmap(nullptr, 1, 1, 32, "image.bmp"));
  EXPECT_EQ(contentOf("image.bmp").value_or("").size(), 58U);
}

TEST_F(DebugBitmap, NonPositiveSizesGiveOnlyHeadersAndPalette) {
  EXPECT_EQ(written({}, 0, 0, 8).size(), 1078U);
  EXPECT_EQ(written({}, 4, 0, 24).size(), 54U);
  EXPECT_EQ(written({}, -4, 4, 24).size(), 54U);
  EXPECT_EQ(written({}, -4, -4, 24).size(), 54U);
  EXPECT_EQ(written({}, 4, 4, -24).size(), 54U);
  EXPECT_EQ(written({}, -4, 4, 24).substr(18, 8), bytes({252, 255, 255, 255, 4, 0, 0, 0}));
}

TEST_F(DebugBitmap, SizesBeyondAFileAreRefusedBeforeItIsOpened) {
  const auto pixel = ascending(4);
  for (const auto& [width, height, bits] :
       {std::array{0x7FFFFFFF, 0x7FFFFFFF, 32}, std::array{0x7FFFFFFF, 1, 8},
        std::array{46341, 46341, 8}, std::array{4, 4, 0x7FFFFFFF}}) {
    EXPECT_FALSE(WriteDebugBitmap(pixel.data(), width, height, bits, "image.bmp"));
  }
  EXPECT_FALSE(contentOf("image.bmp"));
}

#if defined(__linux__)
TEST_F(DebugBitmap, AFullDiskFails) {
  EXPECT_FALSE(WriteDebugBitmap(ascending(64).data(), 4, 4, 32, "/dev/full"));
  const auto large = ascending(1 << 20);
  EXPECT_FALSE(WriteDebugBitmap(large.data(), 512, 512, 32, "/dev/full"));
}
#endif

TEST_F(DebugBitmap, CheckingAPathLeavesNoFileBehind) {
  EXPECT_TRUE(CanWriteDebugBitmap("image.bmp"));
  EXPECT_FALSE(contentOf("image.bmp"));
  EXPECT_FALSE(CanWriteDebugBitmap("no such folder/image.bmp"));
}

#ifndef _WIN32
// A link to a file that is not there yet is written through, so it counts as writable.
TEST_F(DebugBitmap, CheckingADanglingLinkKeepsTheLink) {
  std::filesystem::create_symlink("later.bmp", "image.bmp");
  EXPECT_TRUE(CanWriteDebugBitmap("image.bmp"));
  EXPECT_TRUE(std::filesystem::is_symlink("image.bmp"));
  EXPECT_TRUE(WriteDebugBitmap(ascending(4).data(), 1, 1, 32, "image.bmp"));
  EXPECT_EQ(std::filesystem::file_size("later.bmp"), 58u);
}

TEST_F(DebugBitmap, AWriteOnlyFileCountsAsWritable) {
  written(ascending(4), 1, 1, 32);
  std::filesystem::permissions("image.bmp", std::filesystem::perms::owner_write);
  EXPECT_TRUE(CanWriteDebugBitmap("image.bmp"));
}
#endif

TEST_F(DebugBitmap, CheckingAFileKeepsItsContents) {
  const std::string before = written(ascending(4), 1, 1, 32);
  EXPECT_TRUE(CanWriteDebugBitmap("image.bmp"));
  EXPECT_EQ(contentOf("image.bmp"), before);
}

}  // namespace
