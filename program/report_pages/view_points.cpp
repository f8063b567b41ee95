#include "report_pages/view_points.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

#include "base/text.h"
#include "html/markup.h"
#include "html/table.h"
#include "lens/camera.h"
#include "lens/rotation.h"
#include "report_pages/arrows.h"
#include "report_pages/plan.h"

namespace fisheye_calibration::program {
namespace {

bool isLeftOut(const ViewPoints& view, std::size_t i) {
  return std::find(view.leftOut.begin(), view.leftOut.end(), i) != view.leftOut.end();
}

void project(std::vector<CalibrationPoint>& points, const lens::Camera& camera,
             const lens::Pose& pose) {
  const cv::Matx33d R = lens::rotationFromVector(pose.om);
  for (CalibrationPoint& point : points) {
    const cv::Point2d at = lens::projectPoint(
        camera, R, pose.T, {static_cast<double>(point.Xw), static_cast<double>(point.Yw), 0});
    point.ReprojPtX = at.x;
    point.ReprojPtY = at.y;
    point.ReprojErrX = static_cast<double>(point.ImagePtX) - at.x;
    point.ReprojErrY = static_cast<double>(point.ImagePtY) - at.y;
  }
}

std::string textOf(const CalibrationPoint& point, bool leftOut) {
  return "Point " + std::to_string(point.PointId) + ": X " + shortest(point.Xw) + ", Y " +
         shortest(point.Yw) + " mm; measured at " + fixed(static_cast<double>(point.ImagePtX), 2) +
         ", " + fixed(static_cast<double>(point.ImagePtY), 2) + " px; residual " +
         readable(point.ReprojErrX, 3) + ", " + readable(point.ReprojErrY, 3) + " px, length " +
         readable(std::hypot(point.ReprojErrX, point.ReprojErrY), 3) + " px" +
         (leftOut ? "; contradicts the others" : "");
}

double residualOf(const CalibrationPoint& point) {
  const double length = std::hypot(point.ReprojErrX, point.ReprojErrY);
  return std::isfinite(length) ? length : 0;
}

// Positions in the order of the list.
std::vector<std::size_t> shownPoints(const ViewPoints& view, std::size_t most) {
  std::vector<std::size_t> shown(view.points.size());
  std::iota(shown.begin(), shown.end(), std::size_t{0});
  if (shown.size() > most) {
    std::stable_sort(shown.begin(), shown.end(), [&](std::size_t a, std::size_t b) {
      const auto rank = [&](std::size_t i) {
        return std::pair(isLeftOut(view, i), residualOf(view.points[i]));
      };
      return rank(a) > rank(b);
    });
    shown.resize(most);
    std::sort(shown.begin(), shown.end());
  }
  return shown;
}

// " (the 20 with the largest residuals of 300)"
std::string shareShown(const ViewPoints& view, std::size_t shown) {
  return shown == view.points.size()
             ? ""
             : " (the " + std::to_string(shown) + " with the largest residuals of " +
                   std::to_string(view.points.size()) + ")";
}

}  // namespace

std::vector<ViewPoints> viewPointsOf(const CalibrationReport& report) {
  const robust::RobustCalibration& solved = report.robust.solved;
  std::vector<ViewPoints> views;
  for (std::size_t j = 0; j < report.request.views.size(); ++j) {
    ViewPoints view{.name = report.request.views[j].name,
                    .points = report.request.views[j].points,
                    .leftOut = solved.wrongPoints[j]};
    view.fits =
        std::find(solved.wrongViews.begin(), solved.wrongViews.end(), j) == solved.wrongViews.end();
    if (j == report.request.bedView) {
      view.points = report.chosen.result.points;
    } else if (isSolved(report.robust)) {
      project(view.points, solved.camera, solved.poses[j]);
    } else {
      view.projected = false;
    }
    views.push_back(std::move(view));
  }
  return views;
}

std::size_t mostPointsOf(const ViewPoints& view, const std::vector<ViewPoints>& views) {
  constexpr std::size_t kMost = 1500;  // of about 1.1 kB each, beside pictures of up to 1 MB
  constexpr std::size_t kFewest = 9;   // of a view, however many there are
  std::size_t all = 0;
  for (const ViewPoints& each : views) {
    all += each.points.size();
  }
  return all <= kMost ? view.points.size() : std::max(kFewest, view.points.size() * kMost / all);
}

std::string residualFigure(const ViewPoints& view, const Size& image, std::size_t number,
                           std::size_t most) {
  const Plan plan(pictureArea(image), "px");
  std::vector<Arrow> arrows;
  for (const std::size_t i : shownPoints(view, most)) {
    const CalibrationPoint& point = view.points[i];
    const bool leftOut = isLeftOut(view, i) || !view.fits;
    arrows.push_back(
        {.id = point.PointId,
         .from = {static_cast<double>(point.ImagePtX), static_cast<double>(point.ImagePtY)},
         .length = {point.ReprojErrX, point.ReprojErrY},
         .text = textOf(point, leftOut),
         .conspicuous = leftOut});
  }
  const double magnification = arrowMagnification(plan, arrows);
  const std::string label = "Residuals of " + std::to_string(arrows.size()) + " points of " +
                            view.name + shareShown(view, arrows.size()) + ", enlarged " +
                            general(magnification, 6) + " times";
  return figureMarkup(
      "residuals-" + std::to_string(number),
      plan.drawing(label, plan.axes("x", "y") + arrowsMarkup(plan, arrows, magnification) +
                              arrowScale(plan, magnification, "px")),
      "Each arrow shows, enlarged, by how much a point was measured beside the place at which the "
      "camera should see it; arrows in all directions are noise, neighbours that point the same "
      "way a bent target or a wrong lens.");
}

std::string residualTable(const ViewPoints& view, std::size_t number, std::size_t most) {
  const std::vector<std::size_t> shown = shownPoints(view, most);
  Table table{.caption = "Points of " + view.name + shareShown(view, shown.size()) +
                         " (residual: measured - reprojected)",
              .columns = {{"Point", true},
                          {"X, mm", true},
                          {"Y, mm", true},
                          {"x, px", true},
                          {"y, px", true},
                          {"dx, px", true},
                          {"dy, px", true},
                          {"length, px", true},
                          {"used", false}},
              .rows = {},
              .name = "points-" + std::to_string(number),
              .sortable = true};
  for (const std::size_t i : shown) {
    const CalibrationPoint& point = view.points[i];
    table.rows.push_back({{std::to_string(point.PointId), point.PointId},
                          numberCell(static_cast<double>(point.Xw), 2),
                          numberCell(static_cast<double>(point.Yw), 2),
                          numberCell(static_cast<double>(point.ImagePtX), 2),
                          numberCell(static_cast<double>(point.ImagePtY), 2),
                          numberCell(point.ReprojErrX, 3),
                          numberCell(point.ReprojErrY, 3),
                          numberCell(std::hypot(point.ReprojErrX, point.ReprojErrY), 3),
                          {isLeftOut(view, i) || !view.fits ? "contradicts" : "yes"}});
  }
  return tableMarkup(table);
}

}  // namespace fisheye_calibration::program
