#include "report_pages/calibration_page.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include "base/text.h"
#include "drawing/accuracy_map.h"
#include "geometry/point_spread.h"
#include "html/markup.h"
#include "report_pages/bed_map.h"
#include "report_pages/camera_table.h"
#include "report_pages/corrected_figure.h"
#include "report_pages/lens_figure.h"
#include "report_pages/page.h"
#include "report_pages/plan.h"
#include "report_pages/view_points.h"
#include "robust/viewing_ray.h"

namespace fisheye_calibration::program {
namespace {

std::string headMarkup(const CalibrationPage& page) {
  const CalibrationReport& report = page.report;
  const BedAccuracy& accuracy = report.chosen.accuracy;
  const bool good = page.trusted && report.verdict.good;
  std::string head = textElement("p",
                                 {{"class", good ? "verdict text-good" : "verdict text-bad"},
                                  {"data-verdict", good ? "good" : "bad"}},
                                 report.verdict.text);
  head += element(
      "dl", {{"class", "readings"}},
      reading("insideTarget", "error inside the target (95 %)", accuracy.insideTarget, "mm") +
          reading("onBed", "error on the bed (95 %)", accuracy.onBed, "mm") +
          reading("rms", "reprojection error (RMS)", report.chosen.result.rms, "px"));
  if (!page.trusted) {
    head += notice(Tone::kBad, "The result is not to be trusted: see the warnings below.");
  }
  if (!page.saved) {
    head += notice(Tone::kBad, page.cameraName + " was not written.");
  }
  if (!report.chosen.reason.empty()) {
    head += notice(Tone::kWarning, report.chosen.reason);
  }
  for (const std::string& warning : report.warnings) {
    head += notice(Tone::kWarning, warning);
  }
  return head;
}

// What helps most comes first.
std::string remedyMarkup(const CalibrationReport& report) {
  const double now = report.chosen.accuracy.onBed;
  const std::vector<Remedy> remedies = helpfulRemedies(report.remedies, now);
  if (remedies.empty()) {
    return textElement("p", {},
                       "No further view of this target would make it more accurate by a "
                       "computable amount.");
  }
  std::string items;
  for (const Remedy& remedy : remedies) {
    const std::string text = remedy.advice + ": then about " + roundedToTwo(remedy.onBed) +
                             " mm on the bed instead of " +
                             (std::isfinite(now) ? roundedToTwo(now) + " mm" : "an unknown error");
    items += textElement("li", {{"data-value", shortest(remedy.onBed)}}, text);
  }
  return textElement("p", {}, "In the order of effect, computed for this camera and this target:") +
         element("ol", {{"class", "remedies"}}, items);
}

// The largest angle to the optical axis of the points in use, or of the picture's corners.
LensCurve lensCurveOf(const CalibrationReport& report, const std::vector<ViewPoints>& views) {
  LensCurve curve{.camera = report.robust.bed.camera,
                  .covariance = robust::lensBlock(report.robust.bed.covariance)};
  const auto angleAt = [&](double x, double y) {
    const cv::Point2d d((x - curve.camera.cx) / curve.camera.fx,
                        (y - curve.camera.cy) / curve.camera.fy);
    return robust::incidenceAngle(curve.camera, std::hypot(d.x, d.y));
  };
  for (const ViewPoints& view : views) {
    for (std::size_t i = 0; view.fits && i < view.points.size(); ++i) {
      if (std::find(view.leftOut.begin(), view.leftOut.end(), i) == view.leftOut.end()) {
        curve.dataEnd =
            std::max(curve.dataEnd, angleAt(static_cast<double>(view.points[i].ImagePtX),
                                            static_cast<double>(view.points[i].ImagePtY)));
      }
    }
  }
  const cv::Rect2d picture = pictureArea(report.request.image);
  for (const double x : {picture.x, picture.br().x}) {
    for (const double y : {picture.y, picture.br().y}) {
      curve.pictureEnd = std::max(curve.pictureEnd, angleAt(x, y));
    }
  }
  return curve;
}

Section residualSection(const std::vector<ViewPoints>& views, const Size& image) {
  std::string content;
  for (std::size_t j = 0; j < views.size(); ++j) {
    content += textElement("h3", {}, views[j].name);
    if (!views[j].fits) {
      content += notice(Tone::kWarning, "This view contradicts the others.");
    }
    if (!views[j].projected) {
      content += textElement("p", {}, "No camera was found that sees these points.");
      continue;
    }
    const std::size_t most = mostPointsOf(views[j], views);
    content += residualFigure(views[j], image, j + 1, most);
    content += residualTable(views[j], j + 1, most);
  }
  return {"residuals", "Points and residuals", content};
}

}  // namespace

std::string calibrationPage(const CalibrationPage& page) {
  const CalibrationReport& report = page.report;
  const ChosenCamera& chosen = report.chosen;
  const std::vector<ViewPoints> views = viewPointsOf(report);
  std::vector<Section> sections;
  sections.push_back({"better", "What to do better", remedyMarkup(report)});
  sections.push_back({"bed-error", "Error on the bed",
                      bedMapFigure({.grid = chosen.accuracy.grid,
                                    .errors = chosen.accuracy.errors,
                                    .target = bedPositions(chosen.result.points),
                                    .insideTarget = chosen.accuracy.insideTarget,
                                    .onBed = chosen.accuracy.onBed})});
  sections.push_back(
      {"corrected", "Corrected view", correctedFigure(chosen.result, page.bedPicture)});
  sections.push_back({"coverage", "Coverage", coverageFigure(views, report.request.image)});
  if (isSolved(report.robust)) {
    sections.push_back({"lens", "Lens curve", lensFigure(lensCurveOf(report, views))});
  }
  sections.push_back({"camera", "Camera", cameraTable(report)});
  sections.push_back(residualSection(views, report.request.image));
  return reportPage("Calibration report",
                    page.cameraName + ", picture of " + sizeText(report.request.image) + " px, " +
                        std::to_string(views.size()) + (views.size() == 1 ? " view" : " views"),
                    headMarkup(page), sections);
}

}  // namespace fisheye_calibration::program
