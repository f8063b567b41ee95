#include <gtest/gtest.h>

#include <limits>
#include <numeric>
#include <vector>

#include "fisheye_calibration.h"
#include "support/plain_correction.h"
#include "support/synthetic_rig.h"

namespace {

using Bytes = std::vector<unsigned char>;

constexpr int kHuge = std::numeric_limits<std::int32_t>::max();

// 1, 2, 3 ...
Bytes counted(int count) {
  Bytes bytes(static_cast<std::size_t>(count));
  std::iota(bytes.begin(), bytes.end(), static_cast<unsigned char>(1));
  return bytes;
}

// The crop of a counted buffer into one filled with 0.
Bytes cropped(int srcWidth, int srcHeight, int bitCount, int dstWidth, int dstHeight) {
  Bytes src = counted(srcWidth * srcHeight * bitCount / 8);
  Bytes dst(static_cast<std::size_t>(dstWidth * dstHeight * bitCount / 8));
  CroppingImage(src.data(), srcWidth, srcHeight, bitCount, dst.data(), dstWidth, dstHeight);
  return dst;
}

TEST(CroppingImage, OddInOddIsCentred) {
  EXPECT_EQ(cropped(5, 5, 8, 3, 3), (Bytes{7, 8, 9, 12, 13, 14, 17, 18, 19}));
}

TEST(CroppingImage, OddInEvenLeansToTheStart) {
  EXPECT_EQ(cropped(4, 4, 8, 3, 3), (Bytes{1, 2, 3, 5, 6, 7, 9, 10, 11}));
}

TEST(CroppingImage, EvenInOddLeansToTheEnd) { EXPECT_EQ(cropped(5, 1, 8, 2, 1), (Bytes{3, 4})); }

TEST(CroppingImage, EqualSizesCopy) {
  EXPECT_EQ(cropped(3, 4, 8, 3, 4), counted(12));
  EXPECT_EQ(cropped(3, 4, 24, 3, 4), counted(36));
}

TEST(CroppingImage, SmallerSourceLandsCentredAndTheMarginStays) {
  EXPECT_EQ(cropped(2, 1, 8, 4, 3), (Bytes{0, 0, 0, 0, 0, 1, 2, 0, 0, 0, 0, 0}));
}

TEST(CroppingImage, NarrowerAndTallerAtOnce) {
  EXPECT_EQ(cropped(3, 1, 8, 1, 3), (Bytes{0, 2, 0}));
}

TEST(CroppingImage, PixelsOfThreeAndFourBytesStayTogether) {
  EXPECT_EQ(cropped(3, 1, 24, 1, 1), (Bytes{4, 5, 6}));
  EXPECT_EQ(cropped(3, 1, 32, 1, 1), (Bytes{5, 6, 7, 8}));
}

TEST(CroppingImage, OtherBitCountsCopyNothing) {
  for (const int bitCount : {0, 1, 16, 25, 64, -8, kHuge}) {
    Bytes src = counted(64);
    Bytes dst(64, 7);
    CroppingImage(src.data(), 2, 2, bitCount, dst.data(), 2, 2);
    EXPECT_EQ(dst, Bytes(64, 7)) << bitCount;
  }
}

TEST(CroppingImage, NonPositiveSizesCopyNothing) {
  const int lowest = std::numeric_limits<std::int32_t>::min();
  for (const int size : {0, -1, -4, lowest}) {
    Bytes src = counted(16);
    Bytes dst(16, 7);
    CroppingImage(src.data(), 4, 4, 8, dst.data(), 4, size);
    CroppingImage(src.data(), 4, 4, 8, dst.data(), size, 4);
    CroppingImage(src.data(), 4, size, 8, dst.data(), 4, 4);
    CroppingImage(src.data(), size, 4, 8, dst.data(), 4, 4);
    EXPECT_EQ(dst, Bytes(16, 7)) << size;
  }
}

TEST(CroppingImage, NullBuffersCopyNothing) {
  Bytes bytes = counted(16);
  CroppingImage(nullptr, 4, 4, 8, bytes.data(), 4, 4);
  CroppingImage(bytes.data(), 4, 4, 8, nullptr, 4, 4);
  CroppingImage(nullptr, kHuge, kHuge, 8, nullptr, kHuge, 1);
  EXPECT_EQ(bytes, counted(16));
}

TEST(CroppingImage, MayCutABufferInPlace) {
  Bytes bytes = counted(25);
  CroppingImage(bytes.data(), 5, 5, 8, bytes.data(), 3, 3);
  EXPECT_EQ(Bytes(bytes.begin(), bytes.begin() + 9), (Bytes{7, 8, 9, 12, 13, 14, 17, 18, 19}));
}

TEST(CroppingImage, EqualsThePlainCrop) {
  support::Random random(5);
  const auto length = [&] { return static_cast<int>(random.uniform(1, 24)); };
  for (int i = 0; i < 3000; ++i) {
    const int bitCount = i % 3 == 0 ? 8 : (i % 3 + 2) * 8;
    const int srcWidth = length();
    const int srcHeight = length();
    const int dstWidth = length();
    const int dstHeight = length();
    Bytes src = counted(srcWidth * srcHeight * bitCount / 8);
    Bytes expected(static_cast<std::size_t>(dstWidth * dstHeight * bitCount / 8), 0xA5);
    Bytes dst = expected;
    plain::croppingImage(src.data(), srcWidth, srcHeight, bitCount, expected.data(), dstWidth,
                         dstHeight);
    CroppingImage(src.data(), srcWidth, srcHeight, bitCount, dst.data(), dstWidth, dstHeight);
    ASSERT_EQ(dst, expected) << srcWidth << "x" << srcHeight << " to " << dstWidth << "x"
                             << dstHeight << ", " << bitCount << " bits";
  }
}

}  // namespace
