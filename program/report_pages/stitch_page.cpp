#include "report_pages/stitch_page.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "base/nice_number.h"
#include "base/text.h"
#include "geometry/bed_grid.h"
#include "geometry/metric_picture.h"
#include "html/markup.h"
#include "html/table.h"
#include "report_pages/arrows.h"
#include "report_pages/corrected_figure.h"
#include "report_pages/page.h"
#include "report_pages/plan.h"

namespace fisheye_calibration::program {
namespace {

constexpr double kUnits = 800;           // of the picture's drawing, along the longer side
constexpr std::size_t kSeamSteps = 200;  // points of a line of the seam

double pixelOf(const StitchPage& page) { return static_cast<double>(page.record.Pixel); }

// From the place in the left view to that in the right one, mm on the bed.
cv::Point2d shiftOf(const StitchPage& page, const Agreement& at) {
  const MetricPicture metric = metricPicture(page.record);
  return metric.bedAt(at.right) - metric.bedAt(at.left);
}

std::string headMarkup(const StitchPage& page) {
  const double unit = pixelOf(page);
  const double rms = page.agreement.empty()
                         ? std::nan("")
                         : rootMeanSquare(page.agreement, &Agreement::apart) * unit;
  const double worst = page.agreement.empty() ? std::nan("") : worstApart(page.agreement) * unit;
  const std::string text = !page.trusted ? "the stitched picture is not to be trusted"
                           : !std::isfinite(worst)
                               ? "no shared point tells how well the views agree"
                               : "the views agree within " + roundedToTwo(worst) + " mm";
  std::string head =
      textElement("p",
                  {{"class", page.trusted ? "verdict text-good" : "verdict text-bad"},
                   {"data-verdict", page.trusted ? "good" : "bad"}},
                  text);
  head += element("dl", {{"class", "readings"}},
                  reading("rms", "apart (RMS of the shared points)", rms, "mm") +
                      reading("worst", "apart (worst point)", worst, "mm") +
                      reading("pixel", "a pixel of the picture", unit, "mm"));
  for (const std::string& warning : page.warnings) {
    head += notice(page.trusted ? Tone::kWarning : Tone::kBad, warning);
  }
  return head;
}

std::string textOf(const StitchPage& page, const Agreement& at) {
  const cv::Point2d shift = shiftOf(page, at);
  const double unit = pixelOf(page);
  return "Point " + std::to_string(at.pointId) + ": " + fixed(at.apart * unit, 3) +
         " mm apart, right view " + fixed(shift.x, 3) + " mm in X and " + fixed(shift.y, 3) +
         " mm in Y from the left one; from the bed's point: left " + fixed(at.leftError * unit, 3) +
         " mm, right " + fixed(at.rightError * unit, 3) + " mm";
}

// The box of the shared points with a fifth of its longer side around it; without points, all of
// the canvas.
cv::Rect2d aroundPoints(const StitchPage& page, const MetricPicture& metric) {
  std::vector<cv::Point2d> places;
  for (const Agreement& at : page.agreement) {
    places.push_back(metric.bedAt(at.left));
  }
  if (places.empty()) {
    places = {metric.bedAt({-0.5, -0.5}),
              metric.bedAt({page.canvas.cols - 0.5, page.canvas.rows - 0.5})};
  }
  const cv::Rect2d box = boxAround(places);
  const double rim = std::max(0.2 * std::max(box.width, box.height), 10 * metric.pixel);
  return {box.x - rim, box.y - rim, box.width + 2 * rim, box.height + 2 * rim};
}

std::string arrowFigure(const StitchPage& page) {
  const MetricPicture metric = metricPicture(page.record);
  const Plan plan(aroundPoints(page, metric), "mm");
  std::vector<Arrow> arrows;
  for (const Agreement& at : page.agreement) {
    arrows.push_back({.id = at.pointId,
                      .from = metric.bedAt(at.left),
                      .length = shiftOf(page, at),
                      .text = textOf(page, at)});
  }
  const double magnification = arrowMagnification(plan, arrows);
  const std::string label = "Disagreement of the two views at " + std::to_string(arrows.size()) +
                            " shared points on the bed, enlarged " + general(magnification, 6) +
                            " times";
  return figureMarkup(
      "agreement-arrows",
      plan.drawing(label, plan.axes("X", "Y") + arrowsMarkup(plan, arrows, magnification) +
                              arrowScale(plan, magnification, "mm")),
      "Each arrow leads, enlarged, from where the left camera's view shows a point of the bed to "
      "where the right one's shows it; short arrows mean that edges go on across the seam.");
}

std::string seamPath(const StitchPage& page, double scale, int SeamRow::*column) {
  std::string path;
  const std::size_t step = std::max<std::size_t>(1, page.seam.size() / kSeamSteps);
  bool drawing = false;
  for (std::size_t y = 0; y < page.seam.size(); y += step) {
    if (page.seam[y]) {
      path += pathStep(drawing ? 'L' : 'M', (*page.seam[y].*column + 0.5) * scale,
                       (static_cast<double>(y) + page.seamOffset + 0.5) * scale);
    }
    drawing = page.seam[y].has_value();
  }
  return path;
}

std::string seamFigure(const StitchPage& page) {
  const double scale = kUnits / std::max(page.canvas.cols, page.canvas.rows);
  const std::string content =
      element("path", {{"class", "seam-begin"}, {"d", seamPath(page, scale, &SeamRow::begin)}},
              "") +
      element("path", {{"class", "seam-end"}, {"d", seamPath(page, scale, &SeamRow::end)}}, "");
  const std::string label = "Stitched picture of " + page.leftName + " and " + page.rightName +
                            " with the strip in which they are blended";
  return figureMarkup(
      "seam-picture", griddedPicture(page.canvas, metricPicture(page.record), label, content),
      "Left of the full line only the left camera's view is seen, from the dashed line on only the "
      "right one's, and between them one passes into the other; the grid gives mm on the bed.");
}

std::string agreementTable(const StitchPage& page) {
  Table table{.caption = "The shared points, worst first",
              .columns = {{"Point", true},
                          {"X, mm", true},
                          {"Y, mm", true},
                          {"apart, mm", true},
                          {"left-bed, mm", true},
                          {"right-bed, mm", true},
                          {"left raw, px", true},
                          {"right raw, px", true}},
              .rows = {},
              .name = "agreement",
              .sortable = true};
  std::vector<Agreement> points = page.agreement;
  std::stable_sort(points.begin(), points.end(),
                   [](const Agreement& a, const Agreement& b) { return a.apart > b.apart; });
  const MetricPicture metric = metricPicture(page.record);
  const double unit = pixelOf(page);
  for (const Agreement& at : points) {
    const cv::Point2d bed = metric.bedAt(at.left);
    table.rows.push_back({{std::to_string(at.pointId), at.pointId},
                          numberCell(bed.x, 2),
                          numberCell(bed.y, 2),
                          numberCell(at.apart * unit, 3),
                          numberCell(at.leftError * unit, 3),
                          numberCell(at.rightError * unit, 3),
                          numberCell(at.leftRaw, 3),
                          numberCell(at.rightRaw, 3)});
  }
  return tableMarkup(table);
}

}  // namespace

std::string stitchPage(const StitchPage& page) {
  std::vector<Section> sections;
  sections.push_back({"agreement", "Agreement on the bed", arrowFigure(page)});
  sections.push_back({"seam", "Seam", seamFigure(page)});
  sections.push_back({"points", "Shared points", agreementTable(page)});
  return reportPage("Stitch report",
                    page.pictureName + " of " + page.leftName + " and " + page.rightName + ", " +
                        sizeText(page.pictureSize) + " px",
                    headMarkup(page), sections);
}

}  // namespace fisheye_calibration::program
