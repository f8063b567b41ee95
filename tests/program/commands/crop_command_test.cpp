// crop from the outside.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <opencv2/imgcodecs.hpp>
#include <string>

#include "program/support/run_program.h"

namespace fisheye_calibration::program {
namespace {

using testing::HasSubstr;

class CropCommand : public testing::Test {
 protected:
  Outcome crop(const cv::Mat& picture, const std::string& size) const {
    EXPECT_TRUE(cv::imwrite(input, picture));
    return runProgram({"crop", input, "--size", size, "-o", output});
  }

  support::TemporaryFolder folder;
  std::string input = folder.file("in.png");
  std::string output = folder.file("out.png");
};

TEST_F(CropCommand, TheCentreIsKept) {
  cv::Mat picture(6, 8, CV_8UC1);
  for (int i = 0; i < 48; ++i) {
    picture.data[i] = static_cast<unsigned char>(i);
  }
  const Outcome run = crop(picture, "4x2");
  ASSERT_EQ(run.exitCode, 0) << run.err;
  const cv::Mat cut = cv::imread(output, cv::IMREAD_UNCHANGED);
  ASSERT_EQ(cut.size(), cv::Size(4, 2));
  EXPECT_EQ(cv::norm(cut, picture(cv::Rect(2, 2, 4, 2))), 0);
}

TEST_F(CropCommand, ALargerSizeLeavesABlackRimAndIsReported) {
  const Outcome run = crop(cv::Mat(2, 2, CV_8UC1, cv::Scalar(9)), "4x4");
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_THAT(run.err, HasSubstr("has only 2x2 pixels"));
  const cv::Mat cut = cv::imread(output, cv::IMREAD_UNCHANGED);
  EXPECT_EQ(cv::countNonZero(cut), 4);
  EXPECT_EQ(cut.at<unsigned char>(1, 1), 9);
}

TEST_F(CropCommand, BadInputIsRefused) {
  EXPECT_EQ(crop(cv::Mat(8, 8, CV_8UC1, cv::Scalar(9)), "4").exitCode, 2);
  EXPECT_EQ(runProgram({"crop", input, "--size", "4x4", "-o", input}).exitCode, 2);
  const std::string noPicture = writeFile(folder, "camera.ini", "[CalibraionParam]\n");
  EXPECT_EQ(runProgram({"crop", noPicture, "--size", "4x4", "-o", output}).exitCode, 2);
}

}  // namespace
}  // namespace fisheye_calibration::program
