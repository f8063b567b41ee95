#include "html/markup.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "base/text.h"

namespace fisheye_calibration::program {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";  // U+FFFD

bool isContinuation(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; }

// The bytes of the character of several bytes that the text starts with; 0 if it is no UTF-8 (RFC
// 3629): too long, a surrogate or beyond U+10FFFF.
std::size_t multibyteLength(std::string_view text) {
  const auto first = static_cast<unsigned char>(text[0]);
  std::size_t length = 0;
  unsigned char least = 0x80;  // of the second byte
  unsigned char most = 0xBF;
  if (first >= 0xC2 && first <= 0xDF) {
    length = 2;
  } else if (first >= 0xE0 && first <= 0xEF) {
    length = 3;
    least = first == 0xE0 ? 0xA0 : least;
    most = first == 0xED ? 0x9F : most;
  } else if (first >= 0xF0 && first <= 0xF4) {
    length = 4;
    least = first == 0xF0 ? 0x90 : least;
    most = first == 0xF4 ? 0x8F : most;
  }
  if (length == 0 || text.size() < length) {
    return 0;
  }
  const auto second = static_cast<unsigned char>(text[1]);
  const std::string_view rest = text.substr(1, length - 1);
  const bool good =
      second >= least && second <= most && std::all_of(rest.begin(), rest.end(), isContinuation);
  return good ? length : 0;
}

std::string_view asciiText(std::string_view character) {
  switch (character[0]) {
    case '&':
      return "&amp;";
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '"':
      return "&quot;";
    case '\'':
      return "&#39;";
    case '\n':
    case '\t':
      return character;
    default:
      return static_cast<unsigned char>(character[0]) < 0x20 || character[0] == 0x7F ? kReplacement
                                                                                     : character;
  }
}

}  // namespace

std::string escaped(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  while (!text.empty()) {
    std::size_t length = 1;
    if (static_cast<unsigned char>(text[0]) < 0x80) {
      result += asciiText(text.substr(0, 1));
    } else if (const std::size_t found = multibyteLength(text); found > 0) {
      length = found;
      result += text.substr(0, length);
    } else {
      result += kReplacement;
    }
    text.remove_prefix(length);
  }
  return result;
}

std::string startTag(std::string_view name, const Attributes& attributes) {
  std::string tag = "<";
  tag += name;
  for (const auto& [key, value] : attributes) {
    tag += ' ';
    tag += key;
    tag += "=\"";
    tag += escaped(value);
    tag += '"';
  }
  tag += '>';
  return tag;
}

std::string element(std::string_view name, const Attributes& attributes, std::string_view content) {
  std::string result = startTag(name, attributes);
  result += content;
  result += "</";
  result += name;
  result += '>';
  return result;
}

std::string textElement(std::string_view name, const Attributes& attributes,
                        std::string_view text) {
  return element(name, attributes, escaped(text));
}

std::string pathStep(char command, double x, double y) {
  std::string step(1, command);
  step += coordinate(x);
  step += ' ';
  step += coordinate(y);
  return step;
}

std::string coordinate(double value) {
  if (!std::isfinite(value)) {
    return "0";
  }
  std::string text = fixed(value, 2);
  text.erase(text.find_last_not_of('0') + 1);
  if (text.back() == '.') {
    text.pop_back();
  }
  return text == "-0" ? "0" : text;
}

}  // namespace fisheye_calibration::program
