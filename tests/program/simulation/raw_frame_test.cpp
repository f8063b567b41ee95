// Simulated frames against the library's own conversions and corrected images.
#include <gtest/gtest.h>

#include <cmath>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "base/frame_buffer.h"
#include "geometry/conversions.h"
#include "program/support/synthetic_target.h"
#include "simulation/frame_effects.h"
#include "simulation/raw_frame.h"
#include "simulation/simulated_camera.h"

namespace fisheye_calibration::program {
namespace {

const cv::Rect2d kBed(0, 0, 300, 200);

// Tilted by about 5 degrees, 250 above the bed.
NominalCamera tiltedCamera() {
  return {.size = {.width = 800, .height = 600},
          .fx = 520,
          .fy = 518,
          .centre = {405, 296},
          .k0 = 0.01,
          .k1 = -0.06,
          .over = {145, 110},
          .height = 250,
          .tilt = {4, -3, 2}};
}

// By how much the second picture is shifted against the first, pixels, if that is little: the
// difference is -shift * gradient, by least squares.
cv::Point2d shiftBetween(const cv::Mat& first, const cv::Mat& second) {
  double xx = 0;
  double xy = 0;
  double yy = 0;
  double xd = 0;
  double yd = 0;
  const auto level = [&](int x, int y) { return static_cast<int>(first.at<unsigned char>(y, x)); };
  for (int y = 1; y + 1 < first.rows; ++y) {
    for (int x = 1; x + 1 < first.cols; ++x) {
      const double gx = 0.5 * (level(x + 1, y) - level(x - 1, y));
      const double gy = 0.5 * (level(x, y + 1) - level(x, y - 1));
      const double d = static_cast<double>(second.at<unsigned char>(y, x)) - level(x, y);
      xx += gx * gx;
      xy += gx * gy;
      yy += gy * gy;
      xd -= gx * d;
      yd -= gy * d;
    }
  }
  const double scale = 1 / (xx * yy - xy * xy);
  return {scale * (yy * xd - xy * yd), scale * (xx * yd - xy * xd)};
}

TEST(RawFrame, CorrectingItGivesASmoothPictureOfTheBedBack) {
  const TrueCamera camera = trueCamera(tiltedCamera(), kBed);
  const Size size = camera.corrected;
  cv::Mat picture(size.height, size.width, CV_8U);
  for (int y = 0; y < picture.rows; ++y) {
    for (int x = 0; x < picture.cols; ++x) {
      picture.at<unsigned char>(y, x) = cv::saturate_cast<unsigned char>(
          128 + 50 * std::sin(x / 14.0) + 50 * std::cos(y / 11.0 + x / 40.0));
    }
  }
  // The view's pixels, which need not fill the bed exactly.
  const auto pixel = static_cast<double>(camera.param.Pixel);
  const cv::Rect2d area(0, 0, size.width * pixel, size.height * pixel);
  FrameBuffer raw = toBuffer(rawFrame(CornerRays(camera.param, camera.image),
                                      {{camera.param, PlacedPicture(picture, area)}}, 40));
  FrameBuffer view = blankBuffer(size, 8);
  FrameBuffer mask = blankBuffer(size, 8);
  ASSERT_TRUE(SingleCamCorrected(raw.data(), raw.size.width, raw.size.height, 8, camera.param,
                                 view.data(), size.width, size.height, mask.data()));
  constexpr int kRim = 8;  // pixels at the edges, where the frame shows what is beside the bed
  const cv::Rect inside(kRim, kRim, size.width - 2 * kRim, size.height - 2 * kRim);
  EXPECT_EQ(cv::countNonZero(toPicture(mask)(inside)), 0) << "the whole bed is in view";
  // The library renders each pixel from the nearest whole pixel of the undistorted image, so a view
  // is off by up to half a pixel in either direction, but not on average.
  const double ratio = cv::PSNR(picture(inside), toPicture(view)(inside));
  RecordProperty("psnr", std::to_string(ratio));
  EXPECT_GT(ratio, 42.5);
  EXPECT_LT(cv::norm(shiftBetween(picture(inside), toPicture(view)(inside))), 0.05);
}

TEST(RawFrame, DiscsOnTheBedHaveTheirCentroidsWhereTheLibrarySeesThem) {
  const TrueCamera camera = trueCamera(tiltedCamera(), kBed);
  constexpr double kPixelsPerUnit = 8;
  cv::Mat picture(1600, 2400, CV_8U, cv::Scalar(0));
  std::vector<cv::Point2d> centres;
  for (int row = 0; row < 5; ++row) {
    for (int column = 0; column < 7; ++column) {
      const cv::Point pixel(240 + 320 * column, 200 + 300 * row);
      cv::circle(picture, pixel, 16, cv::Scalar(250), cv::FILLED, cv::LINE_8);
      // The centre of pixel i is i + 1/2 pixels from the edge.
      centres.push_back((cv::Point2d(pixel) + cv::Point2d(0.5, 0.5)) / kPixelsPerUnit);
    }
  }
  const cv::Mat frame = rawFrame(CornerRays(camera.param, camera.image),
                                 {{camera.param, PlacedPicture(picture, kBed)}}, 0);
  for (const cv::Point2d& centre : centres) {
    const cv::Point2f expected = rawPosition(camera.param, cv::Point2f(centre));
    const cv::Point corner(cvRound(expected.x) - 10, cvRound(expected.y) - 10);
    const cv::Moments moments = cv::moments(frame(cv::Rect(corner, cv::Size(21, 21))));
    EXPECT_NEAR(corner.x + moments.m10 / moments.m00, static_cast<double>(expected.x), 0.05);
    EXPECT_NEAR(corner.y + moments.m01 / moments.m00, static_cast<double>(expected.y), 0.05);
  }
}

TEST(RawFrame, APixelIsTheMeanOfTheAreaThatItCovers) {
  // Straight from above, 1 unit a pixel: each pixel covers 16 x 16 pixels of this picture, whose
  // columns are black and white in turn.
  FishEyeCalibrationParam camera{};
  camera.fx = camera.fy = 10000;
  camera.Tz = 10000;
  cv::Mat stripes(320, 320, CV_8U, cv::Scalar(0));
  for (int x = 0; x < stripes.cols; x += 2) {
    stripes.col(x).setTo(200);
  }
  const PlacedPicture picture(stripes, cv::Rect2d(0, 0, 20, 20));
  const cv::Mat frame =
      rawFrame(CornerRays(camera, {.width = 24, .height = 24}), {{camera, picture}}, 7);
  EXPECT_EQ(frame.at<unsigned char>(10, 10), 100);
  EXPECT_EQ(frame.at<unsigned char>(23, 23), 7) << "beside the bed";
  EXPECT_NEAR(frame.at<unsigned char>(10, 0), (100 + 7) / 2, 1) << "the bed's edge halves it";
}

TEST(RawFrame, AHigherPlaneIsSeenNearerToTheCamera) {
  // 100 above the bed, over its origin: a point at 10 is seen under 10/100, 50 higher under 10/50.
  FishEyeCalibrationParam camera{};
  camera.fx = camera.fy = 100;
  camera.Tz = 100;
  const FishEyeCalibrationParam seen = seenFromPlane(camera, {.height = 50});
  EXPECT_NEAR(rawPosition(seen, {10, 0}).x, 100 * std::atan(0.2), 1e-4);
  // The same camera described with Y up and Z towards it, turned by pi about X.
  FishEyeCalibrationParam turned = camera;
  turned.Rx = 3.14159265F;
  const FishEyeCalibrationParam seenTurned = seenFromPlane(turned, {.height = 50});
  EXPECT_NEAR(rawPosition(seenTurned, {10, 0}).x, 100 * std::atan(0.2), 1e-3);
}

TEST(RawFrame, ATiltedPlaneTurnsAboutItsCentre) {
  // Turned by 90 degrees about the axis of sight: (20, 10) goes to (10 - 0, 10 + 10).
  FishEyeCalibrationParam camera{};
  camera.fx = camera.fy = 100;
  camera.Tz = 100;
  const auto seen = seenFromPlane(camera, {.centre = {10, 10}, .tilt = {0, 0, 90}});
  const cv::Point2f at = rawPosition(seen, {20, 10});
  const cv::Point2f expected = rawPosition(camera, {10, 20});
  EXPECT_NEAR(at.x, expected.x, 1e-4);
  EXPECT_NEAR(at.y, expected.y, 1e-4);
}

TEST(FrameEffects, NoiseHasItsStrengthAndFollowsFromSeedAndNumber) {
  const cv::Mat grey(300, 400, CV_8U, cv::Scalar(128));
  const SensorNoise noise(5, 1);
  const cv::Mat first = noise.added(grey, 0);
  cv::Scalar mean;
  cv::Scalar deviation;
  cv::meanStdDev(first, mean, deviation);
  EXPECT_NEAR(mean[0], 128, 0.1);
  EXPECT_NEAR(deviation[0], 5, 0.1);
  EXPECT_EQ(cv::norm(first, SensorNoise(5, 1).added(grey, 0), cv::NORM_INF), 0);
  EXPECT_GT(cv::norm(first, noise.added(grey, 1), cv::NORM_INF), 0);
  EXPECT_GT(cv::norm(first, SensorNoise(5, 2).added(grey, 0), cv::NORM_INF), 0);
}

TEST(FrameEffects, VignettingAndGradientTakeTheirShares) {
  const cv::Mat grey(201, 301, CV_8U, cv::Scalar(200));
  const cv::Mat dimmed = withLight(grey, {.vignetting = 0.5});
  EXPECT_EQ(dimmed.at<unsigned char>(100, 150), 200);
  EXPECT_EQ(dimmed.at<unsigned char>(0, 0), 100);
  const cv::Mat sloping = withLight(grey, {.gradient = 0.25});
  EXPECT_EQ(sloping.at<unsigned char>(50, 0), 200);
  EXPECT_EQ(sloping.at<unsigned char>(50, 300), 150);
}

}  // namespace
}  // namespace fisheye_calibration::program
