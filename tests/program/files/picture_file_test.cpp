#include "files/picture_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <opencv2/imgcodecs.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "base/failure.h"
#include "program/support/run_program.h"

namespace fisheye_calibration::program {
namespace {

using testing::HasSubstr;

class PictureFile : public testing::Test {
 protected:
  // A picture in which every pixel differs from its neighbours, so that none of its data is short.
  static cv::Mat noise() {
    cv::Mat picture(120, 160, CV_8UC3);
    cv::RNG random(1);
    random.fill(picture, cv::RNG::UNIFORM, 0, 256);
    return picture;
  }

  std::string bytesOf(const std::string& extension) const {
    const std::string path = folder.file("whole" + extension);
    EXPECT_TRUE(cv::imwrite(path, noise()));
    return support::bytesOf(path);
  }

  std::string failureOf(const std::string& name, const std::string& bytes) {
    try {
      readFrame(writeFile(folder, name, bytes), messages);
    } catch (const Failure& failure) {
      EXPECT_EQ(failure.code(), kExitBadInput);
      return failure.what();
    }
    return "no failure";
  }

  support::TemporaryFolder folder;
  std::ostringstream messages;
};

TEST_F(PictureFile, FilesThatEndEarlyAreRefusedByName) {
  for (const std::string extension : {".jpg", ".png", ".bmp"}) {
    const std::string whole = bytesOf(extension);
    for (const std::size_t kept : {whole.size() / 2, whole.size() - 20}) {
      const std::string name = "part" + extension;
      testing::internal::CaptureStderr();
      const std::string failure = failureOf(name, whole.substr(0, kept));
      EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << "not printed by the decoder itself";
      EXPECT_THAT(failure, HasSubstr(name + ": ")) << kept;
    }
  }
}

TEST_F(PictureFile, DamagedDataIsRefused) {
  std::string jpeg = bytesOf(".jpg");
  jpeg.replace(jpeg.size() / 2, 3, "\xFF\xD9\xFF");  // the scan's end, half-way
  EXPECT_THAT(failureOf("damaged.jpg", jpeg), HasSubstr("damaged.jpg: the picture is damaged"));
  std::string png = bytesOf(".png");
  png.replace(png.size() / 2, 4, "XXXX");
  EXPECT_THAT(failureOf("damaged.png", png), HasSubstr("damaged.png: not a picture"));
}

// Restart markers are numbered, so that the decoder notices a part that is missing.
TEST_F(PictureFile, AJpegWithAPartMissingIsRefused) {
  cv::Mat picture(120, 160, CV_8UC1);
  cv::randu(picture, 0, 255);
  std::vector<unsigned char> bytes;
  ASSERT_TRUE(cv::imencode(".jpg", picture, bytes, {cv::IMWRITE_JPEG_RST_INTERVAL, 4}));
  std::string jpeg(bytes.begin(), bytes.end());
  const std::size_t second = jpeg.find("\xFF\xD1");
  const std::size_t fourth = jpeg.find("\xFF\xD3");
  ASSERT_LT(second, fourth);
  ASSERT_NE(fourth, std::string::npos);
  EXPECT_EQ(failureOf("whole.jpg", jpeg), "no failure");
  jpeg.erase(second, fourth - second);
  EXPECT_THAT(failureOf("gap.jpg", jpeg), HasSubstr("gap.jpg: the picture is damaged"));
}

TEST_F(PictureFile, BytesAfterTheEndOfAJpegDoNotCount) {
  const std::string path = writeFile(folder, "longer.jpg", bytesOf(".jpg") + std::string(99, '\0'));
  EXPECT_EQ(readFrame(path, messages).size(), cv::Size(160, 120));
}

TEST_F(PictureFile, TwelveBitsInSixteenAreScaledByTheirRange) {
  cv::Mat picture(10, 10, CV_16UC1, cv::Scalar(2048));
  picture.at<unsigned short>(0, 0) = 4095;
  const std::string path = folder.file("twelve.png");
  ASSERT_TRUE(cv::imwrite(path, picture));
  const cv::Mat read = readGreyPicture(path, messages);
  ASSERT_EQ(read.type(), CV_8UC1);
  EXPECT_EQ(read.at<unsigned char>(0, 0), 255);
  EXPECT_NEAR(read.at<unsigned char>(5, 5), 128, 1);
  EXPECT_THAT(messages.str(), HasSubstr("twelve.png: 16 bits a pixel with values up to 4095, read "
                                        "as a picture of 12 bits"));
}

TEST_F(PictureFile, SixteenBitsAreScaledInFull) {
  cv::Mat picture(10, 10, CV_16UC3, cv::Scalar(32768, 65535, 0));
  const std::string path = folder.file("sixteen.png");
  ASSERT_TRUE(cv::imwrite(path, picture));
  const cv::Mat read = readFrame(path, messages);
  ASSERT_EQ(read.type(), CV_8UC3);
  EXPECT_EQ(read.at<cv::Vec3b>(5, 5), cv::Vec3b(128, 255, 0));
  EXPECT_EQ(messages.str(), "");
}

TEST_F(PictureFile, TheOrientationTagIsHonoured) {
  const std::string plain = bytesOf(".jpg");
  // An EXIF segment of one entry after the start-of-image marker: orientation (0x112) 6, to be
  // turned clockwise.
  const std::string segment(
      "\xFF\xE1\x00\x22"
      "Exif\0\0"
      "MM\x00\x2A\x00\x00\x00\x08"
      "\x00\x01"
      "\x01\x12\x00\x03\x00\x00\x00\x01\x00\x06\x00\x00"
      "\x00\x00\x00\x00",
      4 + 6 + 8 + 2 + 12 + 4);
  const std::string path =
      writeFile(folder, "turned.jpg", plain.substr(0, 2) + segment + plain.substr(2));
  const cv::Mat upright = readFrame(writeFile(folder, "plain.jpg", plain), messages);
  const cv::Mat turned = readFrame(path, messages);
  ASSERT_EQ(turned.size(), cv::Size(120, 160));
  // The stored top-left pixel comes to the top right.
  EXPECT_EQ(turned.at<cv::Vec3b>(0, 119), upright.at<cv::Vec3b>(0, 0));
}

TEST_F(PictureFile, TooLongAPictureIsRefused) {
  const std::string path = folder.file("long.png");
  ASSERT_TRUE(cv::imwrite(path, cv::Mat(1, 40000, CV_8UC1, cv::Scalar(1))));
  EXPECT_THAT(failureOf("long.png", support::bytesOf(path)), HasSubstr("40000x1 pixels; at most"));
}

#if !defined(_WIN32)
TEST_F(PictureFile, ADeviceWithoutEndIsRefused) {
  EXPECT_THROW(readFrame("/dev/zero", messages), Failure);
}
#endif

}  // namespace
}  // namespace fisheye_calibration::program
