#include "report_pages/lens_figure.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <utility>
#include <vector>

#include "base/angles.h"
#include "base/nice_number.h"
#include "base/text.h"
#include "html/markup.h"
#include "report_pages/plan.h"

namespace fisheye_calibration::program {
namespace {

constexpr double kDeviations = 1.96;  // of the normal distribution: 95 %
constexpr double kWidth = 700;
constexpr double kLeft = 70;
constexpr int kSteps = 90;

// One of two diagrams over the angle.
struct Diagram {
  double top = 0;
  double height = 0;
  double most = 1;      // at its top
  double angleEnd = 1;  // at its right edge, degrees

  cv::Point2d position(double angle, double value) const {
    return {kLeft + kWidth * angle / angleEnd, top + height * (1 - value / most)};
  }
};

std::string axesMarkup(const Diagram& diagram, const std::string& name, bool angles) {
  std::string markup =
      svgLine(diagram.position(0, 0), diagram.position(diagram.angleEnd, 0), "axis") +
      svgLine(diagram.position(0, 0), diagram.position(0, diagram.most), "axis");
  const double step = niceAbove(diagram.most / 5);
  for (double value = 0; value <= diagram.most * 1.0001; value += step) {
    const cv::Point2d at = diagram.position(0, value);
    markup += svgLine(at, diagram.position(diagram.angleEnd, value), "grid");
    markup += svgText(at + cv::Point2d(-8, 4), general(value, 4), "end");
  }
  for (double angle = 0; angle <= diagram.angleEnd; angle += 10) {
    const cv::Point2d at = diagram.position(angle, 0);
    markup += svgLine(at, at + cv::Point2d(0, 5), "tick");
    if (angles) {
      markup += svgText(at + cv::Point2d(0, 18), general(angle, 4) + "\xC2\xB0", "middle");
    }
  }
  return markup + svgText({kLeft, diagram.top - 8}, name, "start");
}

std::string curvePath(const Diagram& diagram, const std::function<double(double)>& value) {
  std::string path;
  for (int i = 0; i <= kSteps; ++i) {
    const double angle = diagram.angleEnd * i / kSteps;
    const cv::Point2d at = diagram.position(angle, std::clamp(value(angle), 0.0, diagram.most));
    path += pathStep(i == 0 ? 'M' : 'L', at.x, at.y);
  }
  return path;
}

// Between value - half and value + half.
std::string bandPath(const Diagram& diagram, const std::function<double(double)>& value,
                     const std::function<double(double)>& half) {
  std::string path;
  for (int i = 0; i <= 2 * kSteps + 1; ++i) {
    const bool upper = i <= kSteps;
    const double angle = diagram.angleEnd * (upper ? i : 2 * kSteps + 1 - i) / kSteps;
    const double edge = value(angle) + (upper ? half(angle) : -half(angle));
    const cv::Point2d at = diagram.position(angle, std::clamp(edge, 0.0, diagram.most));
    path += pathStep(i == 0 ? 'M' : 'L', at.x, at.y);
  }
  return path + "Z";
}

std::string dataEndMarkup(const Diagram& upper, const Diagram& lower, double dataEnd) {
  if (!(dataEnd > 0) || dataEnd >= upper.angleEnd) {
    return "";
  }
  const cv::Point2d from = upper.position(dataEnd, upper.most);
  return svgLine(from, lower.position(dataEnd, 0), "data-end") +
         svgText(from + cv::Point2d(-6, 14), "the data ends at " + fixed(dataEnd, 1) + "\xC2\xB0",
                 "end data-end-label");
}

}  // namespace

double lensRadius(const lens::Camera& camera, double theta) {
  return (camera.fx + camera.fy) / 2 * theta * (1 + theta * (camera.k0 + theta * camera.k1));
}

double lensBand(const LensCurve& curve, double theta) {
  const lens::Camera& c = curve.camera;
  const double f = (c.fx + c.fy) / 2;
  const double byFocal = theta * (1 + theta * (c.k0 + theta * c.k1)) / 2;
  const cv::Vec6d g(byFocal, byFocal, 0, 0, f * theta * theta, f * theta * theta * theta);
  return kDeviations * std::sqrt(std::max(0.0, g.dot(curve.covariance * g)));
}

std::string lensFigure(const LensCurve& curve) {
  const double end = std::clamp(std::ceil(degrees(curve.pictureEnd) / 10) * 10, 20.0, 90.0);
  const auto radius = [&](double angle) { return lensRadius(curve.camera, angle / degrees(1)); };
  const auto band = [&](double angle) { return lensBand(curve, angle / degrees(1)); };
  double mostRadius = 0;
  double mostBand = 0;
  for (int i = 0; i <= kSteps; ++i) {
    mostRadius = std::max(mostRadius, radius(end * i / kSteps));
    mostBand = std::max(mostBand, band(end * i / kSteps));
  }
  const Diagram upper{.top = 30, .height = 260, .most = mostRadius * 1.05, .angleEnd = end};
  const Diagram lower{
      .top = 350, .height = 130, .most = std::max(mostBand * 1.1, 1e-6), .angleEnd = end};
  std::string content = axesMarkup(upper, "distance from the principal point, px", true);
  content += element("path", {{"class", "band"}, {"d", bandPath(upper, radius, band)}}, "");
  content += element("path", {{"class", "curve"}, {"d", curvePath(upper, radius)}}, "");
  content += axesMarkup(lower, "half width of the 95 % band, px", true);
  content += element("path", {{"class", "curve"}, {"d", curvePath(lower, band)}}, "");
  const double dataEnd = degrees(curve.dataEnd);
  content += dataEndMarkup(upper, lower, dataEnd);
  content += svgText({kLeft + kWidth, 516}, "angle to the optical axis", "end soft");
  std::string label = "Lens curve up to " + fixed(end, 0) + " degrees; the 95 % band is at most " +
                      general(mostBand, 2) + " px wide to either side";
  if (dataEnd > 0) {
    label += "; the data ends at " + fixed(dataEnd, 1) + " degrees, where the band is " +
             general(band(dataEnd), 2) + " px";
  }
  const std::string drawing = element("svg",
                                      {{"viewBox", "0 0 800 526"},
                                       {"width", "800"},
                                       {"height", "526"},
                                       {"role", "img"},
                                       {"aria-label", label}},
                                      content);
  return figureMarkup(
      "lens-curve", drawing,
      "The curve tells how far from the principal point the lens shows what lies "
      "at an angle to its "
      "axis; the true curve lies within the band with at least 95 % confidence, and beyond "
      "the dashed line no point was measured.");
}

}  // namespace fisheye_calibration::program
