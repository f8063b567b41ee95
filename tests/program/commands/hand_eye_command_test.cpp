#include "commands/hand_eye_command.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <opencv2/imgcodecs.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "base/failure.h"
#include "files/read_file.h"
#include "registration/debug_drive.h"
#include "reports/affine_report.h"

namespace fisheye_calibration::program {
namespace {

using testing::HasSubstr;

constexpr const char* kHeader = "PointId,Xw,Yw,ImagePtX,ImagePtY\n";

CalibrationPoint pair(float x, float y, float Xw, float Yw) {
  CalibrationPoint point{};
  point.ImagePtX = x;
  point.ImagePtY = y;
  point.Xw = Xw;
  point.Yw = Yw;
  return point;
}

class HandEyeCommand : public DebugDriveTest {
 protected:
  static void write(const char* path, const std::string& text) { std::ofstream(path) << text; }

  // Runs the command; its exit code, also when it fails.
  int run(const std::string& points, const std::string& output, const std::string& plot = "") {
    try {
      return runHandEye({points, output, plot}, out_);
    } catch (const Failure& failure) {
      failure_ = failure.what();
      return failure.code();
    }
  }

  std::ostringstream out_;
  std::string failure_;
};

TEST(AffineReport, ResidualIsMeasuredMinusMapped) {
  const AffineMap map{{2, 0, 0, 3, 1, -4}, 0, 0};  // (5, 7) is mapped to (11, 17)
  const auto residuals = residualsOf(map, {pair(5, 7, 11.5f, 16)});
  EXPECT_EQ(residuals.at(0).x, 0.5);
  EXPECT_EQ(residuals.at(0).y, -1);
}

TEST(AffineReport, PlainErrorCountsEveryPoint) {
  std::vector<WorldResidual> residuals(12);
  residuals[11] = {6, 12};  // sqrt(36/12), sqrt(144/12)
  const WorldResidual rms = rootMeanSquare(residuals);
  EXPECT_DOUBLE_EQ(rms.x, std::sqrt(3.0));
  EXPECT_DOUBLE_EQ(rms.y, std::sqrt(12.0));
}

TEST(AffineReport, CoefficientsReadBackExactly) {
  EXPECT_EQ(formatAffine({{0.5, -2, 0, 0.1, 1e-9, 300}, 0, 0}),
            "a,b,c,d,e,f\n0.5,-2,0,0.1,1e-09,300\n");
}

TEST_F(HandEyeCommand, WritesCoefficientsPlotAndEachErrorByItsName) {
  write("points.csv", std::string(kHeader) + "1,0,0,-1,-1\n2,0,0,1,-1\n3,0,0,-1,1\n4,4,0,1,1\n");
  ASSERT_EQ(run("points.csv", "affine.csv", "plot.png"), kExitOk) << failure_;
  // Least squares spreads the one value evenly: a = b = e = 1, and all four residuals are 1.
  EXPECT_EQ(readFile("affine.csv"), "a,b,c,d,e,f\n1,1,0,0,1,0\n");
  EXPECT_FALSE(cv::imread("plot.png").empty());
  EXPECT_THAT(out_.str(), HasSubstr("the library's errorX, errorY: X 1  Y 0"));
  EXPECT_THAT(out_.str(), HasSubstr("first 4 points summed, divided by all 4"));
  EXPECT_THAT(out_.str(), HasSubstr("plain RMS over all points:    X 1  Y 0"));
}

TEST_F(HandEyeCommand, TooFewPointsAreBadInput) {
  write("points.csv", std::string(kHeader) + "1,0,0,0,0\n2,1,1,1,2\n");
  EXPECT_EQ(run("points.csv", "affine.csv"), kExitBadInput);
  EXPECT_THAT(failure_, HasSubstr("at least three"));
  EXPECT_FALSE(std::filesystem::exists("affine.csv"));
}

TEST_F(HandEyeCommand, PointsOnALineAreBadInput) {
  write("points.csv", std::string(kHeader) + "1,0,0,0,0\n2,1,1,100,50\n3,2,2,2000,1000\n");
  EXPECT_EQ(run("points.csv", "affine.csv"), kExitBadInput);
  EXPECT_THAT(failure_, HasSubstr("on one line"));
}

TEST_F(HandEyeCommand, OutputIsNotWrittenOverThePoints) {
  write("points.csv", std::string(kHeader) + "1,0,0,0,0\n2,1,0,1,0\n3,0,1,0,1\n");
  EXPECT_EQ(run("points.csv", "points.csv"), kExitBadInput);
  EXPECT_EQ(run("points.csv", "same.png", "same.png"), kExitBadInput);
  EXPECT_FALSE(std::filesystem::exists("same.png"));
}

}  // namespace
}  // namespace fisheye_calibration::program
