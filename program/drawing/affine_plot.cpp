#include "drawing/affine_plot.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <opencv2/imgproc.hpp>
#include <string>

#include "base/nice_number.h"
#include "base/text.h"
#include "drawing/primitives.h"

namespace fisheye_calibration::program {
namespace {

constexpr double kLongSide = 1000;  // of the plotted plane, pixels
constexpr double kMargin = 60;      // around the outermost points
constexpr int kLegendWidth = 480;
constexpr int kLowestHeight = 360;      // for the legend
constexpr double kLongestArrow = 0.08;  // of the long side, for the largest residual
constexpr double kTextHeight = 16;

const cv::Scalar kInk = cv::Scalar::all(40);
const cv::Scalar kFaint = cv::Scalar::all(150);

// The part of the work plane that contains all points, and its place in the picture.
class Plane {
 public:
  explicit Plane(const std::vector<CalibrationPoint>& points) {
    for (const CalibrationPoint& point : points) {
      low_ = {std::min(low_.x, static_cast<double>(point.Xw)),
              std::min(low_.y, static_cast<double>(point.Yw))};
      high_ = {std::max(high_.x, static_cast<double>(point.Xw)),
               std::max(high_.y, static_cast<double>(point.Yw))};
    }
    const double extent = std::max(high_.x - low_.x, high_.y - low_.y);
    scale_ = (kLongSide - 2 * kMargin) / (extent > 0 ? extent : 1.0);
  }

  double scale() const { return scale_; }  // pixels per world unit

  cv::Size size() const {
    return {pixels(high_.x - low_.x), std::max(pixels(high_.y - low_.y), kLowestHeight)};
  }

  cv::Point2d position(const CalibrationPoint& point) const {
    return {kMargin + (point.Xw - low_.x) * scale_, kMargin + (point.Yw - low_.y) * scale_};
  }

 private:
  int pixels(double length) const {
    return static_cast<int>(std::lround(length * scale_ + 2 * kMargin));
  }

  cv::Point2d low_{std::numeric_limits<double>::max(), std::numeric_limits<double>::max()};
  cv::Point2d high_{std::numeric_limits<double>::lowest(), std::numeric_limits<double>::lowest()};
  double scale_ = 1;
};

double largestOf(const std::vector<WorldResidual>& residuals) {
  double largest = 0;
  for (const WorldResidual& residual : residuals) {
    const double size = std::hypot(residual.x, residual.y);
    if (std::isfinite(size)) {
      largest = std::max(largest, size);
    }
  }
  return largest;
}

void drawLegend(cv::Mat& canvas, double left, const AffineMap& map, const WorldResidual& rms,
                double pixelsPerUnit, double magnification) {
  double y = 40;
  const auto line = [&](const std::string& text) {
    drawText(canvas, text, {left, y}, kTextHeight, kInk);
    y += 28;
  };
  drawText(canvas, "Residuals on the work plane", {left, y}, 20, kInk);
  y += 40;
  line("measured - mapped, x" + general(magnification, 3));
  const double reference = niceBelow(kLongestArrow * kLongSide / pixelsPerUnit);
  drawArrow(canvas, {left, y}, {left + reference * pixelsPerUnit, y}, kInk, 2);
  drawText(canvas, general(reference, 3) + " world units",
           {left + reference * pixelsPerUnit + 16, y + kTextHeight / 2}, kTextHeight, kInk);
  y += 36;
  line("plain RMS: X " + general(rms.x, 4) + "  Y " + general(rms.y, 4));
  line("library: X " + general(map.errorX, 4) + "  Y " + general(map.errorY, 4));
  drawDisc(canvas, {left + 10, y - 5}, 5, kInk);
  drawText(canvas, "summed by the library (first nine)", {left + 34, y}, kTextHeight, kInk);
  y += 28;
  drawRing(canvas, {left + 10, y - 5}, 5, kInk, 2);
  drawText(canvas, "not summed", {left + 34, y}, kTextHeight, kInk);
  y += 40;
  line("X to the right, Y downwards");
}

}  // namespace

cv::Mat drawAffinePlot(const AffineMap& map, const std::vector<CalibrationPoint>& points) {
  const Plane plane(points);
  const std::vector<WorldResidual> residuals = residualsOf(map, points);
  const double largest = largestOf(residuals);
  const double magnification =
      largest > 0 ? niceBelow(kLongestArrow * kLongSide / (largest * plane.scale())) : 1;
  const double pixelsPerUnit = magnification * plane.scale();

  const cv::Size area = plane.size();
  cv::Mat canvas(area.height, area.width + kLegendWidth, CV_8UC3, cv::Scalar::all(255));
  cv::rectangle(canvas, cv::Rect({0, 0}, area), kFaint, 1);
  for (std::size_t i = 0; i < points.size(); ++i) {
    const cv::Point2d at = plane.position(points[i]);
    const double size = std::hypot(residuals[i].x, residuals[i].y);
    const cv::Scalar colour = scaleColour(largest > 0 ? size / largest : 0);
    drawArrow(canvas, at, at + pixelsPerUnit * cv::Point2d(residuals[i].x, residuals[i].y), colour,
              2);
    if (i < kPointsSummedByLibrary) {
      drawDisc(canvas, at, 5, colour);
    } else {
      drawRing(canvas, at, 5, colour, 2);
    }
  }
  drawLegend(canvas, area.width + 24.0, map, rootMeanSquare(residuals), pixelsPerUnit,
             magnification);
  return canvas;
}

}  // namespace fisheye_calibration::program
