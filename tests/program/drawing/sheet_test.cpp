#include "drawing/sheet.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace fisheye_calibration::program {
namespace {

using testing::HasSubstr;

TEST(Sheet, EdgesBetweenPixelsAreShared) {
  Sheet sheet;
  sheet.size = {4, 2};
  sheet.rectangles.emplace_back(1.25, 0, 1.5, 2);  // three quarters of two pixels each
  const cv::Mat picture = sheetAsPicture(sheet, 1);
  ASSERT_EQ(picture.size(), cv::Size(4, 2));
  EXPECT_EQ(picture.at<unsigned char>(0, 0), 255);
  EXPECT_EQ(picture.at<unsigned char>(0, 1), 64);  // 255 x 0.25
  EXPECT_EQ(picture.at<unsigned char>(0, 2), 64);  // 255 x 0.25
  EXPECT_EQ(picture.at<unsigned char>(0, 3), 255);
}

TEST(Sheet, ThePixelsCentreHasWholeCoordinates) {
  EXPECT_EQ(sheetToPicture({0.05, 0.15}, 10), cv::Point2d(0, 1));
}

TEST(Sheet, TheDrawingIsInMillimetres) {
  Sheet sheet;
  sheet.size = {210.5, 297};
  sheet.discs.push_back({{12.5, 30}, 4.25});
  sheet.texts.push_back({"a < b & c", {1, 2}, 5, SheetText::Align::kEnd});
  const std::string svg = sheetAsSvg(sheet);
  EXPECT_THAT(svg, HasSubstr("width=\"210.5mm\" height=\"297mm\" viewBox=\"0 0 210.5 297\""));
  EXPECT_THAT(svg, HasSubstr("<circle cx=\"12.5\" cy=\"30\" r=\"4.25\"/>"));
  EXPECT_THAT(svg, HasSubstr("font-size=\"7\" text-anchor=\"end\">a &lt; b &amp; c</text>"));
}

}  // namespace
}  // namespace fisheye_calibration::program
