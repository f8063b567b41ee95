#include "report_pages/arrows.h"

#include <algorithm>
#include <cmath>

#include "base/nice_number.h"
#include "base/text.h"
#include "html/markup.h"

namespace fisheye_calibration::program {
namespace {

double lengthOf(const Arrow& arrow) { return std::hypot(arrow.length.x, arrow.length.y); }

double longestSide(const Plan& plan) {
  return std::min(plan.frame().width, plan.frame().height) / 12;
}

// A shaft with a head of two strokes.
std::string arrowPath(cv::Point2d from, cv::Point2d to) {
  const cv::Point2d along = to - from;
  const double length = std::hypot(along.x, along.y);
  std::string path = pathStep('M', from.x, from.y) + pathStep('L', to.x, to.y);
  if (length > 3) {
    const cv::Point2d unit = along / length;
    const cv::Point2d side(-unit.y, unit.x);
    const double head = std::min(6.0, length / 2);
    const cv::Point2d back = to - head * unit;
    const cv::Point2d left = back + 0.5 * head * side;
    const cv::Point2d right = back - 0.5 * head * side;
    path +=
        pathStep('M', left.x, left.y) + pathStep('L', to.x, to.y) + pathStep('L', right.x, right.y);
  }
  return path;
}

std::string circle(cv::Point2d at, double radius, const std::string& style) {
  return element("circle",
                 {{"cx", coordinate(at.x)},
                  {"cy", coordinate(at.y)},
                  {"r", coordinate(radius)},
                  {"class", style}},
                 "");
}

}  // namespace

double arrowMagnification(const Plan& plan, const std::vector<Arrow>& arrows) {
  double longest = 0;
  for (const Arrow& arrow : arrows) {
    // Those that stand out have a colour of their own, and would leave nothing to see of the
    // others.
    if (std::isfinite(lengthOf(arrow)) && !arrow.conspicuous) {
      longest = std::max(longest, lengthOf(arrow));
    }
  }
  if (longest == 0) {
    for (const Arrow& arrow : arrows) {
      longest = std::max(longest, std::isfinite(lengthOf(arrow)) ? lengthOf(arrow) : 0);
    }
  }
  return longest > 0 ? niceBelow(longestSide(plan) / (longest * plan.scale())) : 1;
}

std::string arrowsMarkup(const Plan& plan, const std::vector<Arrow>& arrows, double magnification) {
  std::string markup;
  for (const Arrow& arrow : arrows) {
    const cv::Point2d from = plan.position(arrow.from);
    std::string content = textElement("title", {}, arrow.text) + circle(from, 9, "reach");
    content += circle(from, 2.5, "dot");
    if (std::isfinite(lengthOf(arrow))) {
      const double drawn = magnification * plan.scale() * lengthOf(arrow);
      const double share = drawn > 0 ? std::min(1.0, 3 * longestSide(plan) / drawn) : 1;
      const cv::Point2d to = from + share * magnification * plan.scale() * arrow.length;
      content += element("path", {{"class", "shaft"}, {"d", arrowPath(from, to)}}, "");
    }
    markup += element("g",
                      {{"class", arrow.conspicuous ? "point conspicuous" : "point"},
                       {"role", "img"},
                       {"aria-label", arrow.text},
                       {"data-id", std::to_string(arrow.id)}},
                      content) +
              "\n";
  }
  return markup;
}

std::string arrowScale(const Plan& plan, double magnification, const std::string& unit) {
  const double length = niceBelow(longestSide(plan) / (magnification * plan.scale()));
  const cv::Point2d from(plan.frame().x, plan.frame().br().y + 64);
  const cv::Point2d to = from + cv::Point2d(length * magnification * plan.scale(), 0);
  return element("g", {{"class", "scale"}},
                 element("path", {{"class", "shaft"}, {"d", arrowPath(from, to)}}, "") +
                     svgText(to + cv::Point2d(8, 4),
                             general(length, 3) + " " + unit + " (arrows " +
                                 general(magnification, 6) + " times enlarged)",
                             "start"));
}

}  // namespace fisheye_calibration::program
