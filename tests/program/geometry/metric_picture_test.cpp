#include "geometry/metric_picture.h"

#include <gtest/gtest.h>

namespace fisheye_calibration::program {
namespace {

TEST(MetricPicture, ACorrectedViewHasItsDatumInTheCentre) {
  const FishEyeCalibrationParam param = {.Pixel = 0.5f, .DatumPtXw = 10, .DatumPtYw = 20};
  const MetricPicture picture = metricPicture(param, {.width = 40, .height = 30});
  EXPECT_EQ(picture.bedAt({20, 15}), cv::Point2d(10, 20));
  EXPECT_EQ(picture.bedAt({22, 11}), cv::Point2d(11, 18));
  EXPECT_EQ(picture.positionOf({11, 18}), cv::Point2d(22, 11));
}

TEST(MetricPicture, TheRowsOfACropCountFromItsTop) {
  // Of a canvas of 200 rows, 152 from row 20 on were kept: the datum's buffer row is 100 - 28, its
  // picture row 100 - 20.
  const DualFishEyeCalibrationParam dual = {.Pixel = 2,
                                            .StdImageWidth = 300,
                                            .StdImageHeight = 152,
                                            .DatumImagePtX = 50,
                                            .DatumImagePtY = 72,
                                            .DatumPtXw = 10,
                                            .DatumPtYw = 20};
  const MetricPicture picture = metricPicture(dual);
  EXPECT_EQ(picture.positionOf({10, 20}), cv::Point2d(50, 80));
  EXPECT_EQ(picture.bedAt({51, 83}), cv::Point2d(12, 26));
}

}  // namespace
}  // namespace fisheye_calibration::program
