#include "html/picture_data.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace fisheye_calibration::program {
namespace {

using testing::StartsWith;

// The examples of RFC 4648.
TEST(PictureData, Base64IsPadded) {
  EXPECT_EQ(base64(""), "");
  EXPECT_EQ(base64("f"), "Zg==");
  EXPECT_EQ(base64("fo"), "Zm8=");
  EXPECT_EQ(base64("foo"), "Zm9v");
  EXPECT_EQ(base64("foob"), "Zm9vYg==");
  EXPECT_EQ(base64("fooba"), "Zm9vYmE=");
  EXPECT_EQ(base64("foobar"), "Zm9vYmFy");
  EXPECT_EQ(base64("\xFB\xFF\xBF"), "+/+/");
}

// The first bytes of a PNG are 89 50 4E 47 0D 0A 1A 0A, of a JPEG FF D8 FF.
TEST(PictureData, PicturesAreOfTheirKind) {
  const cv::Mat picture(20, 30, CV_8UC3, cv::Scalar(10, 200, 30));
  EXPECT_THAT(pngData(picture), StartsWith("data:image/png;base64,iVBORw0KGgo"));
  EXPECT_THAT(jpegData(picture, 100), StartsWith("data:image/jpeg;base64,/9j/"));
}

TEST(PictureData, LargePicturesAreReduced) {
  cv::Mat noise(1000, 2000, CV_8UC1);
  cv::randu(noise, 0, 255);
  const std::size_t whole = jpegData(noise, 2000).size();
  const std::size_t tenth = jpegData(noise, 200).size();
  EXPECT_LT(20 * tenth, whole) << "a hundredth of the pixels";
}

}  // namespace
}  // namespace fisheye_calibration::program
