// correct with videos, from the outside.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <csignal>
#include <filesystem>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <opencv2/videoio.hpp>
#include <string>
#include <vector>

#include "files/video_kind.h"
#include "program/support/run_program.h"
#include "program/support/sample_record.h"
#include "program/support/sample_video.h"
#include "program/support/synthetic_target.h"
#include "sources/frame_source.h"
#ifdef __linux__
#include <sys/resource.h>
#endif

namespace fisheye_calibration::program {
namespace {

using testing::AnyOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

constexpr int kCount = 6;

// The target, a little darker in every frame.
std::vector<cv::Mat> targetPictures() {
  const SyntheticCamera overhead = {.R = {1, 0, 0, 0, 1, 0, 0, 0, 1}, .T = {-120, -90, 170}};
  const cv::Mat target = drawTarget(overhead, SyntheticTarget{});
  std::vector<cv::Mat> pictures;
  for (int frame = 0; frame < kCount; ++frame) {
    cv::Mat colour;
    cv::cvtColor(target * (1 - 0.1 * frame), colour, cv::COLOR_GRAY2BGR);
    pictures.push_back(colour);
  }
  return pictures;
}

bool canWrite(const std::string& path, const std::string& code) {
  cv::VideoWriter writer;
  const bool opened =
      writer.open(path, cv::CAP_FFMPEG, cv::VideoWriter::fourcc(code[0], code[1], code[2], code[3]),
                  kSampleRate, cv::Size(960, 720), true);
  return opened;
}

class CorrectVideo : public testing::Test {
 protected:
  void SetUp() override {
    SaveCalibrationParam(camera.c_str(), sampleRecord());
    writeVideo(video, targetPictures());
  }

  Outcome correct(const std::vector<std::string>& further) const {
    std::vector<std::string> arguments = {"correct", "--camera", camera};
    arguments.insert(arguments.end(), further.begin(), further.end());
    return runProgram(arguments);
  }

