#include "commands/option_values.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

#include "base/failure.h"
#include "base/text.h"

namespace fisheye_calibration::program {
namespace {

[[noreturn]] void failOption(const std::string& option, const std::string& wanted,
                             const std::string& text) {
  failBadInput(option + ": " + wanted + ", not " + inQuotes(text));
}

}  // namespace

Size parseSize(const std::string& option, const std::string& text, int smallest, int largest) {
  const std::size_t cross = text.find_first_of("xX");
  if (cross != std::string::npos) {
    const std::optional<int> width = parseInteger(std::string_view(text).substr(0, cross));
    const std::optional<int> height = parseInteger(std::string_view(text).substr(cross + 1));
    const auto inRange = [&](int side) { return side >= smallest && side <= largest; };
    if (width && height && inRange(*width) && inRange(*height)) {
      return {.width = *width, .height = *height};
    }
  }
  failOption(option,
             "give two numbers from " + std::to_string(smallest) + " to " +
                 std::to_string(largest) + " as WIDTHxHEIGHT",
             text);
}

Size parseImageSize(const std::string& option, const std::string& text) {
  return parseSize(option, text, 1, kLargestImageSide);
}

Pair parsePair(const std::string& option, const std::string& text) {
  const std::size_t comma = text.find(',');
  if (comma != std::string::npos) {
    const std::optional<float> first = parseFloat(trimmed(std::string_view(text).substr(0, comma)));
    const std::optional<float> second =
        parseFloat(trimmed(std::string_view(text).substr(comma + 1)));
    if (first && second) {
      return {.first = *first, .second = *second};
    }
  }
  failOption(option, "give two numbers as X,Y", text);
}

cv::Rect2d parseArea(const std::string& option, const std::string& text) {
  constexpr double kSmallestSide = 0.001;
  constexpr double kFarthest = 1e6;
  std::vector<double> values;
  std::string_view rest = text;
  for (const std::string_view separator : {",", ",", "xX", ""}) {
    const std::size_t end = separator.empty() ? rest.size() : rest.find_first_of(separator);
    const auto value =
        end == std::string_view::npos ? std::nullopt : parseNumber(trimmed(rest.substr(0, end)));
    if (!value || !(std::abs(*value) <= kFarthest)) {
      break;
    }
    values.push_back(*value);
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  if (values.size() == 4 && values[2] >= kSmallestSide && values[3] >= kSmallestSide) {
    return {values[0], values[1], values[2], values[3]};
  }
  failOption(option, "give a corner and a size of at most a million as X,Y,WIDTHxHEIGHT", text);
}

double parsePositiveNumber(const std::string& option, const std::string& text) {
  const std::optional<double> value = parseNumber(trimmed(text));
  if (value && *value > 0) {
    return *value;
  }
  failOption(option, "give a number greater than 0", text);
}

float parsePositive(const std::string& option, const std::string& text) {
  const std::optional<float> value = parseFloat(trimmed(text));
  if (value && *value > 0) {
    return *value;
  }
  failOption(option, "give a number greater than 0", text);
}

}  // namespace fisheye_calibration::program
