// calibrate from the outside: exit codes, messages and files.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <filesystem>
#include <opencv2/imgcodecs.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "files/points_csv.h"
#include "program/support/printed_table.h"
#include "program/support/run_program.h"
#include "program/support/synthetic_target.h"

namespace fisheye_calibration::program {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

std::string goodCsv() { return formatPoints(exactPoints({}, {})); }

// Exact points of a target that extends beyond half the longer side, with which the solver
// diverges.
std::string divergingCsv() { return formatPoints(exactPoints({.focalLength = 700}, {})); }

class CalibrateCommand : public testing::Test {
 protected:
  Outcome calibrate(const std::string& csv, const std::vector<std::string>& further = {}) const {
    std::vector<std::string> arguments = {
        "calibrate", writeFile(folder, "points.csv", csv), "--image-size", "960x720", "-o", camera};
    arguments.insert(arguments.end(), further.begin(), further.end());
    return runProgram(arguments);
  }

  support::TemporaryFolder folder;
  std::string camera = folder.file("camera.ini");
};

TEST_F(CalibrateCommand, APictureCanReplaceThePoints) {
  const std::string picture = folder.file("target.png");
  ASSERT_TRUE(cv::imwrite(picture, drawTarget({}, {})));
  const Outcome run =
      runProgram({"calibrate", picture, "--chessboard", "9x7", "--spacing", "30", "-o", camera});
  EXPECT_EQ(run.exitCode, 0) << run.err;
  EXPECT_NEAR(valueOf(run.out, "fx"), 300, 3);
  EXPECT_TRUE(std::filesystem::exists(camera));
}

TEST_F(CalibrateCommand, ExactPointsGiveTheExactCamera) {
  const Outcome run = calibrate(goodCsv());
  EXPECT_EQ(run.exitCode, 0) << run.err;
  EXPECT_NEAR(valueOf(run.out, "fx"), 300, 0.05);
  EXPECT_NEAR(valueOf(run.out, "fy"), 300, 0.05);
  EXPECT_NEAR(valueOf(run.out, "k1"), -0.05, 1e-3);
  EXPECT_THAT(run.err, Not(HasSubstr("warning")));
}

TEST_F(CalibrateCommand, ADivergedResultLeavesTheOldCameraUntouched) {
  writeFile(folder, "camera.ini", "the old one");
  const Outcome run = calibrate(divergingCsv(), {"--solver", "library"});
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_THAT(run.err, HasSubstr("half the longer side) from the centre"));
  EXPECT_THAT(run.err, HasSubstr("was not written"));
  EXPECT_EQ(support::bytesOf(camera), "the old one");
}

TEST_F(CalibrateCommand, ForceWritesADivergedResultAndStillReportsIt) {
  const Outcome run = calibrate(divergingCsv(), {"--solver", "library", "--force"});
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_THAT(run.err, HasSubstr("not to be trusted"));
  EXPECT_THAT(support::bytesOf(camera), HasSubstr("[CalibraionParam]"));
}

TEST_F(CalibrateCommand, PointsOnOneLineAreReportedAndNothingIsWritten) {
  std::ostringstream csv;
  csv << "PointId,Xw,Yw,ImagePtX,ImagePtY\n";
  for (int i = 1; i <= 12; ++i) {
    csv << i << "," << 10 * i << ",0," << 100 + 50 * i << ",360\n";
  }
  const Outcome run = calibrate(csv.str());
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_THAT(run.err, HasSubstr("warning: all points lie on one line"));
  EXPECT_FALSE(std::filesystem::exists(camera));
}

// All points lie within 1e-30 px of the corner, for which the solver raises an error.
TEST_F(CalibrateCommand, PointsThatTheSolverCannotUseAreReportedInOneLine) {
  const Outcome run = calibrate(
      "PointId,Xw,Yw,ImagePtX,ImagePtY\n"
      "0,0,7.15835438528932,5.431351257552049e-31,3.5922234579812465e-31\n"
      "1,0,0,4.786989949994668e-31,2.471962920982094e-31\n"
      "2,10,0,0,0\n"
      "3,6.81481809263563,7.789830633248863,0,5.670917661238859e-31\n"
      "4,8.15748177345171,1.28476199447485,1.4647115662338162e-31,0\n"
      "5,0,10,0,8.422971651193236e-31\n"
      "6,10,3.1594749951814407,3.0960500712425936e-31,9.769766742667433e-31\n"
      "7,8.957020257414191,4.840721713764507,0,0\n"
      "8,4.918725428961803,0,0,3.706226358356157e-32\n");
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_FALSE(std::filesystem::exists(camera));
  EXPECT_FALSE(std::filesystem::exists(folder.file("residuals.csv")));
  EXPECT_THAT(run.err, HasSubstr("points.csv: the points do not determine the camera"));
  EXPECT_THAT(run.err, Not(HasSubstr("OpenCV")));
  EXPECT_EQ(run.err.back(), '\n');
}

TEST_F(CalibrateCommand, EightPointsAreRefusedBeforeTheSolver) {
  std::string csv = goodCsv();
  std::size_t end = 0;
  for (int line = 0; line < 9; ++line) {
    end = csv.find('\n', end) + 1;
  }
  const Outcome run = calibrate(csv.substr(0, end));
  EXPECT_EQ(run.exitCode, 2);
  EXPECT_EQ(run.err, "only 8 points, at least 9 are needed\n");
  EXPECT_FALSE(std::filesystem::exists(camera));
}

TEST_F(CalibrateCommand, InvalidNumbersAreReportedWithFileLineAndColumn) {
  const Outcome run = calibrate("PointId,Xw,Yw,ImagePtX,ImagePtY\n1,2,3,4,5\n2,3, abc,5,6\n");
  EXPECT_EQ(run.exitCode, 2);
  EXPECT_EQ(run.err, folder.file("points.csv") + ":3:6: not a number: \"abc\"\n");
}

TEST_F(CalibrateCommand, OutputsCanBePlacedElsewhere) {
  const Outcome run = calibrate(goodCsv(), {"--residual-plot", folder.file("plot.png"),
                                            "--residual-table", folder.file("table.csv")});
  EXPECT_EQ(run.exitCode, 0) << run.err;
  EXPECT_THAT(namesIn(folder),
              ElementsAre("accuracy.png", "camera.ini", "plot.png", "points.csv", "table.csv"));
}

TEST_F(CalibrateCommand, AListOfPointsNeedsTheImageSize) {
  const Outcome run =
      runProgram({"calibrate", writeFile(folder, "points.csv", goodCsv()), "-o", camera});
  EXPECT_EQ(run.exitCode, 2);
  EXPECT_THAT(run.err, StartsWith("--image-size is missing"));
}

TEST_F(CalibrateCommand, AnInputIsNeverOverwritten) {
  const std::string points = writeFile(folder, "points.csv", goodCsv());
  const Outcome run = runProgram({"calibrate", points, "--image-size", "960x720", "-o", points});
  EXPECT_EQ(run.exitCode, 2);
  EXPECT_EQ(support::bytesOf(points), goodCsv());
}

}  // namespace
}  // namespace fisheye_calibration::program
