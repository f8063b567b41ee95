// Two tilted cameras from their points to one picture, with the program alone: calibrate, stitch
// and map, with discs at known positions on the bed in the frames.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <opencv2/imgcodecs.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "files/points_csv.h"
#include "program/support/run_program.h"
#include "program/support/synthetic_target.h"

namespace fisheye_calibration::program {
namespace {

using testing::HasSubstr;
using testing::Not;

constexpr int kWidth = 640;
constexpr int kHeight = 480;

// Discs on a bed of 1000 x 400, at multiples of 50; the first two are seen by the left camera
// alone, the last two by the right one alone.
const cv::Point2d kMarkers[] = {{100, 100}, {150, 300}, {450, 100}, {500, 200},
                                {550, 350}, {850, 100}, {900, 300}};
constexpr double kMarkerRadius = 12;

// How far a disc's centre may be off its position, canvas pixels of about 0.8 world units:
//   0.05  the frame's sampling: 0.02 px of the frame, where the canvas enlarges it most
//   0.05  the canvas's interpolation in steps of 1/32 px, twice
//   0.1   the right view's rounding to whole pixels, averaged over a disc of 300 pixels or more
//   0.1   the frame's blur of about 1 px, which the view enlarges more on a disc's outer side
//   0.05  the calibrations from exact points, and the floats and text of the mapping
constexpr double kTolerance = 0.35;
// The lines are drawn with a width of whole pixels.
constexpr double kLineTolerance = kTolerance + 0.5;

// The lens at (Xw, Yw), `height` above the bed, tilted by `a` about x, then by `b` about y.
SyntheticCamera tiltedCamera(double Xw, double Yw, double height, double a, double b) {
  const double ca = std::cos(a);
  const double sa = std::sin(a);
  const double cb = std::cos(b);
  const double sb = std::sin(b);
  SyntheticCamera camera = {.width = kWidth,
                            .height = kHeight,
                            .focalLength = 280,
                            .principalPoint = {322, 238},
                            // Ry(b) Rx(a)
                            .R = {cb, sb * sa, sb * ca, 0, ca, -sa, -sb, cb * sa, cb * ca}};
  for (std::size_t i = 0; i < 3; ++i) {  // T = -R C, C = (Xw, Yw, -height)
    camera.T[i] = -(camera.R[3 * i] * Xw + camera.R[3 * i + 1] * Yw - camera.R[3 * i + 2] * height);
  }
  return camera;
}

SyntheticCamera cameraOf(const std::string& side) {
  return side == "left" ? tiltedCamera(320, 205, 230, -0.09, 0.10)
                        : tiltedCamera(680, 195, 240, 0.07, -0.12);
}

// The exact points of the bed's 21 x 9 corners, 50 apart, with which the solver does not diverge:
// those up to 300 px from the centre; half the width is 320.
std::vector<CalibrationPoint> pointsOf(const SyntheticCamera& camera) {
  const SyntheticTarget corners = {.columns = 21, .rows = 9, .spacing = 50};
  std::vector<CalibrationPoint> points = exactPoints(camera, corners);
  std::erase_if(points, [](const CalibrationPoint& point) {
    const double x = static_cast<double>(point.ImagePtX) - kWidth * 0.5;
    const double y = static_cast<double>(point.ImagePtY) - kHeight * 0.5;
    return std::hypot(x, y) > 300 || std::abs(y) > kHeight * 0.5 - 1;
  });
  return points;
}

bool onMarker(cv::Point2d bed) {
  return std::any_of(std::begin(kMarkers), std::end(kMarkers), [&](const cv::Point2d& marker) {
    return cv::norm(bed - marker) < kMarkerRadius;
  });
}

// Light discs on a dark bed.
cv::Mat drawMarkers(const SyntheticCamera& camera) {
  constexpr int kSamples = 5;  // per pixel and direction
  cv::Mat frame(kHeight, kWidth, CV_8UC1);
  for (int y = 0; y < kHeight; ++y) {
    for (int x = 0; x < kWidth; ++x) {
      int count = 0;
      for (int i = 0; i < kSamples * kSamples; ++i) {
        const double dx = (i % kSamples + 0.5) / kSamples - 0.5;
        const double dy = (i / kSamples + 0.5) / kSamples - 0.5;
        count += onMarker(camera.bedPointAt(x + dx, y + dy)) ? 1 : 0;
      }
      frame.at<unsigned char>(y, x) =
          static_cast<unsigned char>(40 + 200 * count / (kSamples * kSamples));
    }
  }
  return frame;
}

// Centroid of everything brighter than the dark bed around a position.
cv::Point2d centroidNear(const cv::Mat& picture, cv::Point2d position) {
  const int reach = 24;  // a disc has a radius of 15
  double sum = 0;
  cv::Point2d centre(0, 0);
  for (int y = static_cast<int>(position.y) - reach; y <= static_cast<int>(position.y) + reach;
       ++y) {
    for (int x = static_cast<int>(position.x) - reach; x <= static_cast<int>(position.x) + reach;
         ++x) {
      if (!cv::Rect({}, picture.size()).contains({x, y})) {
        continue;
      }
      const double light = std::max(0, picture.at<unsigned char>(y, x) - 50);
      sum += light;
      centre += light * cv::Point2d(x, y);
    }
  }
  EXPECT_GT(sum, 0) << position;
  return centre / sum;
}

class TiltedPair : public testing::Test {
 protected:
  void SetUp() override {
    for (const std::string side : {"left", "right"}) {
      const SyntheticCamera camera = cameraOf(side);
      ASSERT_TRUE(cv::imwrite(folder.file(side + ".png"), drawMarkers(camera)));
      ASSERT_TRUE(cv::imwrite(folder.file(side + "-plain.png"),
                              cv::Mat(kHeight, kWidth, CV_8UC1, cv::Scalar(128))));
      writeFile(folder, side + ".csv", formatPoints(pointsOf(camera)));
      const Outcome run =
          runProgram({"calibrate", folder.file(side + ".csv"), "--image-size", "640x480",
                      "--corrected-size", "1280x960", "-o", folder.file(side + ".ini")});
      ASSERT_EQ(run.exitCode, 0) << run.err;
    }
  }

