// Video files as sources, whole and damaged.
#include "sources/captured_frames.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <fstream>
#include <opencv2/imgcodecs.hpp>
#include <string>
#include <vector>

#include "program/support/sample_video.h"
#include "support/temporary_folder.h"

namespace fisheye_calibration::program {
namespace {

using testing::AnyOf;
using testing::ElementsAre;

constexpr int kCount = 12;

std::uint32_t bigEndian(const std::string& bytes, std::size_t at) {
  std::uint32_t value = 0;
  for (std::size_t i = at; i < at + 4; ++i) {
    value = value << 8u | static_cast<unsigned char>(bytes[i]);
  }
  return value;
}

// Lets the edit list of an .mp4 file begin at a later frame, as an editor does that cuts a film.
void leaveOutAtTheBeginning(const std::string& path, std::uint32_t frames) {
  std::string bytes = support::bytesOf(path);
  // Behind the type: version and flags, two dates, the time scale in ticks a second.
  const std::uint32_t scale = bigEndian(bytes, bytes.find("mdhd") + 16);
  // Behind the type: version and flags, the number of edits, the first one's duration and start.
  const std::size_t start = bytes.find("elst") + 16;
  ASSERT_LT(start, bytes.size());
  const auto ticks = static_cast<std::uint32_t>(frames * scale / kSampleRate);
  for (std::size_t i = 0; i < 4; ++i) {
    bytes[start + i] = static_cast<char>(ticks >> (24 - 8 * i) & 0xffu);
  }
  std::ofstream(path, std::ios::binary) << bytes;
}

class VideoSource : public testing::Test {
 protected:
  void SetUp() override { writeVideo(video, shadedPictures(kCount, {64, 48})); }

  // The frames that are not broken, by their shades; the faults go to `faults`.
  std::vector<int> shades(FrameSource& source) {
    std::vector<int> frames;
    while (const auto frame = source.next()) {
      if (frame->fault.empty()) {
        frames.push_back(frameOfShade(frame->picture, kCount));
      } else {
        EXPECT_TRUE(frame->picture.empty());
        faults.push_back(frame->name.substr(video.size()) + ": " + frame->fault);
      }
    }
    EXPECT_FALSE(source.next());
    return frames;
  }

