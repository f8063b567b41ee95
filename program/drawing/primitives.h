// Lines, marks and text for the pictures that the program writes.
#pragma once

#include <opencv2/core.hpp>
#include <string>

namespace fisheye_calibration::program {

// From blue for 0 through cyan-green and amber to red for 1, dark enough for a light background.
cv::Scalar scaleColour(double share);

enum class Anchor { kLeft, kCentre, kRight };

// `position` is on the base line; `height` is that of capital letters, pixels.
void drawText(cv::Mat& canvas, const std::string& text, cv::Point2d position, double height,
              const cv::Scalar& colour, Anchor anchor = Anchor::kLeft);
double textWidth(const std::string& text, double height);

// The same with a light outline, readable on any background.
void drawTextWithRim(cv::Mat& canvas, const std::string& text, cv::Point2d position, double height,
                     const cv::Scalar& colour, Anchor anchor = Anchor::kLeft);

void drawDisc(cv::Mat& canvas, cv::Point2d centre, double radius, const cv::Scalar& colour);
void drawRing(cv::Mat& canvas, cv::Point2d centre, double radius, const cv::Scalar& colour,
              int thickness);
void drawLine(cv::Mat& canvas, cv::Point2d from, cv::Point2d to, const cv::Scalar& colour,
              int thickness);
void drawArrow(cv::Mat& canvas, cv::Point2d from, cv::Point2d to, const cv::Scalar& colour,
               int thickness);

}  // namespace fisheye_calibration::program
