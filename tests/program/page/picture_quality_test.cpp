#include "page/picture_quality.h"

#include <gtest/gtest.h>

#include <opencv2/imgproc.hpp>

#include "page/frame_meters.h"

namespace fisheye_calibration::program {
namespace {

// Squares of 40 pixels with the two grey levels.
cv::Mat board(int dark, int bright) {
  cv::Mat picture(480, 640, CV_8UC1);
  for (int y = 0; y < picture.rows; ++y) {
    for (int x = 0; x < picture.cols; ++x) {
      picture.at<unsigned char>(y, x) =
          static_cast<unsigned char>((x / 40 + y / 40) % 2 == 0 ? dark : bright);
    }
  }
  return picture;
}

TEST(PictureQuality, ExposureIsSaidInWords) {
  EXPECT_EQ(exposureOf(board(30, 200)).word, "good");
  EXPECT_EQ(exposureOf(board(2, 40)).word, "too dark");
  EXPECT_EQ(exposureOf(board(100, 255)).word, "too bright");
  EXPECT_EQ(exposureOf(board(120, 140)).word, "too little contrast");
}

TEST(PictureQuality, ExposureCountsPixels) {
  const Exposure exposure = exposureOf(board(0, 254));
  EXPECT_DOUBLE_EQ(exposure.mean, 127);
  EXPECT_DOUBLE_EQ(exposure.dark, 0.5);
  EXPECT_NEAR(exposure.bright, 0.5, 1e-12);
}

TEST(PictureQuality, BlurIsMeasuredInPixels) {
  for (const double sigma : {2.0, 4.0}) {
    cv::Mat blurred;
    cv::GaussianBlur(board(30, 220), blurred, {}, sigma);
    // The kernel of the derivative blurs by about one more pixel.
    EXPECT_NEAR(focusOf(blurred).blur, sigma, 0.3 * sigma) << sigma;
  }
}

TEST(PictureQuality, FocusIsSaidInWords) {
  const cv::Mat sharp = board(30, 220);
  EXPECT_EQ(focusOf(sharp).word, "sharp");
  cv::Mat soft;
  cv::GaussianBlur(sharp, soft, {}, 2.2);
  EXPECT_EQ(focusOf(soft).word, "soft");
  cv::Mat blurred;
  cv::GaussianBlur(sharp, blurred, {}, 6);
  EXPECT_EQ(focusOf(blurred).word, "blurred");
  EXPECT_EQ(focusOf(board(100, 110)).word, "nothing to focus on");
}

TEST(StillnessMeter, APictureIsStillAfterHalfASecondWithoutChange) {
  using std::chrono::milliseconds;
  const StillnessMeter::Time start{};
  const cv::Mat before = board(30, 200);
  cv::Mat after;
  cv::flip(before, after, 1);
  after(cv::Rect(200, 200, 80, 80)) = 0;
  StillnessMeter meter;
  EXPECT_FALSE(meter.add(before, start));
  EXPECT_FALSE(meter.add(before, start + milliseconds(400)));
  EXPECT_TRUE(meter.add(before, start + milliseconds(600)));
  EXPECT_FALSE(meter.add(after, start + milliseconds(700)));
  EXPECT_FALSE(meter.add(after, start + milliseconds(1100)));
  EXPECT_TRUE(meter.add(after, start + milliseconds(1300)));
}

TEST(RateMeter, CountsFramesThatNobodyLookedAt) {
  using std::chrono::milliseconds;
  const RateMeter::Time start{};
  RateMeter meter;
  meter.add(1, start + milliseconds(1000));
  meter.add(16, start + milliseconds(1500));
  EXPECT_DOUBLE_EQ(meter.perSecond(), 30);
}

}  // namespace
}  // namespace fisheye_calibration::program
