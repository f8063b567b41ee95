// hand-eye from the outside.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <opencv2/imgcodecs.hpp>
#include <string>
#include <vector>

#include "program/support/run_program.h"
#include "registration/debug_drive.h"

namespace fisheye_calibration::program {
namespace {

using testing::HasSubstr;

class HandEyeCommand : public DebugDriveTest {
 protected:
  static void writePoints(const std::string& rows) {
    support::writeBytes("points.csv", "PointId,Xw,Yw,ImagePtX,ImagePtY\n" + rows);
  }

  static Outcome run(const std::vector<std::string>& further) {
    std::vector<std::string> arguments = {"hand-eye", "points.csv"};
    arguments.insert(arguments.end(), further.begin(), further.end());
    return runProgram(arguments);
  }
};

TEST_F(HandEyeCommand, WritesCoefficientsPlotAndEachErrorByItsName) {
  writePoints("1,0,0,-1,-1\n2,0,0,1,-1\n3,0,0,-1,1\n4,4,0,1,1\n");
  const Outcome outcome = run({"-o", "affine.csv", "--plot", "plot.png"});
  ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
  // Least squares spreads the one value evenly: a = b = e = 1, and all four residuals have
  // length 1.
  EXPECT_EQ(support::bytesOf("affine.csv"), "a,b,c,d,e,f\n1,1,0,0,1,0\n");
  EXPECT_FALSE(cv::imread("plot.png").empty());
  EXPECT_THAT(outcome.out, HasSubstr("the library's errorX, errorY: X 1  Y 0"));
  EXPECT_THAT(outcome.out, HasSubstr("first 4 points summed, divided by all 4"));
  EXPECT_THAT(outcome.out, HasSubstr("plain RMS over all points:    X 1  Y 0"));
}

TEST_F(HandEyeCommand, TooFewPointsAreBadInput) {
  writePoints("1,0,0,0,0\n2,1,1,1,2\n");
  const Outcome outcome = run({"-o", "affine.csv"});
  EXPECT_EQ(outcome.exitCode, 2);
  EXPECT_THAT(outcome.err, HasSubstr("at least three"));
  EXPECT_FALSE(std::filesystem::exists("affine.csv"));
}

TEST_F(HandEyeCommand, PointsOnALineAreBadInput) {
  writePoints("1,0,0,0,0\n2,1,1,100,50\n3,2,2,2000,1000\n");
  const Outcome outcome = run({"-o", "affine.csv"});
  EXPECT_EQ(outcome.exitCode, 2);
  EXPECT_THAT(outcome.err, HasSubstr("on one line"));
}

TEST_F(HandEyeCommand, TheOutputIsNotWrittenOverThePoints) {
  writePoints("1,0,0,0,0\n2,1,0,1,0\n3,0,1,0,1\n");
  EXPECT_EQ(run({"-o", "points.csv"}).exitCode, 2);
  EXPECT_EQ(run({"-o", "same.png", "--plot", "same.png"}).exitCode, 2);
  EXPECT_FALSE(std::filesystem::exists("same.png"));
}

}  // namespace
}  // namespace fisheye_calibration::program
