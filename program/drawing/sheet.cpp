#include "drawing/sheet.h"

#include <algorithm>
#include <cmath>

#include "base/text.h"
#include "drawing/primitives.h"

namespace fisheye_calibration::program {
namespace {

std::string millimetres(double value) { return general(value, 9); }

std::string escaped(const std::string& text) {
  std::string result;
  for (const char c : text) {
    switch (c) {
      case '&':
        result += "&amp;";
        break;
      case '<':
        result += "&lt;";
        break;
      case '>':
        result += "&gt;";
        break;
      default:
        result += c;
    }
  }
  return result;
}

const char* anchorOf(SheetText::Align align) {
  switch (align) {
    case SheetText::Align::kStart:
      return "start";
    case SheetText::Align::kMiddle:
      return "middle";
    case SheetText::Align::kEnd:
      break;
  }
  return "end";
}

Anchor drawnAnchor(SheetText::Align align) {
  switch (align) {
    case SheetText::Align::kStart:
      return Anchor::kLeft;
    case SheetText::Align::kMiddle:
      return Anchor::kCentre;
    case SheetText::Align::kEnd:
      break;
  }
  return Anchor::kRight;
}

// How much of each pixel in a line from 0 to `count` lies between the two positions, which are in
// pixels from the first one's edge.
double coverage(int pixel, double from, double to) {
  return std::clamp(std::min(to, pixel + 1.0) - std::max(from, static_cast<double>(pixel)), 0.0,
                    1.0);
}

// Black to the share that the rectangle covers of each pixel, so that edges keep their positions.
void darken(cv::Mat& share, const cv::Rect2d& area) {
  const int left = std::max(0, static_cast<int>(std::floor(area.x)));
  const int right = std::min(share.cols, static_cast<int>(std::ceil(area.br().x)));
  const int top = std::max(0, static_cast<int>(std::floor(area.y)));
  const int bottom = std::min(share.rows, static_cast<int>(std::ceil(area.br().y)));
  for (int y = top; y < bottom; ++y) {
    const double rowShare = coverage(y, area.y, area.br().y);
    auto* const row = share.ptr<float>(y);
    for (int x = left; x < right; ++x) {
      row[x] += static_cast<float>(rowShare * coverage(x, area.x, area.br().x));
    }
  }
}

}  // namespace

std::string sheetAsSvg(const Sheet& sheet) {
  const std::string width = millimetres(sheet.size.width);
  const std::string height = millimetres(sheet.size.height);
  std::string svg = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
  svg += "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + width + "mm\" height=\"" + height +
         "mm\" viewBox=\"0 0 " + width + " " + height + "\">\n";
  svg += "<rect width=\"" + width + "\" height=\"" + height + "\" fill=\"white\"/>\n";
  // Touching rectangles must not show a bright line between them.
  svg += "<g fill=\"black\" shape-rendering=\"crispEdges\">\n";
  for (const cv::Rect2d& area : sheet.rectangles) {
    svg += "<rect x=\"" + millimetres(area.x) + "\" y=\"" + millimetres(area.y) + "\" width=\"" +
           millimetres(area.width) + "\" height=\"" + millimetres(area.height) + "\"/>\n";
  }
  svg += "</g>\n<g fill=\"black\">\n";
  for (const SheetDisc& disc : sheet.discs) {
    svg += "<circle cx=\"" + millimetres(disc.centre.x) + "\" cy=\"" + millimetres(disc.centre.y) +
           "\" r=\"" + millimetres(disc.radius) + "\"/>\n";
  }
  svg += "</g>\n<g fill=\"black\" font-family=\"sans-serif\">\n";
  constexpr double kFontSize = 1.4;  // of the height of capital letters
  for (const SheetText& text : sheet.texts) {
    svg += "<text x=\"" + millimetres(text.position.x) + "\" y=\"" + millimetres(text.position.y) +
           "\" font-size=\"" + millimetres(kFontSize * text.height) + "\" text-anchor=\"" +
           anchorOf(text.align) + "\">" + escaped(text.text) + "</text>\n";
  }
  return svg + "</g>\n</svg>\n";
}

cv::Mat sheetAsPicture(const Sheet& sheet, double pixelsPerMm) {
  const cv::Size size(static_cast<int>(std::ceil(sheet.size.width * pixelsPerMm - 1e-6)),
                      static_cast<int>(std::ceil(sheet.size.height * pixelsPerMm - 1e-6)));
  cv::Mat share(size, CV_32F, cv::Scalar(0));
  for (const cv::Rect2d& area : sheet.rectangles) {
    darken(share, {area.x * pixelsPerMm, area.y * pixelsPerMm, area.width * pixelsPerMm,
                   area.height * pixelsPerMm});
  }
  cv::Mat picture;
  share.convertTo(picture, CV_8U, -255, 255);
  for (const SheetDisc& disc : sheet.discs) {
    drawDisc(picture, sheetToPicture(disc.centre, pixelsPerMm), disc.radius * pixelsPerMm,
             cv::Scalar(0));
  }
  for (const SheetText& text : sheet.texts) {
    drawText(picture, text.text, sheetToPicture(text.position, pixelsPerMm),
             std::max(1.0, text.height * pixelsPerMm), cv::Scalar(0), drawnAnchor(text.align));
  }
  return picture;
}

cv::Point2d sheetToPicture(cv::Point2d position, double pixelsPerMm) {
  return position * pixelsPerMm - cv::Point2d(0.5, 0.5);
}

}  // namespace fisheye_calibration::program
