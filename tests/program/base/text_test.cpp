#include "base/text.h"

#include <gtest/gtest.h>

#include "support/comma_locale.h"

namespace fisheye_calibration::program {
namespace {

TEST(Text, TheWholeTextMustBeANumber) {
  EXPECT_EQ(parseNumber("-1.5e2"), -150.0);
  EXPECT_EQ(parseNumber("+2"), 2.0);
  EXPECT_EQ(parseNumber("2 "), std::nullopt);
  EXPECT_EQ(parseNumber("2x"), std::nullopt);
  EXPECT_EQ(parseNumber("+-2"), std::nullopt);
  EXPECT_EQ(parseNumber(""), std::nullopt);
}

TEST(Text, NumbersThatAreNotFiniteAreRejected) {
  EXPECT_EQ(parseNumber("nan"), std::nullopt);
  EXPECT_EQ(parseNumber("inf"), std::nullopt);
  EXPECT_EQ(parseNumber("1e400"), std::nullopt);
}

TEST(Text, FloatsBeyondTheirRangeAreRejected) {
  EXPECT_EQ(parseFloat("3e38"), 3e38f);
  EXPECT_EQ(parseFloat("4e38"), std::nullopt);
}

TEST(Text, WholeNumbersHaveNoFraction) {
  EXPECT_EQ(parseInteger("-7"), -7);
  EXPECT_EQ(parseInteger("7.0"), std::nullopt);
  EXPECT_EQ(parseInteger("2147483648"), std::nullopt);
}

TEST(Text, TheDecimalPointIsAPointInEveryLocale) {
  const support::CommaLocale locale;
  SKIP_WITHOUT_COMMA_LOCALE(locale);
  EXPECT_EQ(fixed(1.5, 2), "1.50");
  EXPECT_EQ(parseNumber("1.5"), 1.5);
}

TEST(Text, ShortestReadsBackAsTheSameFloat) {
  EXPECT_EQ(shortest(0.1f), "0.1");
  EXPECT_EQ(parseFloat(shortest(1.0f / 3.0f)), 1.0f / 3.0f);
}

TEST(Text, SignedTermsCanFollowASum) {
  EXPECT_EQ(signedTerm(8), " + 8");
  EXPECT_EQ(signedTerm(-8), " - 8");
}

TEST(Text, MessagesBecomeOneLine) { EXPECT_EQ(onOneLine("  a\n\tb  c \n"), "a b c"); }

}  // namespace
}  // namespace fisheye_calibration::program
