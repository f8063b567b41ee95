// The records themselves: are they read, of the generator that the tests have, and complete?
#include "reference/records.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <set>
#include <stdexcept>

#include "reference/generator.h"
#include "reference/remap_case.h"

namespace {

using reference::Generator;

// Published test vectors of 64-bit FNV-1a.
TEST(Hash, IsFnv1a) {
  const auto hashOf = [](const std::string& text) {
    return reference::hashOf(std::vector<unsigned char>(text.begin(), text.end()));
  };
  EXPECT_EQ(hashOf(""), "cbf29ce484222325");
  EXPECT_EQ(hashOf("a"), "af63dc4c8601ec8c");
  EXPECT_EQ(hashOf("foobar"), "85944171f73967e8");
}

TEST(Generator, MixesItsCounter) {
  // From state 2^32 - 0x9e3779b9 the counter arrives at 0, which the mixing leaves.
  EXPECT_EQ(Generator(0U - 0x9e3779b9U).next(), 0U);
  // 1 -> 1 * 0x85ebca6b -> xor >> 13 -> * 0xc2b2ae35 -> xor >> 16, the finaliser's value for 1.
  EXPECT_EQ(Generator(1U - 0x9e3779b9U).next(), 0x514e28b7U);
}

TEST(Records, AreComplete) {
  EXPECT_EQ(reference::readRecords("remap").size(), 336U);
  EXPECT_EQ(reference::readRecords("remap_values").size(), 80U);
  EXPECT_EQ(reference::readRecords("numbers").size(), 33U);
  EXPECT_EQ(reference::readRecords("number_values").size(), 48U);
  EXPECT_EQ(reference::readRecords("fits").size(), 118U);
  EXPECT_EQ(reference::readRecords("pictures").size(), 32U);
}

TEST(Records, HoldRemapWithEveryBorderOnEveryFrame) {
  std::set<std::string> frames;
  std::set<std::string> combinations;
  for (const reference::RemapCase& c : reference::readRemapCases()) {
    const std::string frame =
        std::to_string(c.frame.width) + "x" + std::to_string(c.frame.height) + " " + c.positions;
    frames.insert(frame + " " + std::to_string(c.map.width));
    combinations.insert(c.border + " " + std::to_string(c.channels) + " " + frame + " " +
                        std::to_string(c.map.width));
  }
  EXPECT_EQ(frames.size(), 8U + 4 + 4 + 4 + 6 + 2);
  EXPECT_EQ(combinations.size(), frames.size() * (3 + 3 + 1));
}

TEST(Records, MissingFileIsNotAnEmptyOne) {
  EXPECT_THROW(reference::readRecords("nothing"), std::runtime_error);
}

TEST(Records, NumbersKeepEveryBit) {
  const std::vector<double> numbers =
      reference::numbersOf("-0 5e-324 0.1 -Infinity 1.7976931348623157e+308");
  ASSERT_EQ(numbers.size(), 5U);
  EXPECT_TRUE(numbers[0] == 0 && std::signbit(numbers[0]));
  EXPECT_EQ(numbers[1], std::numeric_limits<double>::denorm_min());
  EXPECT_EQ(numbers[2], 0.1);
  EXPECT_EQ(numbers[3], -std::numeric_limits<double>::infinity());
  EXPECT_EQ(numbers[4], std::numeric_limits<double>::max());
  EXPECT_THROW(reference::numbersOf("1 2x"), std::runtime_error);
}

}  // namespace
