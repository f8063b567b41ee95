#include "images/rectangle.h"

#include <gtest/gtest.h>

#include <limits>
#include <numeric>
#include <vector>

using namespace fisheye_calibration;

namespace {

using Bytes = std::vector<unsigned char>;

constexpr int kHuge = std::numeric_limits<std::int32_t>::max();
constexpr std::int64_t kFar = std::numeric_limits<std::int64_t>::max();

// 1, 2, 3 ...
Bytes counted(int count) {
  Bytes bytes(static_cast<std::size_t>(count));
  std::iota(bytes.begin(), bytes.end(), static_cast<unsigned char>(1));
  return bytes;
}

// A 3 x 2 rectangle of a counted 4 x 4 buffer.
Bytes rectangleAt(std::int64_t x0, std::int64_t y0) {
  const Bytes src = counted(16);
  Bytes dst(6);
  images::copyRectangle({src.data(), 4, 4, 1}, x0, y0, {dst.data(), 3, 2, 1});
  return dst;
}

TEST(CopyRectangle, StartsAtTheOffsets) {
  EXPECT_EQ(rectangleAt(1, 2), (Bytes{10, 11, 12, 14, 15, 16}));
}

TEST(CopyRectangle, SkipsWhatLiesOutside) {
  EXPECT_EQ(rectangleAt(-1, 0), (Bytes{0, 1, 2, 0, 5, 6}));
  EXPECT_EQ(rectangleAt(3, 3), (Bytes{16, 0, 0, 0, 0, 0}));
  EXPECT_EQ(rectangleAt(-2, -1), (Bytes{0, 0, 0, 0, 0, 1}));
}

TEST(CopyRectangle, FarOffsetsCopyNothing) {
  for (const std::int64_t offset : {std::int64_t{4}, std::int64_t{-3}, std::int64_t{1} << 32, kFar,
                                    -kFar, std::numeric_limits<std::int64_t>::min()}) {
    EXPECT_EQ(rectangleAt(offset, 0), Bytes(6)) << offset;
    if (offset != -3) {
      EXPECT_EQ(rectangleAt(0, offset), Bytes(6)) << offset;
    }
  }
  EXPECT_EQ(rectangleAt(0, -2), Bytes(6));
}

TEST(CopyRectangle, TouchesOnlyRowsAndColumnsThatOverlap) {
  // Both buffers claim more rows and columns than they have; one pixel is shared.
  const Bytes src = counted(1);
  Bytes dst(1);
  images::copyRectangle({src.data(), 1, kHuge, 4}, 0, 1 - std::int64_t{kHuge} - 1,
                        {dst.data(), kHuge, kHuge, 4});
  EXPECT_EQ(dst[0], 0);
  images::copyRectangle({src.data(), kHuge, kHuge, 1}, 0, 0, {dst.data(), 1, 1, 1});
  EXPECT_EQ(dst[0], 1);
}

}  // namespace
