// Drawings to scale, in SVG: a rectangle of the bed or of a picture with its axes.
#pragma once

#include <opencv2/core/types.hpp>
#include <string>
#include <string_view>

#include "base/size.h"

namespace fisheye_calibration::program {

class Plan {
 public:
  // The part that is drawn, and the unit of its axes: "mm", "px". `legend`: width left free at the
  // right, units of the drawing.
  Plan(const cv::Rect2d& shown, std::string unit, double legend = 0);

  // Of the drawing, whose longer side without margins is 720 units long.
  cv::Point2d position(cv::Point2d point) const;
  cv::Rect2d frame() const { return frame_; }
  double scale() const { return scale_; }  // units of the drawing per unit of the axes

  // The frame, ticks at round numbers and the names of the axes.
  std::string axes(std::string_view xName, std::string_view yName) const;

  // An embedded picture that fills a rectangle of the plan.
  std::string image(const cv::Rect2d& place, const std::string& data) const;

  // The whole drawing. `label` says in words what there is to see.
  std::string drawing(const std::string& label, std::string_view content) const;

 private:
  cv::Rect2d shown_;
  std::string unit_;
  cv::Rect2d frame_;
  double scale_ = 1;
  double legend_ = 0;
};

// A camera's picture from edge to edge: whole coordinates are the middles of pixels.
inline cv::Rect2d pictureArea(const Size& image) {
  return {-0.5, -0.5, static_cast<double>(image.width), static_cast<double>(image.height)};
}

std::string svgText(cv::Point2d at, std::string_view text, std::string_view style);
std::string svgLine(cv::Point2d from, cv::Point2d to, std::string_view style);

// A figure with a heading, a drawing and one sentence on how to read it.
std::string figureMarkup(const std::string& id, std::string_view drawing,
                         const std::string& howToRead);

}  // namespace fisheye_calibration::program
