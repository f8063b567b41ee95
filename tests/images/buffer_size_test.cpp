#include "images/buffer_size.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <new>

namespace {

using fisheye_calibration::images::bufferSize;

constexpr std::int64_t kHighest = std::numeric_limits<std::int64_t>::max();

TEST(BufferSize, CountsBytesOfRowsWithoutPadding) {
  EXPECT_EQ(bufferSize(5, 3, 8), 15u);
  EXPECT_EQ(bufferSize(5, 3, 24), 45u);
  EXPECT_EQ(bufferSize(5, 3, 32), 60u);
  EXPECT_EQ(bufferSize(5, 3, 1), 1u) << "15 bits make one whole byte";
}

TEST(BufferSize, IsZeroWithoutPixelsOrBits) {
  EXPECT_EQ(bufferSize(0, 3, 8), 0u);
  EXPECT_EQ(bufferSize(3, 0, 8), 0u);
  EXPECT_EQ(bufferSize(3, 3, 0), 0u);
  EXPECT_EQ(bufferSize(-3, -3, 8), 0u) << "not 9: both sizes are invalid";
  EXPECT_EQ(bufferSize(3, 3, -8), 0u);
}

TEST(BufferSize, LastSizeThatFitsHasTwoToThe31MinusOneBytes) {
  EXPECT_EQ(bufferSize(2147483647, 1, 8), 2147483647u);
  EXPECT_EQ(bufferSize(1, 536870911, 32), 2147483644u);
  EXPECT_THROW(bufferSize(1, 536870912, 32), std::bad_alloc);  // 4 * 2^29 = 2^31
  EXPECT_THROW(bufferSize(65536, 32768, 8), std::bad_alloc);   // 2^16 * 2^15 = 2^31
}

TEST(BufferSize, ProductsBeyond64BitsAreTooLarge) {
  EXPECT_THROW(bufferSize(kHighest, kHighest, kHighest), std::bad_alloc);
  EXPECT_THROW(bufferSize(2, 2, kHighest), std::bad_alloc);
  EXPECT_THROW(bufferSize(kHighest, 2, 8), std::bad_alloc);
  EXPECT_THROW(bufferSize(2147483647, 1, 2147483647), std::bad_alloc);
}

}  // namespace
