#include "platform/number_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <system_error>

namespace fisheye_calibration::platform {
namespace {

std::string_view withoutLeadingSpace(std::string_view text) {
  return text.substr(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
}

// Removes a leading sign; returns true for '-'.
bool takeSign(std::string_view& text) {
  const bool negative = text.starts_with('-');
  if (negative || text.starts_with('+')) {
    text.remove_prefix(1);
  }
  return negative;
}

bool isHexDigit(char c) {
  return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

// Removes a leading "0x" if a hexadecimal number follows it; returns true if it did.
bool takeHexPrefix(std::string_view& text) {
  if (!text.starts_with("0x") && !text.starts_with("0X")) {
    return false;
  }
  const std::string_view digits = text.substr(text.substr(2).starts_with('.') ? 3 : 2);
  if (digits.empty() || !isHexDigit(digits.front())) {
    return false;
  }
  text.remove_prefix(2);
  return true;
}

// For a number outside the range of double: whether it is too large rather than too small.
bool isTooLarge(std::string_view number, bool hexadecimal) {
  const std::size_t exponentMark =
      std::min(number.find_first_of(hexadecimal ? "pP" : "eE"), number.size());
  // Digits from the first nonzero one to the point; if the point comes first, minus the zeros
  // between them.
  long long magnitude = 0;
  bool behindPoint = false;
  bool significant = false;
  for (const char c : number.substr(0, exponentMark)) {
    if (c == '.') {
      behindPoint = true;
      continue;
    }
    significant = significant || c != '0';
    if (significant && !behindPoint) {
      ++magnitude;
    } else if (!significant && behindPoint) {
      --magnitude;
    }
  }
  std::string_view exponent = number.substr(exponentMark);
  exponent.remove_prefix(exponent.empty() ? 0 : 1);
  return magnitude * (hexadecimal ? 4 : 1) + parseInteger(exponent) > 0;
}

}  // namespace

std::string fixedText(double value, int decimals) {
  if (!std::isfinite(value)) {
    return std::string(std::signbit(value) ? "-" : "") + (std::isnan(value) ? "nan" : "inf");
  }
  // 309 digits, point and decimals: 326 characters for fifteen decimals.
  std::array<char, 512> buffer;
  const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value,
                                    std::chars_format::fixed, decimals);
  return {buffer.data(), result.ptr};
}

double parseReal(std::string_view text) {
  std::string_view number = withoutLeadingSpace(text);
  const bool negative = takeSign(number);
  if (number.starts_with('-')) {
    return 0;  // a second sign
  }
  const bool hexadecimal = takeHexPrefix(number);
  if (hexadecimal) {
    // libstdc++ would accept "p+-1" as an exponent.
    number = number.substr(0, std::min(number.find("p+-"), number.find("P+-")));
  }
  double value = 0;
  const auto [end, error] =
      std::from_chars(number.data(), number.data() + number.size(), value,
                      hexadecimal ? std::chars_format::hex : std::chars_format::general);
  if (error == std::errc::invalid_argument) {
    return 0;
  }
  if (error == std::errc::result_out_of_range) {
    const std::string_view used = number.substr(0, static_cast<std::size_t>(end - number.data()));
    value = isTooLarge(used, hexadecimal) ? std::numeric_limits<double>::infinity() : 0;
  }
  return negative ? -value : value;
}

std::int32_t parseInteger(std::string_view text) {
  std::string_view number = withoutLeadingSpace(text);
  const std::string_view withSign = number;
  const bool negative = takeSign(number);
  if (number.starts_with('-')) {
    return 0;  // a second sign
  }
  const std::string_view digits = negative ? withSign : number;
  std::int32_t value = 0;
  const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), value);
  if (result.ec == std::errc::result_out_of_range) {
    return negative ? std::numeric_limits<std::int32_t>::min()
                    : std::numeric_limits<std::int32_t>::max();
  }
  return value;
}

}  // namespace fisheye_calibration::platform
