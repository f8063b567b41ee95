#include "report_pages/bed_map.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <utility>
#include <vector>

#include "base/text.h"
#include "html/markup.h"
#include "html/picture_data.h"
#include "report_pages/plan.h"

namespace fisheye_calibration::program {
namespace {

constexpr double kLegend = 150;
constexpr double kLegendHeight = 260;

using Segment = std::pair<cv::Point2d, cv::Point2d>;

struct Corner {
  cv::Point2d at;
  double error;
};

cv::Point2d crossing(const Corner& a, const Corner& b, double level) {
  return a.at + (b.at - a.at) * ((level - a.error) / (b.error - a.error));
}

std::string contourMarkup(const Plan& plan, const AccuracyMap& map, double level) {
  const std::vector<Segment> segments = contourAt(map, level);
  if (segments.empty()) {
    return "";
  }
  std::string path;
  for (const auto& [from, to] : segments) {
    const cv::Point2d a = plan.position(from);
    const cv::Point2d b = plan.position(to);
    path += pathStep('M', a.x, a.y) + pathStep('L', b.x, b.y);
  }
  std::string markup = element("path", {{"class", "contour-rim"}, {"d", path}}, "") +
                       element("path", {{"class", "contour"}, {"d", path}}, "");
  if (segments.size() > 8) {
    const cv::Point2d at = plan.position(segments[segments.size() / 2].first);
    markup += svgText(at + cv::Point2d(0, 4), roundedToTwo(level), "middle contour-label");
  }
  return markup;
}

std::string legendMarkup(const Plan& plan, const std::vector<double>& levels) {
  const cv::Point2d corner(plan.frame().br().x + 30, plan.frame().y + 34);
  std::string markup = svgText(corner - cv::Point2d(0, 20), "error (95 %), mm", "start");
  markup += element("image",
                    {{"x", coordinate(corner.x)},
                     {"y", coordinate(corner.y)},
                     {"width", "26"},
                     {"height", coordinate(kLegendHeight)},
                     {"preserveAspectRatio", "none"},
                     {"href", pngData(accuracyScale({2, 128}))}},
                    "");
  for (const double level : levels) {
    const double y = corner.y + (1 - levelShare(level, levels)) * kLegendHeight;
    markup += svgLine({corner.x + 26, y}, {corner.x + 32, y}, "tick");
    markup += svgText({corner.x + 38, y + 4}, roundedToTwo(level), "start");
  }
  const cv::Point2d key(corner.x + 8, corner.y + kLegendHeight + 24);
  markup += element(
      "circle",
      {{"cx", coordinate(key.x)}, {"cy", coordinate(key.y)}, {"r", "3"}, {"class", "target"}}, "");
  return markup + svgText(key + cv::Point2d(12, 4), "target point", "start");
}

}  // namespace

std::vector<Segment> contourAt(const AccuracyMap& map, double level) {
  std::vector<Segment> segments;
  const auto cornerAt = [&](int column, int row) {
    const std::size_t i =
        static_cast<std::size_t>(row) * static_cast<std::size_t>(map.grid.columns) +
        static_cast<std::size_t>(column);
    return Corner{map.grid.pointAt(column, row), map.errors[i]};
  };
  for (int row = 0; row + 1 < map.grid.rows; ++row) {
    for (int column = 0; column + 1 < map.grid.columns; ++column) {
      const std::array<Corner, 4> corners = {cornerAt(column, row), cornerAt(column + 1, row),
                                             cornerAt(column + 1, row + 1),
                                             cornerAt(column, row + 1)};
      if (std::any_of(corners.begin(), corners.end(),
                      [](const Corner& corner) { return std::isnan(corner.error); })) {
        continue;
      }
      std::vector<cv::Point2d> ends;
      for (std::size_t i = 0; i < 4; ++i) {
        const Corner& a = corners[i];
        const Corner& b = corners[(i + 1) % 4];
        if ((a.error < level) != (b.error < level)) {
          ends.push_back(crossing(a, b, level));
        }
      }
      for (std::size_t i = 0; i + 1 < ends.size(); i += 2) {
        segments.emplace_back(ends[i], ends[i + 1]);
      }
    }
  }
  return segments;
}

std::string bedMapFigure(const AccuracyMap& map) {
  const std::vector<double> levels = contourLevels(map.errors);
  const Plan plan(map.grid.area, "mm", kLegend);
  std::string content;
  if (!levels.empty()) {
    const cv::Size size(std::max(1, static_cast<int>(std::lround(plan.frame().width / 2))),
                        std::max(1, static_cast<int>(std::lround(plan.frame().height / 2))));
    content += plan.image(map.grid.area, pngData(accuracyColours(map, size)));
    for (const double level : levels) {
      content += contourMarkup(plan, map, level);
    }
    content += legendMarkup(plan, levels);
  }
  for (const cv::Point2d& point : map.target) {
    if (map.grid.area.contains(point)) {
      const cv::Point2d at = plan.position(point);
      content += element(
          "circle",
          {{"cx", coordinate(at.x)}, {"cy", coordinate(at.y)}, {"r", "2.5"}, {"class", "target"}},
          "");
    }
  }
  content += plan.axes("X", "Y");
  const std::string label = "Map of the bed error: " + roundedToTwo(map.insideTarget) +
                            " mm inside the target, " + roundedToTwo(map.onBed) + " mm on the bed";
  return figureMarkup(
      "bed-error-map", plan.drawing(label, content),
      "The brighter a place of the bed, the less a position measured there is off; along a line "
      "the "
      "error is the number on it, in mm, and where the map is blank the camera does "
      "not see the bed.");
}

}  // namespace fisheye_calibration::program
