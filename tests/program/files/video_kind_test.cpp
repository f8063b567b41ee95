#include "files/video_kind.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace fisheye_calibration::program {
namespace {

using testing::ElementsAre;

TEST(VideoKind, VideosAreKnownByTheirExtension) {
  EXPECT_TRUE(hasVideoName("folder/in.mp4"));
  EXPECT_TRUE(hasVideoName("IN.AVI"));
  EXPECT_FALSE(hasVideoName("mp4"));
  EXPECT_FALSE(hasVideoName("notes.txt"));
  EXPECT_FALSE(hasVideoName("frame.png"));
}

TEST(VideoKind, CodesOfOneCodecHaveOneName) {
  for (const char* code : {"avc1", "H264", "h264", "x264"}) {
    EXPECT_EQ(codecName(code), "H.264") << code;
  }
  EXPECT_EQ(codecName("mjpg"), "Motion JPEG");
  EXPECT_EQ(codecName("XVID"), "MPEG-4");
  EXPECT_EQ(codecName("abcd"), "abcd");
  EXPECT_EQ(codecName(""), "");
}

TEST(VideoKind, TheOriginalsCodecIsTriedFirst) {
  EXPECT_THAT(codesFor("out.mp4", "FMP4"), ElementsAre("mp4v", "avc1"));
  EXPECT_THAT(codesFor("out.mp4", "MJPG"), ElementsAre("avc1", "mp4v"));
  EXPECT_THAT(codesFor("out.avi", ""), ElementsAre("MJPG", "H264", "XVID"));
  EXPECT_THAT(codesFor("out.avi", "avc1"), ElementsAre("H264", "MJPG", "XVID"));
  EXPECT_THAT(codesFor("out.webm", "vp9"), ElementsAre("VP90", "VP80"));
  EXPECT_THAT(codesFor("out.png", "avc1"), ElementsAre());
}

TEST(VideoKind, CodecsThatTakeLongAreWrittenOnlyWhereTheOriginalHasThem) {
  EXPECT_THAT(codesFor("out.mp4", "hev1"), ElementsAre("hvc1", "avc1", "mp4v"));
  EXPECT_THAT(codesFor("out.mkv", "hevc"), ElementsAre("HEVC", "H264", "XVID", "MJPG", "VP90"));
  EXPECT_THAT(codesFor("out.mp4", "vp09"), ElementsAre("vp09", "avc1", "mp4v"));
  EXPECT_THAT(codesFor("out.mp4", "av1"), ElementsAre("av01", "avc1", "mp4v"));
  EXPECT_THAT(codesFor("out.avi", "HEVC"), ElementsAre("MJPG", "H264", "XVID"));
  EXPECT_THAT(codesFor("out.png", "HEVC"), ElementsAre());
}

}  // namespace
}  // namespace fisheye_calibration::program
