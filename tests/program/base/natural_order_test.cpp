#include "base/natural_order.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace fisheye_calibration::program {
namespace {

TEST(NaturalOrder, NumbersCountByValue) {
  const std::vector<std::string> ordered = {
      "",         "1.png",     "2.png",   "10.png", "frame-1.png", "frame1",
      "frame1a2", "frame1a10", "frame02", "frame9", "frame0010"};
  for (std::size_t i = 0; i < ordered.size(); ++i) {
    for (std::size_t j = 0; j < ordered.size(); ++j) {
      EXPECT_EQ(naturallyBefore(ordered[i], ordered[j]), i < j) << ordered[i] << " " << ordered[j];
    }
  }
}

TEST(NaturalOrder, NumbersMayBeLongerThanAnyInteger) {
  EXPECT_TRUE(naturallyBefore("a99999999999999999999998", "a99999999999999999999999"));
  EXPECT_TRUE(naturallyBefore("a99999999999999999999999", "a100000000000000000000000"));
}

TEST(NaturalOrder, LeadingZerosDecideAmongEqualNumbers) {
  EXPECT_TRUE(naturallyBefore("a01", "a1"));
  EXPECT_FALSE(naturallyBefore("a1", "a01"));
  EXPECT_FALSE(naturallyBefore("a1", "a1"));
  EXPECT_TRUE(naturallyBefore("a0", "a00b"));
}

}  // namespace
}  // namespace fisheye_calibration::program
