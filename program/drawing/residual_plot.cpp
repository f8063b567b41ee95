#include "drawing/residual_plot.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>
#include <string>

#include "base/nice_number.h"
#include "base/text.h"
#include "drawing/primitives.h"

namespace fisheye_calibration::program {
namespace {

constexpr double kLongSide = 1400;  // of the plotted picture
constexpr int kMargin = 40;
constexpr int kLegendWidth = 430;
constexpr int kLowestHeight = 780;       // for the legend
constexpr double kTypicalArrow = 0.035;  // of the long side, for the median residual
constexpr double kLongestArrow = 0.12;   // of the long side, for the largest
constexpr double kTextHeight = 16;

const cv::Scalar kInk = cv::Scalar::all(40);
const cv::Scalar kFaint = cv::Scalar::all(150);

std::vector<double> sortedSizes(const std::vector<CalibrationPoint>& points) {
  std::vector<double> sizes;
  for (const CalibrationPoint& point : points) {
    const double size = std::hypot(point.ReprojErrX, point.ReprojErrY);
    if (std::isfinite(size)) {
      sizes.push_back(size);
    }
  }
  std::sort(sizes.begin(), sizes.end());
  return sizes;
}

struct Frame {
  double scale;  // canvas pixels per picture pixel
  cv::Rect area;

  cv::Point2d position(double x, double y) const {
    return {area.x + (x + 0.5) * scale - 0.5, area.y + (y + 0.5) * scale - 0.5};
  }
};

void drawBackground(cv::Mat& canvas, const Frame& frame, const cv::Mat& background) {
  cv::Mat inside = canvas(frame.area);
  if (background.empty()) {
    inside.setTo(cv::Scalar::all(250));
  } else {
    cv::Mat faded;
    cv::resize(background, faded, frame.area.size(), 0, 0,
               frame.scale < 1 ? cv::INTER_AREA : cv::INTER_CUBIC);
    faded.convertTo(faded, CV_8U, 0.3, 178);
    cv::cvtColor(faded, inside, cv::COLOR_GRAY2BGR);
  }
  cv::rectangle(canvas, frame.area, kFaint, 1);
}

void drawPoints(cv::Mat& canvas, const Frame& frame, const ResidualPlot& plot, double magnification,
                double scaleEnd) {
  cv::Mat inside = canvas(frame.area);
  const cv::Point2d corner(frame.area.x, frame.area.y);
  const double unit = kLongSide / 1400;
  for (const CalibrationPoint& point : plot.points) {
    const cv::Point2d from =
        frame.position(static_cast<double>(point.ImagePtX), static_cast<double>(point.ImagePtY)) -
        corner;
    const double size = std::hypot(point.ReprojErrX, point.ReprojErrY);
    if (!std::isfinite(size)) {
      drawRing(inside, from, 4 * unit, kInk, 1);
      continue;
    }
    const cv::Scalar colour = scaleColour(size / scaleEnd);
    const double stretch = magnification * frame.scale;
    drawArrow(inside, from, from + stretch * cv::Point2d(point.ReprojErrX, point.ReprojErrY),
              colour, 2);
    drawDisc(inside, from, 4.5 * unit, colour);
  }
}

void drawPrincipalPoint(cv::Mat& canvas, const Frame& frame, const ResidualPlot& plot) {
  if (!std::isfinite(plot.principalPoint.x) || !std::isfinite(plot.principalPoint.y)) {
    return;
  }
  cv::Mat inside = canvas(frame.area);
  const cv::Point2d corner(frame.area.x, frame.area.y);
  const cv::Point2d at = frame.position(plot.principalPoint.x, plot.principalPoint.y) - corner;
  drawLine(inside, at - cv::Point2d(14, 0), at + cv::Point2d(14, 0), kInk, 1);
  drawLine(inside, at - cv::Point2d(0, 14), at + cv::Point2d(0, 14), kInk, 1);
}

class Legend {
 public:
  Legend(cv::Mat& canvas, int left, int top) : canvas_(canvas), left_(left), y_(top) {}

  void heading(const std::string& text, const cv::Scalar& colour = kInk) {
    drawText(canvas_, text, {left_, y_ + 22}, 20, colour);
    y_ += 44;
  }

  void line(const std::string& text) {
    drawText(canvas_, text, {left_, y_ + kTextHeight}, kTextHeight, kInk);
    y_ += 28;
  }

  void gap(double height) { y_ += height; }

  void colourScale(double end, int decimals) {
    constexpr int kSteps = 240;
    constexpr double kWidth = 30;
    for (int i = 0; i < kSteps; ++i) {
      const cv::Rect bar(static_cast<int>(left_), static_cast<int>(y_) + i,
                         static_cast<int>(kWidth), 1);
      cv::rectangle(canvas_, bar, scaleColour(1 - i / (kSteps - 1.0)), cv::FILLED);
    }
    for (int tick = 0; tick <= 4; ++tick) {
      const double at = y_ + (kSteps - 1) * (1 - tick / 4.0);
      drawLine(canvas_, {left_ + kWidth, at}, {left_ + kWidth + 8, at}, kInk, 1);
      drawText(canvas_, fixed(end * tick / 4, decimals) + " px",
               {left_ + kWidth + 16, at + kTextHeight / 2}, kTextHeight, kInk);
    }
    y_ += kSteps + 32;
  }

