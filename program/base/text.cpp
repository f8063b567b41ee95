#include "base/text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <numeric>

namespace fisheye_calibration::program {
namespace {

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool isBlank(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\v' || c == '\f';
}

// Of a character of several bytes in UTF-8.
bool isContinuation(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

std::string_view withoutPlus(std::string_view text) {
  if (text.size() > 1 && text[0] == '+' && text[1] != '-') {
    text.remove_prefix(1);
  }
  return text;
}

template <typename Value>
std::optional<Value> parseAll(std::string_view text) {
  text = withoutPlus(text);
  Value value{};
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  if (error != std::errc() || stop != end) {
    return std::nullopt;
  }
  return value;
}

template <typename... Arguments>
std::string converted(Arguments... arguments) {
  std::array<char, 512> buffer;  // the longest double in fixed notation has under 400 characters
  const auto [end, error] =
      std::to_chars(buffer.data(), buffer.data() + buffer.size(), arguments...);
  return error == std::errc() ? std::string(buffer.data(), end) : std::string("?");
}

// Levenshtein's distance, row by row: row[j] is that of the first characters of `a` and the first j
// of `b`.
std::size_t editDistance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (const char c : a) {
    std::size_t diagonal = row[0]++;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t replaced = diagonal + (c == b[j - 1] ? 0 : 1);
      diagonal = row[j];
      row[j] = std::min({replaced, row[j] + 1, row[j - 1] + 1});
    }
  }
  return row.back();
}

}  // namespace

std::optional<double> parseNumber(std::string_view text) {
  const std::optional<double> value = parseAll<double>(text);
  return value && std::isfinite(*value) ? value : std::nullopt;
}

std::optional<float> parseFloat(std::string_view text) {
  const std::optional<double> value = parseNumber(text);
  if (!value || std::abs(*value) > static_cast<double>(std::numeric_limits<float>::max())) {
    return std::nullopt;
  }
  return static_cast<float>(*value);
}

std::optional<int> parseInteger(std::string_view text) { return parseAll<int>(text); }

std::string fixed(double value, int decimals) {
  return converted(value, std::chars_format::fixed, decimals);
}

std::string readable(double value, int decimals) {
  return std::abs(value) < 1e7 ? fixed(value, decimals) : general(value, 6);
}

std::string signedTerm(int value) {
  return (value < 0 ? " - " : " + ") + std::to_string(value < 0 ? -value : value);
}

std::string shortest(float value) { return converted(value); }
std::string shortest(double value) { return converted(value); }

std::string general(double value, int significant) {
  return converted(value, std::chars_format::general, significant);
}

std::string roundedToTwo(double value) {
  if (std::abs(value) < 1e-4) {
    return "0";
  }
  return std::abs(value) < 99.5 ? general(value, 2) : fixed(value, 0);
}

std::string_view trimmed(std::string_view text) {
  while (!text.empty() && isBlank(text.front())) {
    text.remove_prefix(1);
  }
  while (!text.empty() && isBlank(text.back())) {
    text.remove_suffix(1);
  }
  return text;
}

std::string lowerCase(std::string_view text) {
  std::string result(text);
  std::transform(result.begin(), result.end(), result.begin(), lower);
  return result;
}

bool equalIgnoringCase(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](char x, char y) { return lower(x) == lower(y); });
}

std::string padLeft(std::string text, std::size_t width) {
  if (text.size() < width) {
    text.insert(0, width - text.size(), ' ');
  }
  return text;
}

std::string padRight(std::string text, std::size_t width) {
  if (text.size() < width) {
    text.append(width - text.size(), ' ');
  }
  return text;
}

std::string joined(const std::vector<std::string>& parts, std::string_view separator) {
  std::string all;
  for (const std::string& part : parts) {
    if (!all.empty()) {
      all += separator;
    }
    all += part;
  }
  return all;
}

std::string shortened(std::string_view text) {
  constexpr std::size_t kLongest = 60;
  constexpr std::string_view kCut = "...";
  std::size_t characters = 0;
  std::size_t keptBytes = text.size();
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (isContinuation(text[i])) {
      continue;
    }
    if (characters == kLongest - kCut.size()) {
      keptBytes = i;
    }
    ++characters;
  }
  const bool cut = characters > kLongest;
  return std::string(cut ? text.substr(0, keptBytes) : text) + std::string(cut ? kCut : "");
}

std::string inQuotes(std::string_view text) {
  std::string result = "\"";
  result += onOneLine(shortened(text));
  result += "\"";
  return result;
}

std::optional<std::string> nearest(std::string_view text,
                                   const std::vector<std::string>& candidates) {
  std::optional<std::string> best;
  std::size_t fewest = std::max<std::size_t>(2, text.size() / 3) + 1;
  for (const std::string& candidate : candidates) {
    const std::size_t distance = editDistance(text, candidate);
    if (distance < fewest) {
      fewest = distance;
      best = candidate;
    }
  }
  return best;
}

std::string onOneLine(std::string_view text) {
  std::string line;
  for (const char c : trimmed(text)) {
    if (!isBlank(c)) {
      line += c;
    } else if (!line.empty() && line.back() != ' ') {
      line += ' ';
    }
  }
  return line;
}

}  // namespace fisheye_calibration::program
