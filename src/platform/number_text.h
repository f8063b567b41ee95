// Numbers as text, the same in every locale: neither the C library's nor C++'s is looked at.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace fisheye_calibration::platform {

// What printf("%.<decimals>f") gives in the "C" locale; "inf" and "nan", with '-' where the sign
// bit is set.
std::string fixedText(double value, int decimals);

// What atof gives in the "C" locale: leading white space and trailing text do not count,
// hexadecimal numbers, "inf" and "nan" are understood, text that is no number is 0. Beyond the
// range the result is infinite or 0.
double parseReal(std::string_view text);

// What atoi gives; beyond 32 bits the nearest number that there is.
std::int32_t parseInteger(std::string_view text);

}  // namespace fisheye_calibration::platform