  support::TemporaryFolder folder;
  std::string video = folder.file("in.avi");
  std::vector<std::string> faults;
};

TEST_F(VideoSource, StatesWhatTheFileSays) {
  const auto source = openSource(video);
  EXPECT_EQ(source->kind(), SourceKind::kVideo);
  EXPECT_EQ(source->count(), kCount);
  EXPECT_EQ(source->rate(), kSampleRate);
  EXPECT_EQ(source->codec(), "MJPG");
}

TEST_F(VideoSource, FramesComeInOrderAndAreNumberedFromOne) {
  const auto source = openSource(video);
  const auto first = source->next();
  ASSERT_TRUE(first);
  EXPECT_EQ(first->name, video + ", frame 1");
  EXPECT_EQ(first->picture.size(), cv::Size(64, 48));
  EXPECT_EQ(first->picture.type(), CV_8UC3);
  EXPECT_EQ(frameOfShade(first->picture, kCount), 1);
  EXPECT_THAT(shades(*source), ElementsAre(2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12));
  EXPECT_THAT(faults, ElementsAre());
  EXPECT_EQ(frameOfShade(first->picture, kCount), 1) << "its memory was used again";
}

TEST_F(VideoSource, ADamagedFrameIsNamedAndTheRestGoesOn) {
  replaceFrame(video, 5, "");
  const auto source = openSource(video);
  EXPECT_THAT(shades(*source), ElementsAre(1, 2, 3, 4, 6, 7, 8, 9, 10, 11, 12));
  // Some versions of the image library skip the frame, which shows in the time of the next one.
  EXPECT_THAT(faults,
              ElementsAre(AnyOf(", frame 5: it cannot be decoded",
                                ": 1 of its 12 frames cannot be read; the file is damaged or has "
                                "been cut off (time jumps after frame 4)")));
}

TEST_F(VideoSource, AFrameOfAnotherSizeIsNamedAndTheRestGoesOn) {
  std::vector<unsigned char> small;
  ASSERT_TRUE(cv::imencode(".jpg", cv::Mat(24, 32, CV_8UC3, cv::Scalar::all(shadeOf(5))), small));
  replaceFrame(video, 5, std::string(small.begin(), small.end()));
  // FFmpeg's reader makes all frames as large as the first one and does not say so.
  CapturedFrames source(SourceKind::kVideo, video, cv::VideoCapture(video, cv::CAP_OPENCV_MJPEG),
                        StatedCount::kExact);
  EXPECT_THAT(shades(source), ElementsAre(1, 2, 3, 4, 6, 7, 8, 9, 10, 11, 12));
  EXPECT_THAT(faults, ElementsAre(", frame 5: 32x24 pixels; the first frame has 64x48"));
}

TEST_F(VideoSource, AnAddressIsAStreamOfUnknownLength) {
  if (!hasFfmpeg()) {
    GTEST_SKIP() << "without FFmpeg, the image library opens no addresses of files";
  }
  const auto source = openSource("file://" + video);
  EXPECT_EQ(source->kind(), SourceKind::kStream);
  EXPECT_FALSE(source->count());
  EXPECT_EQ(shades(*source).size(), static_cast<std::size_t>(kCount));
}

TEST_F(VideoSource, WhatIsMissingAtTheEndIsCounted) {
  if (!hasFfmpeg()) {
    GTEST_SKIP() << "without FFmpeg, the image library cannot open a video that has been cut off";
  }
  cutOffIn(video, 9);
  const auto source = openSource(video);
  std::vector<int> frames = shades(*source);
  ASSERT_GE(frames.size(), 8u);
  if (frames.size() == 9) {  // what there is of the ninth may be decoded, too
    frames.pop_back();
    EXPECT_THAT(faults,
                ElementsAre(": 3 of its 12 frames cannot be read; the file is damaged or has been "
                            "cut off (the last one read is frame 9)"));
  } else {
    EXPECT_THAT(faults,
                ElementsAre(": 4 of its 12 frames cannot be read; the file is damaged or has been "
                            "cut off (the last one read is frame 8)"));
  }
  EXPECT_THAT(frames, ElementsAre(1, 2, 3, 4, 5, 6, 7, 8));
}

TEST_F(VideoSource, WhatAnEditLeavesOutIsNoDamage) {
  const std::string film = folder.file("in.mp4");
  cv::VideoWriter writer(film, cv::CAP_FFMPEG, cv::VideoWriter::fourcc('m', 'p', '4', 'v'),
                         kSampleRate, {64, 48});
  if (!writer.isOpened()) {
    GTEST_SKIP() << "the image library cannot write .mp4 files here";
  }
  for (const cv::Mat& picture : shadedPictures(kCount, {64, 48})) {
    writer.write(picture);
  }
  writer.release();
  leaveOutAtTheBeginning(film, 3);
  const auto source = openSource(film);
  EXPECT_EQ(source->count(), kCount);
  EXPECT_EQ(shades(*source).size(), 9u);  // this codec does not keep the shades
  EXPECT_THAT(faults, ElementsAre());
}

TEST_F(VideoSource, FramesOfAWholeFileAreMissingOnlyWhereTimeJumps) {
  if (!hasFfmpeg()) {
    GTEST_SKIP() << "without FFmpeg, the image library cannot open a video that has been cut off";
  }
  cutOffIn(video, 9);
  CapturedFrames source(SourceKind::kVideo, video, cv::VideoCapture(video, cv::CAP_FFMPEG),
                        StatedCount::kBeforeEdits);
  EXPECT_GE(shades(source).size(), 8u);
  EXPECT_THAT(faults, ElementsAre());
}

}  // namespace
}  // namespace fisheye_calibration::program
