#include "platform/number_text.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace fisheye_calibration;

namespace {

using platform::fixedText;
using platform::parseInteger;
using platform::parseReal;

constexpr double infinity = std::numeric_limits<double>::infinity();

TEST(NumberText, RoundsTheExactBinaryValue) {
  EXPECT_EQ(fixedText(0.5, 0), "0");  // ties go to the even digit
  EXPECT_EQ(fixedText(2.5, 0), "2");
  EXPECT_EQ(fixedText(1.5, 0), "2");
  EXPECT_EQ(fixedText(0.0000005, 6), "0.000000");  // the nearest double lies below 5e-7
  EXPECT_EQ(fixedText(0.1, 15), "0.100000000000000");
  EXPECT_EQ(fixedText(4e-16, 15), "0.000000000000000");
  EXPECT_EQ(fixedText(-0.0, 6), "-0.000000");
  EXPECT_EQ(fixedText(-1e-9, 6), "-0.000000");
}

TEST(NumberText, LargestNumberHas309Digits) {
  const std::string text = fixedText(std::numeric_limits<double>::max(), 15);
  EXPECT_EQ(text.size(), 309u + 1u + 15u);
  EXPECT_EQ(text.substr(0, 17), "17976931348623157");
  EXPECT_EQ(text.substr(300), "124858368.000000000000000");
}

TEST(NumberText, AcceptsWhatAtofAccepts) {
  EXPECT_EQ(parseReal(" \t\n\v\f\r+12.5"), 12.5);
  EXPECT_EQ(parseReal("-.5"), -0.5);
  EXPECT_EQ(parseReal("5."), 5.0);
  EXPECT_EQ(parseReal("1e3"), 1000.0);
  EXPECT_EQ(parseReal("1E+3"), 1000.0);
  EXPECT_EQ(parseReal("1e-3"), 0.001);
  EXPECT_EQ(parseReal("0x1.8p1"), 3.0);
  EXPECT_EQ(parseReal("-0XfF"), -255.0);
  EXPECT_EQ(parseReal("0x.8"), 0.5);
  EXPECT_EQ(parseReal("inf"), infinity);
  EXPECT_EQ(parseReal("-Infinity"), -infinity);
  EXPECT_TRUE(std::isnan(parseReal("NaN")));
  EXPECT_TRUE(std::isnan(parseReal("nan(1)")));
}

TEST(NumberText, LeadingNumberCounts) {
  EXPECT_EQ(parseReal("1,5"), 1.0);
  EXPECT_EQ(parseReal("1.5.5"), 1.5);
  EXPECT_EQ(parseReal("1e"), 1.0);
  EXPECT_EQ(parseReal("1e+"), 1.0);
  EXPECT_EQ(parseReal("0x"), 0.0);
  EXPECT_EQ(parseReal("0x1p"), 1.0);
  EXPECT_EQ(parseReal("0x1p+-1"), 1.0);
  EXPECT_EQ(parseReal("2 3"), 2.0);
  EXPECT_EQ(parseReal("infidel"), infinity);
}

TEST(NumberText, NonNumericTextIsZero) {
  for (const char* text : {"", " ", "abc", "+", "-", "--1", "+-1", "-+1", "- 1", ".", ".e1", "e1",
                           "\xEF\xBC\x91", "0xg", "in"}) {
    EXPECT_EQ(parseReal(text), 0.0) << text;
    EXPECT_EQ(parseInteger(text), 0) << text;
  }
}

TEST(NumberText, BeyondTheRangeIsInfiniteOrZero) {
  EXPECT_EQ(parseReal("1e999"), infinity);
  EXPECT_EQ(parseReal("-1e999"), -infinity);
  EXPECT_EQ(parseReal("1e-999"), 0.0);
  EXPECT_EQ(parseReal("1" + std::string(400, '0')), infinity);
  EXPECT_EQ(parseReal("0." + std::string(400, '0') + "1"), 0.0);
  EXPECT_EQ(parseReal("0." + std::string(400, '0') + "1e99999999999999999999"), infinity);
  EXPECT_EQ(parseReal("1" + std::string(400, '0') + "e-99999999999999999999"), 0.0);
  EXPECT_EQ(parseReal("0x1p5000"), infinity);
  EXPECT_EQ(parseReal("0x1p-5000"), 0.0);
  EXPECT_EQ(parseReal("0e999"), 0.0);
  EXPECT_EQ(parseReal("1.7976931348623157e308"), std::numeric_limits<double>::max());
  EXPECT_EQ(parseReal("2.2250738585072014e-308"), std::numeric_limits<double>::min());
}

TEST(NumberText, IntegersEndAtTheFirstOtherCharacterAndSaturate) {
  EXPECT_EQ(parseInteger(" \t+12.9"), 12);
  EXPECT_EQ(parseInteger("-12abc"), -12);
  EXPECT_EQ(parseInteger("0x10"), 0);
  EXPECT_EQ(parseInteger("010"), 10);
  EXPECT_EQ(parseInteger("1e3"), 1);
  EXPECT_EQ(parseInteger("2147483647"), 2147483647);
  EXPECT_EQ(parseInteger("2147483648"), 2147483647);
  EXPECT_EQ(parseInteger("-2147483648"), std::numeric_limits<std::int32_t>::min());
  EXPECT_EQ(parseInteger("-99999999999999999999"), std::numeric_limits<std::int32_t>::min());
}

}  // namespace