  void referenceArrow(double length, const std::string& text) {
    drawArrow(canvas_, {left_, y_ + 8}, {left_ + length, y_ + 8}, kInk, 2);
    drawDisc(canvas_, {left_, y_ + 8}, 4.5, kInk);
    drawText(canvas_, text, {left_ + length + 16, y_ + 8 + kTextHeight / 2}, kTextHeight, kInk);
    y_ += 36;
  }

  void pointMark(const std::string& text) {
    drawDisc(canvas_, {left_ + 10, y_ + 8}, 4.5, kInk);
    drawText(canvas_, text, {left_ + 34, y_ + 8 + kTextHeight / 2}, kTextHeight, kInk);
    y_ += 30;
  }

  void crossMark(const std::string& text) {
    drawLine(canvas_, {left_, y_ + 8}, {left_ + 20, y_ + 8}, kInk, 1);
    drawLine(canvas_, {left_ + 10, y_ - 2}, {left_ + 10, y_ + 18}, kInk, 1);
    drawText(canvas_, text, {left_ + 34, y_ + 8 + kTextHeight / 2}, kTextHeight, kInk);
    y_ += 30;
  }

 private:
  cv::Mat& canvas_;
  double left_;
  double y_;
};

void drawLegend(cv::Mat& canvas, const Frame& frame, const ResidualPlot& plot, double magnification,
                double scaleEnd, const std::vector<double>& sizes) {
  Legend legend(canvas, frame.area.br().x + 32, frame.area.y);
  legend.heading("Residuals");
  if (!plot.trusted) {
    legend.heading("NOT TRUSTED", scaleColour(1));
  }
  legend.line(std::to_string(plot.points.size()) + " points, " + std::to_string(plot.image.width) +
              " x " + std::to_string(plot.image.height) + " px");
  legend.line("RMS " + general(plot.rms, 4) + " px");
  if (sizes.empty()) {
    legend.line("no residual is a number");
    return;
  }
  legend.line("median " + general(sizes[sizes.size() / 2], 3) + " px");
  legend.line("largest " + general(sizes.back(), 3) + " px");
  legend.gap(24);
  legend.pointMark("measured point");
  legend.crossMark("principal point");
  legend.gap(24);
  legend.line("Arrow: measured - reprojected,");
  legend.line("drawn at " + general(magnification, 6) + " times its length");
  legend.gap(6);
  const double stretch = magnification * frame.scale;
  const double reference = niceBelow(130 / stretch);
  legend.referenceArrow(reference * stretch, general(reference, 6) + " px");
  legend.gap(24);
  legend.line("Colour: length of the residual");
  legend.gap(8);
  const int decimals = std::clamp(1 - static_cast<int>(std::floor(std::log10(scaleEnd / 4))), 0, 9);
  legend.colourScale(scaleEnd, decimals);
}

}  // namespace

double magnificationFor(const std::vector<CalibrationPoint>& points, const Size& image) {
  const std::vector<double> sizes = sortedSizes(points);
  if (sizes.empty() || !(sizes.back() > 0)) {
    return 1;
  }
  const double side = std::max(image.width, image.height);
  const double median = sizes[sizes.size() / 2];
  const double byLargest = kLongestArrow * side / sizes.back();
  return niceBelow(median > 0 ? std::min(kTypicalArrow * side / median, byLargest) : byLargest);
}

cv::Mat drawResidualPlot(const ResidualPlot& plot) {
  Frame frame{kLongSide / std::max(plot.image.width, plot.image.height), {}};
  frame.area = {kMargin, kMargin,
                std::max(1, static_cast<int>(std::lround(plot.image.width * frame.scale))),
                std::max(1, static_cast<int>(std::lround(plot.image.height * frame.scale)))};
  const cv::Size size(frame.area.br().x + kLegendWidth,
                      std::max(frame.area.br().y + kMargin, kLowestHeight));
  cv::Mat canvas(size, CV_8UC3, cv::Scalar::all(255));
  const std::vector<double> sizes = sortedSizes(plot.points);
  const double scaleEnd = sizes.empty() || !(sizes.back() > 0) ? 1 : niceAbove(sizes.back());
  const double magnification = magnificationFor(plot.points, plot.image);
  drawBackground(canvas, frame, plot.background);
  drawPrincipalPoint(canvas, frame, plot);
  drawPoints(canvas, frame, plot, magnification, scaleEnd);
  drawLegend(canvas, frame, plot, magnification, scaleEnd, sizes);
  return canvas;
}

}  // namespace fisheye_calibration::program
