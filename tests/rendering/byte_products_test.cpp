// The operations on bytes that use the machine's own instructions against their portable twins.
#include <gtest/gtest.h>
#include <hwy/detect_targets.h>

#include <algorithm>
#include <cstdint>

#include "rendering/block_access.h"
#include "rendering/block_sets.h"
#include "support/dice.h"

namespace {

using blocks::Bytes64;
using support::Dice;

std::uint8_t anyByte(Dice& dice) {
  if (dice.oneIn(3)) {
    constexpr std::uint8_t kExtremes[] = {0, 1, 127, 128, 254, 255};
    return kExtremes[dice.whole(0, 5)];
  }
  return static_cast<std::uint8_t>(dice.whole(0, 255));
}

Bytes64 anyBytes(Dice& dice) {
  Bytes64 bytes;
  for (std::uint8_t& byte : bytes) byte = anyByte(dice);
  return bytes;
}

// Pairs up to 127 each and up to 128 together, so that 255 times their sum fits 15 bits.
Bytes64 weightsOfPairs(Dice& dice) {
  Bytes64 weights;
  for (std::size_t i = 0; i < weights.size(); i += 2) {
    const int whole = dice.oneIn(2) ? 32 : dice.whole(0, 128);
    const int left = std::min(dice.whole(0, whole), 127);
    weights[i] = static_cast<std::uint8_t>(left);
    weights[i + 1] = static_cast<std::uint8_t>(std::min(whole - left, 127));
  }
  return weights;
}

// Elsewhere the other tests of blocks may be skipped.
TEST(ByteProducts, AreComputedOnCommonMachines) {
#if HWY_ARCH_X86_64 || HWY_ARCH_ARM_A64
  EXPECT_TRUE(blocks::areComputed());
#else
  GTEST_SKIP() << "another kind of machine";
#endif
}

TEST(ByteProducts, SumsOfPairsOfRandomBytesAreThoseOfTheTwin) {
  blocks::onEverySet([] {
    Dice dice(1);
    for (int i = 0; i < 20000; ++i) {
      ASSERT_TRUE(blocks::sumsOfPairsAgree(anyBytes(dice), weightsOfPairs(dice))) << i;
    }
  });
}

TEST(ByteProducts, SumsOfPairsOfEveryByteAndFractionAreThoseOfTheTwin) {
  blocks::onEverySet([] {
    for (int a = 0; a <= 32; ++a) {
      for (int byte = 0; byte < 256; ++byte) {
        Bytes64 x;
        Bytes64 weights;
        for (std::size_t i = 0; i < x.size(); i += 2) {
          x[i] = static_cast<std::uint8_t>(byte);
          x[i + 1] = static_cast<std::uint8_t>(8 * i + 7);
          weights[i] = static_cast<std::uint8_t>(32 - a);
          weights[i + 1] = static_cast<std::uint8_t>(a);
        }
        ASSERT_TRUE(blocks::sumsOfPairsAgree(x, weights)) << a << ", " << byte;
      }
    }
  });
}

TEST(ByteProducts, LargestSumsAreThoseOfTheTwin) {
  blocks::onEverySet([] {
    Bytes64 x;
    Bytes64 weights;
    x.fill(255);
    weights.fill(64);  // 2 * 255 * 64 = 32640
    EXPECT_TRUE(blocks::sumsOfPairsAgree(x, weights));
    for (std::size_t i = 0; i < weights.size(); i += 2) {
      weights[i] = 127;
      weights[i + 1] = 1;
    }
    EXPECT_TRUE(blocks::sumsOfPairsAgree(x, weights));
  });
}

TEST(ByteProducts, NarrowingOfRandomBytesIsThatOfTheTwin) {
  blocks::onEverySet([] {
    Dice dice(2);
    for (int i = 0; i < 20000; ++i) {
      ASSERT_TRUE(blocks::narrowingAgrees(anyBytes(dice), anyBytes(dice))) << i;
    }
  });
}

}  // namespace
