#include "report_pages/corrected_figure.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "base/frame_buffer.h"
#include "base/nice_number.h"
#include "base/text.h"
#include "drawing/grid_overlay.h"
#include "html/markup.h"
#include "html/picture_data.h"
#include "report_pages/plan.h"

namespace fisheye_calibration::program {
namespace {

constexpr int kLongestSide = 1400;                 // of an embedded picture, pixels
constexpr std::int64_t kMostPixels = 100'000'000;  // that are rendered for a report
constexpr double kLines = 8;                       // about so many along the longer side
constexpr double kUnits = 800;                     // of the drawing, along the longer side

constexpr double kLabelWidth = 60;  // of a number, with room for a small screen's larger letters

cv::Mat rendered(const CalibrationResult& result, const cv::Mat& frame) {
  FrameBuffer raw = toBuffer(frame);
  FrameBuffer view = blankBuffer(result.corrected, raw.bitCount);
  FrameBuffer mask = blankBuffer(result.corrected, 8);
  const bool done =
      SingleCamCorrected(raw.data(), raw.size.width, raw.size.height, raw.bitCount, result.param,
                         view.data(), result.corrected.width, result.corrected.height, mask.data());
  return done ? toPicture(view) : cv::Mat();
}

// Whole coordinates are the middles of pixels, the drawing begins at the edge of the first one.
std::string lineMarkup(const Grid& grid, double scale, cv::Point2d end) {
  std::string markup;
  for (const GridLine& line : grid.columns) {
    const double x = (line.pixel + 0.5) * scale;
    markup += svgLine({x, 0}, {x, end.y}, "on-picture");
    if (x < end.x - kLabelWidth) {
      markup += svgText({x + 4, 14}, general(line.world + 0.0, 6), "start on-picture-label");
    }
  }
  for (const GridLine& line : grid.rows) {
    const double y = (line.pixel + 0.5) * scale;
    markup += svgLine({0, y}, {end.x, y}, "on-picture");
    markup += svgText({4, y - 4}, general(line.world + 0.0, 6), "start on-picture-label");
  }
  return markup;
}

}  // namespace

std::string griddedPicture(const cv::Mat& picture, const MetricPicture& metric,
                           const std::string& label, const std::string& content) {
  const double scale = kUnits / std::max(picture.cols, picture.rows);
  const cv::Point2d end(picture.cols * scale, picture.rows * scale);
  const double spacing = niceAbove(std::max(picture.cols, picture.rows) * metric.pixel / kLines);
  const std::string image = element("image",
                                    {{"x", "0"},
                                     {"y", "0"},
                                     {"width", coordinate(end.x)},
                                     {"height", coordinate(end.y)},
                                     {"href", jpegData(picture, kLongestSide)}},
                                    "");
  return element("svg",
                 {{"viewBox", "0 0 " + coordinate(end.x) + " " + coordinate(end.y)},
                  {"width", coordinate(end.x)},
                  {"height", coordinate(end.y)},
                  {"role", "group"},
                  {"aria-label", label + "; lines every " + general(spacing, 6) + " mm"}},
                 image + lineMarkup(gridOver(metric, spacing), scale, end) + content);
}

std::string correctedFigure(const CalibrationResult& result, const cv::Mat& frame) {
  if (frame.empty()) {
    return textElement(
        "p", {},
        "The points came from a list. --report-frame PICTURE, or a picture instead of the "
        "list, shows the corrected view here.");
  }
  const std::int64_t pixels =
      static_cast<std::int64_t>(result.corrected.width) * result.corrected.height;
  const bool possible = result.homographyFound && pixels <= kMostPixels && result.param.Pixel > 0;
  const cv::Mat view = possible ? rendered(result, frame) : cv::Mat();
  if (view.empty()) {
    return textElement(
        "p", {},
        "The corrected view of " + sizeText(result.corrected) + " px cannot be shown here.");
  }
  const std::string drawing =
      griddedPicture(view, metricPicture(result.param, result.corrected),
                     "Corrected view of the bed, " + sizeText(result.corrected) + " px", "");
  return figureMarkup(
      "corrected-view", drawing,
      "This is the bed as measured from above, with X on the upright lines and Y on the "
      "level ones, in mm: what is straight and square on the bed follows the lines.");
}

}  // namespace fisheye_calibration::program
