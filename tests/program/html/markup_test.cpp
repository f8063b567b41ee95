#include "html/markup.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace fisheye_calibration::program {
namespace {

TEST(Markup, TextIsEscaped) {
  EXPECT_EQ(escaped("<b onclick='x(\"&\")'>"), "&lt;b onclick=&#39;x(&quot;&amp;&quot;)&#39;&gt;");
  EXPECT_EQ(escaped("Gr\xC3\xB6\xC3\x9F\x65 \xE2\x82\xAC \xF0\x9F\x93\xB7"),
            "Gr\xC3\xB6\xC3\x9F\x65 \xE2\x82\xAC \xF0\x9F\x93\xB7");
}

TEST(Markup, WhatIsNoTextIsReplaced) {
  const std::string replaced = "\xEF\xBF\xBD";
  EXPECT_EQ(escaped(std::string("a\0b\x1B\x7F\n\t", 7)),
            std::string("a") + replaced + "b" + replaced + replaced + "\n\t");
  EXPECT_EQ(escaped("\xFFz"), replaced + "z");
  EXPECT_EQ(escaped("\xC0\xAF"), replaced + replaced) << "an overlong slash";
  EXPECT_EQ(escaped("\xE0\x80\xAF"), replaced + replaced + replaced) << "an overlong slash";
  EXPECT_EQ(escaped("\xED\xA0\x80"), replaced + replaced + replaced) << "a surrogate";
  EXPECT_EQ(escaped("\xF4\x90\x80\x80"), replaced + replaced + replaced + replaced);
  EXPECT_EQ(escaped("\xE2\x82"), replaced + replaced) << "cut off";
  EXPECT_EQ(escaped("\xE2\x82<"), replaced + replaced + "&lt;") << "cut off by markup";
}

TEST(Markup, ElementsHoldMarkupOrText) {
  EXPECT_EQ(element("p", {{"class", "a\"b"}}, "<br>"), "<p class=\"a&quot;b\"><br></p>");
  EXPECT_EQ(textElement("p", {}, "<br>"), "<p>&lt;br&gt;</p>");
  EXPECT_EQ(startTag("meta", {{"charset", "utf-8"}}), "<meta charset=\"utf-8\">");
}

TEST(Markup, CoordinatesAreShort) {
  EXPECT_EQ(coordinate(12.3456), "12.35");
  EXPECT_EQ(coordinate(-100), "-100");
  EXPECT_EQ(coordinate(0.5), "0.5");
  EXPECT_EQ(coordinate(-0.001), "0");
  EXPECT_EQ(coordinate(NAN), "0");
  EXPECT_EQ(pathStep('M', 1.5, -2), "M1.5 -2");
}

}  // namespace
}  // namespace fisheye_calibration::program
