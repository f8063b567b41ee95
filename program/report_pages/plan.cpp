#include "report_pages/plan.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "base/nice_number.h"
#include "base/text.h"
#include "html/markup.h"

namespace fisheye_calibration::program {
namespace {

constexpr double kLongSide = 720;
constexpr double kLeft = 62;
constexpr double kTop = 14;
constexpr double kRight = 22;
constexpr double kBottom = 72;
constexpr double kTicks = 9;  // about so many on the longer side

}  // namespace

Plan::Plan(const cv::Rect2d& shown, std::string unit, double legend)
    : shown_(shown), unit_(std::move(unit)), legend_(legend) {
  scale_ = kLongSide / std::max({shown.width, shown.height, 1e-9});
  frame_ = {kLeft, kTop, shown.width * scale_, shown.height * scale_};
}

cv::Point2d Plan::position(cv::Point2d point) const {
  return {frame_.x + (point.x - shown_.x) * scale_, frame_.y + (point.y - shown_.y) * scale_};
}

std::string Plan::axes(std::string_view xName, std::string_view yName) const {
  std::string markup = element("rect",
                               {{"class", "frame"},
                                {"x", coordinate(frame_.x)},
                                {"y", coordinate(frame_.y)},
                                {"width", coordinate(frame_.width)},
                                {"height", coordinate(frame_.height)}},
                               "");
  const double step = niceAbove(std::max(shown_.width, shown_.height) / kTicks);
  const cv::Point2d last = shown_.br();
  for (double x = std::ceil(shown_.x / step) * step; x <= last.x; x += step) {
    const cv::Point2d at = position({x, last.y});
    markup += svgLine(at, at + cv::Point2d(0, 5), "tick");
    markup += svgText(at + cv::Point2d(0, 18), general(x + 0.0, 6), "middle");
  }
  for (double y = std::ceil(shown_.y / step) * step; y <= last.y; y += step) {
    const cv::Point2d at = position({shown_.x, y});
    markup += svgLine(at, at - cv::Point2d(5, 0), "tick");
    markup += svgText(at + cv::Point2d(-9, 4), general(y + 0.0, 6), "end");
  }
  const cv::Point2d corner(frame_.br().x, frame_.br().y + 42);
  markup += svgText(
      corner, std::string(xName) + " to the right, " + std::string(yName) + " downwards, " + unit_,
      "end soft");
  return markup;
}

std::string Plan::image(const cv::Rect2d& place, const std::string& data) const {
  const cv::Point2d corner = position(place.tl());
  return element("image",
                 {{"x", coordinate(corner.x)},
                  {"y", coordinate(corner.y)},
                  {"width", coordinate(place.width * scale_)},
                  {"height", coordinate(place.height * scale_)},
                  {"preserveAspectRatio", "none"},
                  {"href", data}},
                 "");
}

std::string Plan::drawing(const std::string& label, std::string_view content) const {
  const double width = kLeft + frame_.width + kRight + legend_;
  const double height = kTop + std::max(frame_.height, legend_ > 0 ? 330.0 : 120.0) + kBottom;
  return element("svg",
                 {{"viewBox", "0 0 " + coordinate(width) + " " + coordinate(height)},
                  {"width", coordinate(width)},
                  {"height", coordinate(height)},
                  {"role", "group"},
                  {"aria-label", label}},
                 content) +
         "\n";
}

std::string svgText(cv::Point2d at, std::string_view text, std::string_view style) {
  return textElement(
      "text", {{"x", coordinate(at.x)}, {"y", coordinate(at.y)}, {"class", std::string(style)}},
      text);
}

std::string svgLine(cv::Point2d from, cv::Point2d to, std::string_view style) {
  return element("line",
                 {{"x1", coordinate(from.x)},
                  {"y1", coordinate(from.y)},
                  {"x2", coordinate(to.x)},
                  {"y2", coordinate(to.y)},
                  {"class", std::string(style)}},
                 "");
}

std::string figureMarkup(const std::string& id, std::string_view drawing,
                         const std::string& howToRead) {
  return element("figure", {{"id", id}},
                 std::string(drawing) +
                     element("figcaption", {},
                             element("strong", {}, "How to read it: ") + escaped(howToRead))) +
         "\n";
}

}  // namespace fisheye_calibration::program
