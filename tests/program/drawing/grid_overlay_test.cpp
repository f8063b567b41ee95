#include "drawing/grid_overlay.h"

#include <gtest/gtest.h>

#include "base/failure.h"
#include "program/support/sample_record.h"

namespace fisheye_calibration::program {
namespace {

TEST(GridOverlay, LinesLieAtMultiplesOfTheSpacing) {
  // The datum in the centre (20, 10) of 40 x 20 px, so the view spans 0...20, -5...5.
  const FishEyeCalibrationParam param = {.Pixel = 0.5f, .DatumPtXw = 10};
  const Grid grid = gridOver(metricPicture(param, {40, 20}), 6);
  ASSERT_EQ(grid.columns.size(), 4u);
  EXPECT_EQ(grid.columns[0].world, 0);
  EXPECT_FLOAT_EQ(static_cast<float>(grid.columns[0].pixel), 0);
  EXPECT_EQ(grid.columns[3].world, 18);
  EXPECT_FLOAT_EQ(static_cast<float>(grid.columns[3].pixel), 36);
  ASSERT_EQ(grid.rows.size(), 1u);
  EXPECT_EQ(grid.rows[0].pixel, 10);
}

// One line of one pixel, at column 20 of a picture of 40.
cv::Mat drawn(int type, int brightness) {
  cv::Mat picture(40, 40, type, cv::Scalar::all(brightness));
  drawGrid(picture, {.columns = {{.world = 0, .pixel = 20}}, .rows = {}});
  return picture.row(30);  // below the label
}

TEST(GridOverlay, GreyLinesAreAsThinAsColouredOnes) {
  const cv::Mat onLight = drawn(CV_8UC1, 200);
  const cv::Mat onDark = drawn(CV_8UC1, 20);
  const cv::Mat coloured = drawn(CV_8UC3, 200);
  for (int x = 0; x < 40; ++x) {
    const bool touched = coloured.at<cv::Vec3b>(0, x) != cv::Vec3b(200, 200, 200);
    EXPECT_EQ(onLight.at<unsigned char>(0, x) != 200, touched) << x;
    EXPECT_EQ(onDark.at<unsigned char>(0, x) != 20, touched) << x;
  }
  EXPECT_LT(onLight.at<unsigned char>(0, 20), 50);
  EXPECT_GT(onDark.at<unsigned char>(0, 20), 200);
}

TEST(GridOverlay, LinesTooCloseAreRefused) {
  EXPECT_THROW(gridOver(metricPicture(sampleRecord(), {40, 20}), 1), Failure);
  EXPECT_THROW(gridOver(metricPicture(FishEyeCalibrationParam{}, {40, 20}), 100), Failure);
}

}  // namespace
}  // namespace fisheye_calibration::program