  support::TemporaryFolder folder;
  std::string camera = folder.file("camera.ini");
  std::string video = folder.file("in.avi");
  std::string top = folder.file("top.avi");
};

TEST_F(CorrectVideo, FramesAreCorrectedAsPicturesAre) {
  // The decoded frames as pictures without loss, corrected one by one.
  std::filesystem::create_directory(folder.file("frames"));
  const auto source = openSource(video);
  for (int number = 1; const auto frame = source->next(); ++number) {
    ASSERT_TRUE(cv::imwrite(
        folder.file("frames") + "/frame-00000" + std::to_string(number) + ".png", frame->picture));
  }
  ASSERT_EQ(correct({folder.file("frames"), "-o", folder.file("expected")}).exitCode, 0);
  const Outcome run = correct({video, "-o", folder.file("views")});
  ASSERT_EQ(run.exitCode, 0) << run.err;
  EXPECT_EQ(run.err, "");
  for (int number = 1; number <= kCount; ++number) {
    const std::string name = "/frame-00000" + std::to_string(number) + ".png";
    const std::string expected = support::bytesOf(folder.file("expected") + name);
    EXPECT_FALSE(expected.empty());
    EXPECT_EQ(support::bytesOf(folder.file("views") + name), expected) << number;
  }
  EXPECT_FALSE(std::filesystem::exists(folder.file("views") + "/frame-000007.png"));
}

TEST_F(CorrectVideo, AVideoKeepsItsFramesRateAndCodec) {
  const Outcome run = correct({video, "-o", top, "--mask", folder.file("mask.png")});
  ASSERT_EQ(run.exitCode, 0) << run.err;
  EXPECT_EQ(run.err, "");
  EXPECT_THAT(run.out, StartsWith(video + ": 6 of 6 frames corrected in "));
  EXPECT_THAT(run.out, HasSubstr(" frames per second, reading and writing included"));
  EXPECT_THAT(run.out, HasSubstr("; written to " + top + " (Motion JPEG, 12 frames per second)\n"));
  EXPECT_TRUE(std::filesystem::exists(folder.file("mask.png")));
  ASSERT_EQ(correct({video, "-o", folder.file("views")}).exitCode, 0);
  const auto source = openSource(top);
  EXPECT_EQ(source->rate(), kSampleRate);
  EXPECT_EQ(source->codec(), "MJPG");
  EXPECT_EQ(source->count(), kCount);
  for (int number = 1; number <= kCount; ++number) {
    const auto frame = source->next();
    ASSERT_TRUE(frame);
    ASSERT_EQ(frame->fault, "");
    const cv::Mat exact =
        cv::imread(folder.file("views") + "/frame-00000" + std::to_string(number) + ".png");
    ASSERT_EQ(frame->picture.size(), exact.size());
    // Compression changes grey values by few units; neighbouring frames differ by 20 in the light.
    EXPECT_LT(cv::norm(frame->picture, exact, cv::NORM_L1) / static_cast<double>(3 * exact.total()),
              4)
        << number;
  }
  EXPECT_THAT(namesIn(folder), ElementsAre("camera.ini", "in.avi", "mask.png", "top.avi", "views"));
}

TEST_F(CorrectVideo, OtherCodecsAreKept) {
  using Case = std::array<const char*, 3>;
  int tried = 0;
  for (const auto& [name, code, family] : {Case{"a.mp4", "avc1", "H.264"},
                                           {"b.mp4", "mp4v", "MPEG-4"},
                                           {"c.avi", "XVID", "MPEG-4"},
                                           {"d.mp4", "hvc1", "H.265"}}) {
    const std::string in = folder.file(name);
    if (!canWrite(in, code)) {
      continue;
    }
    ++tried;
    {
      cv::VideoWriter writer(in, cv::CAP_FFMPEG,
                             cv::VideoWriter::fourcc(code[0], code[1], code[2], code[3]), 12.5,
                             cv::Size(960, 720), true);
      for (const cv::Mat& picture : targetPictures()) {
        writer.write(picture);
      }
    }
    const std::string out = folder.file(std::string("out_") + name);
    const Outcome run = correct({in, "-o", out});
    ASSERT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.err, "");
    EXPECT_THAT(run.out, HasSubstr(std::string("(") + family + ", 12.5 frames per second)"));
    const auto source = openSource(out);
    EXPECT_EQ(codecName(source->codec()), family);
    EXPECT_EQ(source->count(), kCount);
    EXPECT_EQ(source->rate(), 12.5);
  }
#ifdef __linux__
  EXPECT_EQ(tried, 4);
#endif
}

TEST_F(CorrectVideo, AnotherCodecThanTheOriginalsIsNoted) {
  if (!canWrite(folder.file("probe.mp4"), "avc1")) {
    GTEST_SKIP() << "the image library cannot write .mp4 files here";
  }
  const std::string mp4 = folder.file("top.mp4");
  const Outcome run = correct({video, "-o", mp4});
  ASSERT_EQ(run.exitCode, 0) << run.err;
  EXPECT_EQ(run.err, "note: " + mp4 +
                         ": Motion JPEG, as in the original, cannot be written to such a file "
                         "here; it is H.264\n");
}

TEST_F(CorrectVideo, ADamagedFrameIsNamedAndTheRestGoesOn) {
  replaceFrame(video, 3, "");
  const Outcome run = correct({video, "-o", top});
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_THAT(run.err, StartsWith(video));
  EXPECT_THAT(run.err, AnyOf(HasSubstr("frame 3: it cannot be decoded"),
                             HasSubstr("time jumps after frame 2")));
  EXPECT_THAT(run.out, HasSubstr(": 5 of 6 frames corrected in "));
  EXPECT_EQ(openSource(top)->count(), 5);
}

TEST_F(CorrectVideo, OnlyTheFramesWantedAreTaken) {
  const Outcome run = correct({video, "-o", folder.file("views"), "--frames", "2"});
  ASSERT_EQ(run.exitCode, 0) << run.err;
  EXPECT_THAT(run.out, HasSubstr(": 2 of 2 frames corrected in "));
  EXPECT_TRUE(std::filesystem::exists(folder.file("views") + "/frame-000002.png"));
  EXPECT_FALSE(std::filesystem::exists(folder.file("views") + "/frame-000003.png"));
}

TEST_F(CorrectVideo, AFolderBecomesAVideo) {
  std::filesystem::create_directory(folder.file("frames"));
  const std::vector<cv::Mat> pictures = targetPictures();
  for (int i = 0; i < 3; ++i) {
    ASSERT_TRUE(cv::imwrite(folder.file("frames") + "/" + std::to_string(9 + i) + ".png",
                            pictures[static_cast<std::size_t>(i)]));
  }
  writeFile(folder, "frames/8.png", "no picture");
  const Outcome run = correct({folder.file("frames"), "-o", top, "--fps", "5"});
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_THAT(run.err, HasSubstr("8.png: not a picture that can be read\n"));
  EXPECT_THAT(run.out, HasSubstr(": 3 of 4 frames corrected in "));
  const auto source = openSource(top);
  EXPECT_EQ(source->count(), 3);
  EXPECT_EQ(source->rate(), 5);
}

TEST_F(CorrectVideo, AFailedRunLeavesAnOldFileAsItWas) {
  writeFile(folder, "top.avi", "old");
  for (int frame = 1; frame <= kCount; ++frame) {
    replaceFrame(video, frame, "");
  }
  const Outcome run = correct({video, "-o", top});
  EXPECT_NE(run.exitCode, 0);
  EXPECT_EQ(support::bytesOf(top), "old");
  EXPECT_THAT(namesIn(folder), ElementsAre("camera.ini", "in.avi", "top.avi"));
}

TEST_F(CorrectVideo, AMaskAmongTheFramesIsRefused) {
  std::filesystem::create_directory(folder.file("frames"));
  std::filesystem::create_directory(folder.file("views"));
  const std::string frame = (std::filesystem::path(folder.file("frames")) / "1.png").string();
  ASSERT_TRUE(cv::imwrite(frame, targetPictures()[0]));
  const std::string before = support::bytesOf(frame);
  const Outcome run = correct({folder.file("frames"), "-o", top, "--mask", frame});
  EXPECT_EQ(run.exitCode, 2);
  EXPECT_EQ(run.err, "--mask: " + frame + " must not lie among the frames\n");
  EXPECT_EQ(support::bytesOf(frame), before);
  const std::filesystem::path view = std::filesystem::path(folder.file("views")) / "frame-1.png";
  EXPECT_EQ(correct({video, "-o", folder.file("views"), "--mask", view.string()}).exitCode, 2);
  EXPECT_FALSE(std::filesystem::exists(view));
}

#ifdef __linux__
// Limits the size of files that this process writes, as a full disk would, and lets it know by an
// error instead of a signal.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes) : ignored_(std::signal(SIGXFSZ, SIG_IGN)) {
    getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit limit = {.rlim_cur = bytes, .rlim_max = before_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~FileSizeLimit() {
    setrlimit(RLIMIT_FSIZE, &before_);
    std::signal(SIGXFSZ, ignored_);
  }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;

 private:
  rlimit before_ = {};
  void (*ignored_)(int);
};

TEST_F(CorrectVideo, AFullDiskLeavesAnOldFileAsItWas) {
  writeFile(folder, "top.avi", "old");
  const FileSizeLimit limit(8192);
  const Outcome run = correct({video, "-o", top});
  EXPECT_EQ(run.exitCode, 1) << run.out;
  EXPECT_THAT(run.err, HasSubstr(top + ": the video could not be written as a whole ("));
  EXPECT_EQ(support::bytesOf(top), "old");
  EXPECT_THAT(namesIn(folder), ElementsAre("camera.ini", "in.avi", "top.avi"));
}
#endif

TEST_F(CorrectVideo, OddSizesAreRefusedWithARemedy) {
  const Outcome run = correct({video, "-o", top, "--size", "301x200"});
  EXPECT_EQ(run.exitCode, 2);
  EXPECT_EQ(run.err, top + ": videos need even sides, not 301x200; give another --size\n");
  EXPECT_FALSE(std::filesystem::exists(top));
}

TEST_F(CorrectVideo, BadInputIsRefusedAndNothingIsWritten) {
  const std::string picture = folder.file("frame.png");
  ASSERT_TRUE(cv::imwrite(picture, targetPictures()[0]));
  const std::vector<std::vector<std::string>> wrong = {
      {video, "-o", video},
      {video, "-o", folder.file("none") + "/top.avi"},
      {video, "-o", folder.file("top.wmv")},
      {video, "-o", picture},
      {video, "-o", top, "--frames", "0"},
      {video, "-o", top, "--fps", "-1"},
      {video, "-o", top, "--fps", "1001"},
      {video, "-o", top, "--mask", top},
      {video, "-o", folder.file("views"), "--fps", "5"},
      {video, picture, "-o", folder.file("views")},
      {picture, "-o", folder.file("top.png"), "--frames", "1"},
      {folder.file("none.avi"), "-o", top},
      {"9871", "-o", top},
  };
  for (const auto& arguments : wrong) {
    EXPECT_EQ(correct(arguments).exitCode, 2) << testing::PrintToString(arguments);
  }
  EXPECT_THAT(namesIn(folder), ElementsAre("camera.ini", "frame.png", "in.avi"));
}

}  // namespace
}  // namespace fisheye_calibration::program
