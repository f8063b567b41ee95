#include <algorithm>
#include <opencv2/imgproc.hpp>

#include "base/text.h"
#include "geometry/point_spread.h"
#include "html/markup.h"
#include "html/table.h"
#include "report_pages/plan.h"
#include "report_pages/view_points.h"

namespace fisheye_calibration::program {
namespace {

std::string hullMarkup(const Plan& plan, const std::vector<CalibrationPoint>& points) {
  std::vector<cv::Point2f> positions;
  positions.reserve(points.size());
  for (const CalibrationPoint& point : points) {
    positions.emplace_back(point.ImagePtX, point.ImagePtY);
  }
  std::vector<cv::Point2f> hull;
  cv::convexHull(positions, hull);
  std::string corners;
  for (const cv::Point2f& corner : hull) {
    const cv::Point2d at = plan.position(corner);
    corners += coordinate(at.x) + "," + coordinate(at.y) + " ";
  }
  return element("polygon", {{"class", "hull"}, {"points", corners}}, "");
}

std::string dotsMarkup(const Plan& plan, const std::vector<CalibrationPoint>& points) {
  std::string dots;
  for (const CalibrationPoint& point : points) {
    const cv::Point2d at =
        plan.position({static_cast<double>(point.ImagePtX), static_cast<double>(point.ImagePtY)});
    dots += element(
        "circle",
        {{"class", "dot"}, {"cx", coordinate(at.x)}, {"cy", coordinate(at.y)}, {"r", "2.5"}}, "");
  }
  return dots;
}

}  // namespace

std::string coverageFigure(const std::vector<ViewPoints>& views, const Size& image) {
  const Plan plan(pictureArea(image), "px");
  std::string hulls;
  std::string dots;
  std::vector<CalibrationPoint> all;
  Table table{.caption = "What the points cover of the picture",
              .columns = {{"View"}, {"Points", true}, {"Left out", true}, {"Covered, %", true}},
              .rows = {},
              .name = "coverage"};
  const auto addRow = [&](const std::string& name, const std::vector<CalibrationPoint>& points,
                          std::size_t leftOut) {
    table.rows.push_back({{name},
                          {std::to_string(points.size()), static_cast<double>(points.size())},
                          {std::to_string(leftOut), static_cast<double>(leftOut)},
                          numberCell(100 * coverage(points, image), 0)});
  };
  std::size_t leftOut = 0;
  for (const ViewPoints& view : views) {
    hulls += hullMarkup(plan, view.points);
    dots += dotsMarkup(plan, view.points);
    addRow(view.name, view.points, view.leftOut.size());
    leftOut += view.leftOut.size();
    all.insert(all.end(), view.points.begin(), view.points.end());
  }
  if (views.size() > 1) {
    addRow("all views", all, leftOut);
  }
  const std::string label =
      "Where " + std::to_string(all.size()) + " points of " + std::to_string(views.size()) +
      " views lie in the picture; they cover " + fixed(100 * coverage(all, image), 0) + " % of it";
  return figureMarkup("coverage-map", plan.drawing(label, hulls + dots + plan.axes("x", "y")),
                      "Each dot is a measured point in the camera's picture and each tinted area "
                      "what one view "
                      "covers; where there is no dot, the lens is only extrapolated.") +
         tableMarkup(table);
}

}  // namespace fisheye_calibration::program
