#include "geometry/whole_datum.h"

#include <gtest/gtest.h>

#include <cmath>

#include "geometry/conversions.h"

namespace fisheye_calibration::program {
namespace {

// A whole canvas of 1600 x 960 pixels, the datum halfway up.
DualFishEyeCalibrationParam canvas(float pixel, float Xw, float Yw) {
  return {.Pixel = pixel,
          .StdImageWidth = 1600,
          .StdImageHeight = 960,
          .DatumImagePtX = 640,
          .DatumImagePtY = 480,
          .DatumPtXw = Xw,
          .DatumPtYw = Yw};
}

TEST(WholeDatum, WholeCoordinatesStayInPlace) {
  const WholeDatum whole = withWholeDatum(canvas(0.8f, 160, 130));
  EXPECT_EQ(whole.record.DatumImagePtX, 640);
  EXPECT_EQ(whole.record.DatumImagePtY, 480);
  EXPECT_EQ(whole.record.DatumPtXw, 160);
  EXPECT_EQ(whole.addedRows, 0);
}

TEST(WholeDatum, HalvesOfAPixelOfOneHalfAreExactOneColumnAway) {
  const WholeDatum whole = withWholeDatum(canvas(0.5f, 160.5f, 130));
  EXPECT_EQ(whole.record.DatumImagePtX, 641);
  EXPECT_EQ(whole.record.DatumPtXw, 161);
  EXPECT_EQ(whole.rest, 0);
}

TEST(WholeDatum, TheDatumMovesDownByEvenRowsAndThePictureGrowsByTwiceThat) {
  // 130.25 + 6 * 0.125 = 131
  const WholeDatum whole = withWholeDatum(canvas(0.125f, 160, 130.25f));
  EXPECT_EQ(whole.record.DatumImagePtY, 486);
  EXPECT_EQ(whole.record.DatumPtYw, 131);
  EXPECT_EQ(whole.addedRows, 12);
  EXPECT_EQ(whole.record.StdImageHeight, 972);
  EXPECT_EQ(whole.rest, 0);
  EXPECT_EQ(pictureRowOffset(whole.record), 0);
}

TEST(WholeDatum, ARecordReadBackFromTheFileMapsAsBefore) {
  for (const float pixel : {0.8137f, 0.3333333f, 1.41421356f, 2.0f / 7}) {
    const DualFishEyeCalibrationParam before = canvas(pixel, 312.3777f, 204.6312f);
    const WholeDatum whole = withWholeDatum(before);
    DualFishEyeCalibrationParam read = whole.record;  // as the file gives it back
    read.Pixel = static_cast<float>(std::round(static_cast<double>(pixel) * 1e6) / 1e6);
    EXPECT_EQ(read.DatumPtXw, std::trunc(read.DatumPtXw));
    EXPECT_EQ(read.DatumPtYw, std::trunc(read.DatumPtYw));
    EXPECT_EQ(pictureRowOffset(read), 0);
    EXPECT_EQ(read.StdImageHeight % 4, 0);
    EXPECT_LE(whole.rest, 0.5 / 7);  // with 2/7 of a unit a pixel only sevenths can be reached
    for (const cv::Point2f& position : {cv::Point2f(0, 0), {1599, 959}, {640, 480}}) {
      const cv::Point2f expected = bedPositionAt(before, position);
      const cv::Point2f found = bedPositionAt(read, position);
      const double floats = 3e-4;  // of coordinates up to 2000
      EXPECT_NEAR(found.x, expected.x, whole.rest + floats) << pixel;
      EXPECT_NEAR(found.y, expected.y, whole.rest + floats) << pixel;
    }
  }
}

TEST(WholeDatum, ARecordWithoutScaleStaysAsItIs) {
  const WholeDatum whole = withWholeDatum(canvas(0, 160.5f, 130.5f));
  EXPECT_EQ(whole.record.DatumPtXw, 160.5f);
  EXPECT_EQ(whole.addedRows, 0);
}

}  // namespace
}  // namespace fisheye_calibration::program
