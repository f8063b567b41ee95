// detect with folders and videos, from the outside.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <string>
#include <vector>

#include "program/support/run_program.h"
#include "program/support/sample_video.h"
#include "program/support/synthetic_target.h"

namespace fisheye_calibration::program {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

std::vector<std::string> namesIn(const std::string& folder) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

class DetectFrames : public testing::Test {
 protected:
  Outcome detect(const std::vector<std::string>& further) const {
    std::vector<std::string> arguments = {"detect", "--chessboard", "9x7", "--spacing", "30"};
    arguments.insert(arguments.end(), further.begin(), further.end());
    return runProgram(arguments);
  }

  support::TemporaryFolder folder;
  cv::Mat target = drawTarget({}, {});
  cv::Mat nothing = cv::Mat(720, 960, CV_8UC1, cv::Scalar(120));
  std::string points = folder.file("points");
};

TEST_F(DetectFrames, EachPictureOfAFolderGetsItsPoints) {
  const std::string pictures = folder.file("pictures");
  std::filesystem::create_directory(pictures);
  ASSERT_TRUE(cv::imwrite(pictures + "/a.png", target));
  ASSERT_TRUE(cv::imwrite(pictures + "/a.bmp", target));
  ASSERT_TRUE(cv::imwrite(pictures + "/a.png.png", target));
  ASSERT_TRUE(cv::imwrite(pictures + "/b.png", nothing));
  const Outcome run = detect({pictures, "-o", points, "--overlay", folder.file("found")});
  EXPECT_EQ(run.exitCode, 0) << run.err;
  EXPECT_THAT(run.err, HasSubstr("b.png: no target with 9 x 7 inner corners was found; "));
  EXPECT_THAT(run.out, HasSubstr(pictures + ": the target was found in 3 of 4 frames in "));
  EXPECT_THAT(run.out, HasSubstr(" s; points written to " + points + "\n"));
  EXPECT_THAT(namesIn(points), ElementsAre("a.csv", "a.png.csv", "a.png.png.csv"));
  EXPECT_THAT(namesIn(folder.file("found")), ElementsAre("a.png", "a.png.png", "a.png.png.png"));
  ASSERT_EQ(detect({pictures + "/a.png", "-o", folder.file("single.csv")}).exitCode, 0);
  const std::string single = support::bytesOf(folder.file("single.csv"));
  EXPECT_EQ(support::bytesOf(points + "/a.csv"), single);
  EXPECT_EQ(support::bytesOf(points + "/a.png.csv"), single);
  EXPECT_EQ(support::bytesOf(points + "/a.png.png.csv"), single);
}

TEST_F(DetectFrames, ABrokenPictureMakesTheExitCodeOneAndTheRestGoesOn) {
  const std::string pictures = folder.file("pictures");
  std::filesystem::create_directory(pictures);
  writeFile(folder, "pictures/a.png", "no picture");
  ASSERT_TRUE(cv::imwrite(pictures + "/b.png", target));
  const Outcome run = detect({pictures, "-o", points});
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_THAT(run.err, HasSubstr("a.png: not a picture that can be read\n"));
  EXPECT_THAT(run.out, HasSubstr(": the target was found in 1 of 2 frames in "));
  EXPECT_THAT(namesIn(points), ElementsAre("b.csv"));
}

TEST_F(DetectFrames, FramesOfAVideoAreNumbered) {
  std::vector<cv::Mat> frames;
  for (const cv::Mat& grey : {nothing, target, nothing, target}) {
    cv::cvtColor(grey, frames.emplace_back(), cv::COLOR_GRAY2BGR);
  }
  writeVideo(folder.file("in.avi"), frames);
  const Outcome run = detect({folder.file("in.avi"), "-o", points, "--frames", "3"});
  EXPECT_EQ(run.exitCode, 0) << run.err;
  EXPECT_THAT(run.err, HasSubstr("in.avi, frame 1: no target with "));
  EXPECT_THAT(run.err, HasSubstr("in.avi, frame 3: no target with "));
  EXPECT_THAT(run.err, Not(HasSubstr("frame 2")));
  EXPECT_THAT(run.out, HasSubstr(": the target was found in 1 of 3 frames in "));
  EXPECT_THAT(namesIn(points), ElementsAre("frame-000002.csv"));
}

TEST_F(DetectFrames, NoTargetInAnyFrameIsAFailure) {
  const std::string pictures = folder.file("pictures");
  std::filesystem::create_directory(pictures);
  ASSERT_TRUE(cv::imwrite(pictures + "/b.png", nothing));
  EXPECT_EQ(detect({pictures, "-o", points}).exitCode, 1);
  EXPECT_THAT(namesIn(points), ElementsAre());
}

TEST_F(DetectFrames, BadInputIsRefusedAndNothingIsWritten) {
  const std::string pictures = folder.file("pictures");
  std::filesystem::create_directory(pictures);
  EXPECT_EQ(detect({pictures, "-o", points}).exitCode, 2);  // no picture in it
  ASSERT_TRUE(cv::imwrite(pictures + "/b.png", target));
  const std::string file = writeFile(folder, "file", "old");
  EXPECT_EQ(detect({pictures, "-o", file}).exitCode, 2);
  EXPECT_EQ(detect({pictures, "-o", pictures}).exitCode, 2);
  EXPECT_EQ(detect({pictures, "-o", points, "--overlay", points}).exitCode, 2);
  EXPECT_EQ(detect({pictures, "-o", points, "--frames", "x"}).exitCode, 2);
  EXPECT_EQ(detect({pictures, "-o", points, "--circles", "4x4"}).exitCode, 2);
  EXPECT_EQ(detect({pictures + "/b.png", "-o", points, "--frames", "1"}).exitCode, 2);
  EXPECT_FALSE(std::filesystem::exists(points));
}

}  // namespace
}  // namespace fisheye_calibration::program