  std::string files(const std::string& side, const std::string& frame) const {
    return folder.file(side + frame + ".png") + "," + folder.file(side + ".ini") + "," +
           folder.file(side + ".csv");
  }

  cv::Mat stitch(const std::string& frame, const std::vector<std::string>& further = {}) {
    std::vector<std::string> arguments = {
        "stitch", "--left", files("left", frame), "--right", files("right", frame), "-o", canvas,
        "--dual", dual};
    arguments.insert(arguments.end(), further.begin(), further.end());
    outcome = runProgram(arguments);
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    return cv::imread(canvas, cv::IMREAD_UNCHANGED);
  }

  double valueOf(const std::string& key) const {
    const std::string text = support::bytesOf(dual);
    const std::size_t at = text.find(key + "=");
    EXPECT_NE(at, std::string::npos) << key;
    return std::stod(text.substr(at + key.size() + 1));
  }

  cv::Point2d mapped(cv::Point2d bed) const {
    const Outcome run = runProgram({"map", "--dual", dual, "--from", "world", "--to", "stitched",
                                    std::to_string(bed.x), std::to_string(bed.y)});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    cv::Point2d position;
    char comma = 0;
    std::istringstream(run.out) >> position.x >> comma >> position.y;
    return position;
  }

  support::TemporaryFolder folder;
  std::string canvas = folder.file("bed.png");
  std::string dual = folder.file("dual.ini");
  Outcome outcome{};
};

TEST_F(TiltedPair, MappedPositionsLieOnTheContent) {
  const cv::Mat picture = stitch("");
  EXPECT_THAT(outcome.err, Not(HasSubstr("disagree")));
  for (const cv::Point2d& marker : kMarkers) {
    const cv::Point2d position = mapped(marker);
    const cv::Point2d content = centroidNear(picture, position);
    EXPECT_NEAR(position.x, content.x, kTolerance) << marker;
    EXPECT_NEAR(position.y, content.y, kTolerance) << marker;
  }
}

TEST_F(TiltedPair, MappedPositionsOfACropLieOnTheContent) {
  const cv::Size whole = stitch("").size();
  const int top = 100;
  const int height = (whole.height - top - 60) / 4 * 4;
  const int bottom = whole.height - top - height;
  ASSERT_NE(top, bottom);
  const cv::Mat picture = stitch("", {"--crop", "200,100," + std::to_string(whole.width - 400) +
                                                    "x" + std::to_string(height)});
  for (const cv::Point2d& marker : kMarkers) {
    // The datum lies halfway up the whole canvas, so the picture's row is v + bottom - top.
    const cv::Point2d position = mapped(marker) + cv::Point2d(0, bottom - top);
    const cv::Point2d content = centroidNear(picture, position);
    EXPECT_NEAR(position.x, content.x, kTolerance) << marker;
    EXPECT_NEAR(position.y, content.y, kTolerance) << marker;
  }
}

// Mean position of a line's black core across the line, in a picture of uniformly grey frames.
// `other` is the coordinate along the line, away from the lines that cross it.
double lineNear(const cv::Mat& picture, double position, int other, bool column) {
  double sum = 0;
  double moment = 0;
  for (int at = static_cast<int>(position) - 5; at <= static_cast<int>(position) + 6; ++at) {
    const int value =
        column ? picture.at<unsigned char>(other, at) : picture.at<unsigned char>(at, other);
    const double dark = std::max(0, 128 - value);
    sum += dark;
    moment += dark * at;
  }
  EXPECT_GT(sum, 0) << position;
  return moment / sum;
}

class TiltedPairGrid : public TiltedPair, public testing::WithParamInterface<bool> {};

TEST_P(TiltedPairGrid, LinesRunThroughTheContent) {
  const cv::Size whole = stitch("").size();
  std::vector<std::string> crop;
  if (GetParam()) {
    crop = {"--crop", "200,100," + std::to_string(whole.width - 400) + "x" +
                          std::to_string((whole.height - 160) / 4 * 4)};
  }
  const cv::Mat picture = stitch("", crop);
  std::vector<std::string> grid = crop;
  grid.insert(grid.end(), {"--grid", "50"});
  const cv::Mat lines = stitch("-plain", grid);
  ASSERT_EQ(lines.size(), picture.size());
  const double pixel = valueOf("Pixel");
  const int quarter = static_cast<int>(12.5 / pixel);  // clear of the neighbouring lines
  for (const cv::Point2d& marker : kMarkers) {
    // The disc's position by the record; its content is then measured.
    const double row = valueOf("StdImageHeight") - valueOf("DatumImagePtY");
    const cv::Point2d guess((marker.x - valueOf("DatumPtXw")) / pixel + valueOf("DatumImagePtX"),
                            (marker.y - valueOf("DatumPtYw")) / pixel + row);
    const cv::Point2d content = centroidNear(picture, guess);
    const int x = static_cast<int>(content.x);
    const int y = static_cast<int>(content.y);
    EXPECT_NEAR(lineNear(lines, content.x, y + quarter, true), content.x, kLineTolerance) << marker;
    EXPECT_NEAR(lineNear(lines, content.y, x + quarter, false), content.y, kLineTolerance)
        << marker;
  }
}

INSTANTIATE_TEST_SUITE_P(WholeAndCropped, TiltedPairGrid, testing::Bool());

}  // namespace
}  // namespace fisheye_calibration::program
