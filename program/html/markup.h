// Pieces of HTML and SVG. Text and the values of attributes are always escaped, so names of files
// and headings of tables may hold anything.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace fisheye_calibration::program {

using Attributes = std::vector<std::pair<std::string_view, std::string>>;

// The text as it stands between tags or within a quoted attribute. Bytes that are not UTF-8, and
// control characters but line breaks and tabs, become U+FFFD.
std::string escaped(std::string_view text);

// <name attribute="value" ...>content</name>; the content is markup.
std::string element(std::string_view name, const Attributes& attributes, std::string_view content);

// The same with text as content.
std::string textElement(std::string_view name, const Attributes& attributes, std::string_view text);

// <name attribute="value" ...>, and no end: for elements without content in HTML.
std::string startTag(std::string_view name, const Attributes& attributes);

// A coordinate of a drawing: two decimals at most, 0 for what is not a number.
std::string coordinate(double value);

// A step of a path's data: 'M' moves to the place, 'L' draws a line to it.
std::string pathStep(char command, double x, double y);

}  // namespace fisheye_calibration::program
