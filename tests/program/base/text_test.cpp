#include "base/text.h"

#include <gmock/gmock.h>
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

TEST(Text, QuotedTextHasAtMostSixtyCharacters) {
  EXPECT_EQ(inQuotes("abc"), "\"abc\"");
  EXPECT_EQ(inQuotes(std::string(60, 'x')).size(), 62u);
  EXPECT_THAT(inQuotes(std::string(61, 'x')), testing::EndsWith("xxx...\""));
  EXPECT_EQ(inQuotes(std::string(61, 'x')).size(), 62u);
  std::string umlauts;
  for (int i = 0; i < 61; ++i) {
    umlauts += "\xC3\xA4";
  }
  EXPECT_THAT(inQuotes(umlauts), testing::EndsWith("\xC3\xA4...\""));
  EXPECT_EQ(inQuotes(umlauts).size(), 2 * 57 + 5u);
}

TEST(Text, ShortenedTextEndsBetweenCharacters) {
  std::string text;
  for (int i = 0; i < 61; ++i) {
    text += "\u00e4";
  }
  EXPECT_EQ(shortened(text), text.substr(0, 2 * 57) + "...");
  EXPECT_EQ(shortened(text.substr(2)), text.substr(2));
}

TEST(Text, TheNearestNameIsOneOfFewEdits) {
  const std::vector<std::string> names = {"map", "crop", "correct"};
  EXPECT_EQ(nearest("corect", names), "correct");
  EXPECT_EQ(nearest("mpa", names), "map");
  EXPECT_EQ(nearest("stitch", names), std::nullopt);
}

TEST(Text, MessagesBecomeOneLine) { EXPECT_EQ(onOneLine("  a\n\tb  c \n"), "a b c"); }

TEST(Text, ErrorsAreRoundedToTwoDigits) {
  EXPECT_EQ(roundedToTwo(0.03449), "0.034");
  EXPECT_EQ(roundedToTwo(1.12), "1.1");
  EXPECT_EQ(roundedToTwo(99.4), "99");
  EXPECT_EQ(roundedToTwo(99.6), "100");
  EXPECT_EQ(roundedToTwo(146.3), "146");
  EXPECT_EQ(roundedToTwo(0.00001), "0");
  EXPECT_EQ(roundedToTwo(-25.4), "-25");
}

}  // namespace
}  // namespace fisheye_calibration::program
