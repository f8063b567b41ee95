// A drawing in millimetres: black shapes and text on white.
#pragma once

#include <opencv2/core.hpp>
#include <string>
#include <vector>

namespace fisheye_calibration::program {

struct SheetText {
  std::string text;
  cv::Point2d position;  // of the base line's start, middle or end
  double height = 3;     // of capital letters
  enum class Align { kStart, kMiddle, kEnd } align = Align::kStart;
};

struct SheetDisc {
  cv::Point2d centre;
  double radius = 0;
};

// x runs right and y down from the top left corner.
struct Sheet {
  cv::Size2d size;
  std::vector<cv::Rect2d> rectangles;
  std::vector<SheetDisc> discs;
  std::vector<SheetText> texts;
};

// With width and height in millimetres, to be printed or engraved at its own size.
std::string sheetAsSvg(const Sheet& sheet);

// Eight-bit grey; (0, 0) of the sheet is the outer corner of the first pixel, whose centre is
// (0, 0) in the picture.
cv::Mat sheetAsPicture(const Sheet& sheet, double pixelsPerMm);

// Where a position on the sheet is in that picture.
cv::Point2d sheetToPicture(cv::Point2d position, double pixelsPerMm);

}  // namespace fisheye_calibration::program
