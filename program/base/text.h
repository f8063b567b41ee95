// Numbers to and from text, independent of the locale, and plain text helpers.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace fisheye_calibration::program {

// What some editors write before text in UTF-8.
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// The whole text as a finite number; a leading '+' is allowed. Nothing for any other text, such as
// "nan", "inf" and numbers beyond the range of a double.
std::optional<double> parseNumber(std::string_view text);

// As parseNumber, and within the range of a 32-bit float.
std::optional<float> parseFloat(std::string_view text);

std::optional<int> parseInteger(std::string_view text);

// With a fixed number of decimals.
std::string fixed(double value, int decimals);

// As fixed, but with an exponent from ten million on, where that would be very long.
std::string readable(double value, int decimals);

// The shortest text that reads back as the same value.
std::string shortest(float value);
std::string shortest(double value);

// " + 8" or " - 8", to follow another term.
std::string signedTerm(int value);

// `significant` digits, no trailing zeros.
std::string general(double value, int significant);

// Two significant digits, whole numbers from 100 on and 0 below 0.0001: "0.034", "1.1", "25",
// "146". For errors, which nobody needs more exactly.
std::string roundedToTwo(double value);

std::string_view trimmed(std::string_view text);
std::string lowerCase(std::string_view text);  // of ASCII letters
bool equalIgnoringCase(std::string_view a, std::string_view b);
std::string padLeft(std::string text, std::size_t width);
std::string padRight(std::string text, std::size_t width);
std::string joined(const std::vector<std::string>& parts, std::string_view separator);

// Text of more than 60 characters is cut and ends in "...".
std::string shortened(std::string_view text);

// The shortened text in quotation marks, for messages.
std::string inQuotes(std::string_view text);

// The candidate that takes the fewest inserted, deleted or replaced characters to get from `text`;
// nothing if that is more than two and more than a third of its length.
std::optional<std::string> nearest(std::string_view text,
                                   const std::vector<std::string>& candidates);

// The text with every run of blanks and line breaks replaced by one blank.
std::string onOneLine(std::string_view text);

}  // namespace fisheye_calibration::program
