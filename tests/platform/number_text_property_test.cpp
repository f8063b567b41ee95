// Numbers as text, against the C library: its own conversions in the "C" locale, in which the tests
// run, are the model.
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <bit>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "platform/number_text.h"

using namespace fisheye_calibration;

namespace {

using platform::fixedText;
using platform::parseReal;

RC_GTEST_PROP(NumberTextProperty, WritesWhatPrintfWrites, ()) {
  const double value = std::bit_cast<double>(*rc::gen::arbitrary<std::uint64_t>());
  char expected[400];
  std::snprintf(expected, sizeof(expected), "%.15f", value);
  RC_ASSERT(fixedText(value, 15) == expected);
  std::snprintf(expected, sizeof(expected), "%f", value);
  RC_ASSERT(fixedText(value, 6) == expected);
}

RC_GTEST_PROP(NumberTextProperty, ReadsWhatAtofReads, ()) {
  const auto pieces =
      *rc::gen::container<std::vector<std::string>>(rc::gen::elementOf(std::vector<std::string>{
          "0", "1", "9", "25",  ".",   "e", "E", "-",        "+",   "x",   "0x",
          "p", "a", "f", "inf", "nan", " ", ",", "00000000", "e30", "e-30"}));
  std::string text;
  for (const std::string& piece : pieces) {
    text += piece;
  }
  const double expected = std::atof(text.c_str());
  const double value = parseReal(text);
  const bool same = std::isnan(expected) ? std::isnan(value)
                                         : std::bit_cast<std::uint64_t>(value) ==
                                               std::bit_cast<std::uint64_t>(expected);
  RC_ASSERT(same);
}

}  // namespace
