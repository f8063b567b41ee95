// detect from the outside.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <opencv2/imgcodecs.hpp>
#include <string>

#include "files/points_csv.h"
#include "program/support/run_program.h"
#include "program/support/synthetic_target.h"

namespace fisheye_calibration::program {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

class DetectCommand : public testing::Test {
 protected:
  support::TemporaryFolder folder;
};

TEST_F(DetectCommand, PointsAreNumberedFromTheGivenIdAndOrigin) {
  const std::string picture = folder.file("target.png");
  ASSERT_TRUE(cv::imwrite(picture, drawTarget({}, {})));
  const std::string points = folder.file("points.csv");
  const Outcome run = runProgram({"detect", picture, "--chessboard", "9x7", "--spacing", "30",
                                  "--origin", "-5,7.5", "--first-id", "100", "-o", points});
  ASSERT_EQ(run.exitCode, 0) << run.err;
  const auto found = readPoints(points);
  EXPECT_EQ(found[0].PointId, 100);
  EXPECT_EQ(found[0].Xw, -5.0f);
  EXPECT_EQ(found[0].Yw, 7.5f);
  EXPECT_EQ(found[10].PointId, 110);
  EXPECT_EQ(found[10].Xw, 25.0f);
  EXPECT_EQ(found[10].Yw, 37.5f);
}

TEST_F(DetectCommand, OutputsMustDiffer) {
  const std::string one = folder.file("one.png");
  const Outcome run =
      runProgram({"detect", folder.file("photo.png"), "--chessboard", "9x7", "--spacing", "30",
                  "-o", one, "--overlay", folder.file(".") + "/one.png"});
  EXPECT_EQ(run.exitCode, 2);
  EXPECT_THAT(run.err, HasSubstr("-o and --overlay are the same file"));
  EXPECT_FALSE(std::filesystem::exists(one));
}

TEST_F(DetectCommand, AMissingTargetIsReportedAndNothingIsWritten) {
  const std::string picture = folder.file("grey.png");
  ASSERT_TRUE(cv::imwrite(picture, cv::Mat(240, 320, CV_8UC1, cv::Scalar(120))));
  const Outcome run = runProgram({"detect", picture, "--chessboard", "8x6", "--spacing", "30", "-o",
                                  folder.file("points.csv")});
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_THAT(run.err, HasSubstr("no target with 8 x 6 inner corners was found"));
  EXPECT_THAT(namesIn(folder), ElementsAre("grey.png"));
}

TEST_F(DetectCommand, PicturesOfExtremeShapesAreReportedByName) {
  for (const cv::Size& size : {cv::Size(1, 1), {20000, 2}, {2, 20000}}) {
    const std::string picture = folder.file("extreme.png");
    ASSERT_TRUE(cv::imwrite(picture, cv::Mat(size, CV_8UC1, cv::Scalar(120))));
    const Outcome run = runProgram({"detect", picture, "--chessboard", "8x6", "--spacing", "30",
                                    "-o", folder.file("points.csv")});
    EXPECT_EQ(run.exitCode, 1) << size;
    EXPECT_THAT(run.err, HasSubstr("extreme.png: "));
    EXPECT_THAT(run.err, Not(HasSubstr("OpenCV")));
  }
}

}  // namespace
}  // namespace fisheye_calibration::program
