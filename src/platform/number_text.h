// Numbers as text, independent of the locale, C's as well as C++'s.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace fisheye_calibration::platform {

// The same text as printf("%.<decimals>f") in the "C" locale; infinity and NaN are "inf" and "nan",
// with '-' if the sign bit is set.
std::string fixedText(double value, int decimals);

// The same number as atof in the "C" locale: leading white space and trailing text are ignored;
// hexadecimal numbers, "inf" and "nan" are accepted; other text gives 0. Out of range, the result
// is infinite or 0.
double parseReal(std::string_view text);

// The same number as atoi; out of range, the nearest 32-bit one.
std::int32_t parseInteger(std::string_view text);

}  // namespace fisheye_calibration::platform
