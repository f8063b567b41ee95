#include "images/image_operations.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numeric>
#include <vector>

#include "support/plain_correction.h"
#include "support/raises.h"
#include "support/synthetic_rig.h"

using namespace fisheye_calibration;

namespace {

using Bytes = std::vector<unsigned char>;

Bytes counted(std::size_t count) {
  Bytes bytes(count);
  std::iota(bytes.begin(), bytes.end(), static_cast<unsigned char>(1));
  return bytes;
}

cv::Mat noise(support::Random& random, int rows, int cols, int channels) {
  cv::Mat image(rows, cols, CV_8UC(channels));
  for (int y = 0; y < rows; ++y) {
    for (int b = 0; b < cols * channels; ++b) {
      image.ptr(y)[b] = static_cast<unsigned char>(random.uniform(0, 256));
    }
  }
  return image;
}

// The bytes of an image, row by row.
Bytes bytesOf(const cv::Mat& image) {
  const cv::Mat whole = image.clone();
  return {whole.data, whole.data + whole.total() * whole.elemSize()};
}

// --- buffers ---

TEST(BufferToImage, FirstBufferRowIsTheBottomRow) {
  cv::Mat image(2, 3, CV_8UC1);
  BufferToImage(counted(6).data(), 3, 2, 8, image);
  EXPECT_EQ(bytesOf(image), (Bytes{4, 5, 6, 1, 2, 3}));
}

TEST(BufferToImage, RowsOfThreeBytePixelsFollowEachOtherWithoutPadding) {
  cv::Mat image(2, 1, CV_8UC3);
  BufferToImage(counted(6).data(), 1, 2, 24, image);
  EXPECT_EQ(bytesOf(image), (Bytes{4, 5, 6, 1, 2, 3}));
}

TEST(BufferToImage, FourBytePixelsKeepTheOrderOfTheirBytes) {
  cv::Mat image(2, 1, CV_8UC4);
  BufferToImage(counted(8).data(), 1, 2, 32, image);
  EXPECT_EQ(bytesOf(image), (Bytes{5, 6, 7, 8, 1, 2, 3, 4}));
}

TEST(BufferToImage, OtherBitCountsCopyNothing) {
  for (const int bitCount : {0, 1, 16, 25, 64, -8, std::numeric_limits<int>::max()}) {
    cv::Mat image(2, 2, CV_8UC1, cv::Scalar(7));
    BufferToImage(counted(64).data(), 2, 2, bitCount, image);
    EXPECT_EQ(bytesOf(image), Bytes(4, 7)) << bitCount;
  }
}

TEST(BufferToImage, TwoChannelImageIsUnchanged) {
  cv::Mat image(2, 2, CV_8UC2, cv::Scalar::all(7));
  BufferToImage(counted(64).data(), 2, 2, 16, image);
  EXPECT_EQ(bytesOf(image), Bytes(8, 7));
}

TEST(BufferToImage, ImageOfAnotherSizeOrTypeIsUnchanged) {
  for (cv::Mat image : {cv::Mat(2, 3, CV_8UC1), cv::Mat(3, 2, CV_8UC1), cv::Mat(2, 2, CV_8UC3),
                        cv::Mat(2, 2, CV_8SC1)}) {
    image.setTo(cv::Scalar::all(7));
    BufferToImage(counted(64).data(), 2, 2, 8, image);
    EXPECT_EQ(bytesOf(image), Bytes(image.total() * image.elemSize(), 7));
  }
}

TEST(BufferToImage, EmptyAndNegativeSizesAndNullBuffersCopyNothing) {
  cv::Mat image(2, 2, CV_8UC1, cv::Scalar(7));
  BufferToImage(counted(4).data(), 0, 0, 8, image);
  BufferToImage(counted(4).data(), -2, -2, 8, image);
  BufferToImage(nullptr, 2, 2, 8, image);
  EXPECT_EQ(bytesOf(image), Bytes(4, 7));
  cv::Mat empty;
  BufferToImage(counted(4).data(), 0, 0, 8, empty);
  EXPECT_TRUE(empty.empty());
}

TEST(BufferToImage, FillsPartOfALargerImage) {
  cv::Mat large(4, 4, CV_8UC1, cv::Scalar(0));
  cv::Mat part = large(cv::Rect(1, 1, 2, 2));
  BufferToImage(counted(4).data(), 2, 2, 8, part);
  EXPECT_EQ(bytesOf(large), (Bytes{0, 0, 0, 0, 0, 3, 4, 0, 0, 1, 2, 0, 0, 0, 0, 0}));
}

TEST(ImageToBuffer, BottomRowIsTheFirstBufferRow) {
  const Bytes pixels = counted(12);
  const cv::Mat image(2, 2, CV_8UC3, const_cast<unsigned char*>(pixels.data()));
  Bytes buffer(12);
  int width = 0;
  int height = 0;
  int bitCount = 0;
  ImageToBuffer(image, buffer.data(), width, height, bitCount);
  EXPECT_EQ(buffer, (Bytes{7, 8, 9, 10, 11, 12, 1, 2, 3, 4, 5, 6}));
}

TEST(ImageToBuffer, ReportsSizeAndBitCount) {
  for (const int channels : {1, 3, 4}) {
    Bytes buffer(24);
    int width = 0;
    int height = 0;
    int bitCount = 0;
    ImageToBuffer(cv::Mat(2, 3, CV_8UC(channels)), buffer.data(), width, height, bitCount);
    EXPECT_EQ(width, 3);
    EXPECT_EQ(height, 2);
    EXPECT_EQ(bitCount, 8 * channels);
  }
}

TEST(ImageToBuffer, OtherImagesAreReportedButNotCopied) {
  for (const int type : {CV_8UC2, CV_16UC1, CV_32FC3}) {
    Bytes buffer(256, 7);
    int width = 0;
    int height = 0;
    int bitCount = 0;
    const cv::Mat image(2, 3, type, cv::Scalar::all(1));
    ImageToBuffer(image, buffer.data(), width, height, bitCount);
    EXPECT_EQ(buffer, Bytes(256, 7));
    EXPECT_EQ(width, 3);
    EXPECT_EQ(height, 2);
    EXPECT_EQ(bitCount, 8 * image.channels());
  }
}

TEST(ImageToBuffer, NullBufferIsOnlyReported) {
  int width = 0;
  int height = 0;
  int bitCount = 0;
  ImageToBuffer(cv::Mat(2, 3, CV_8UC1), nullptr, width, height, bitCount);
  EXPECT_EQ(width, 3);
  EXPECT_EQ(height, 2);
  EXPECT_EQ(bitCount, 8);
}

TEST(ImageToBuffer, UndoesBufferToImage) {
  support::Random random(3);
  for (const int channels : {1, 3, 4}) {
    const Bytes buffer = bytesOf(noise(random, 5, 7, channels));
    cv::Mat image(5, 7, CV_8UC(channels));
    BufferToImage(buffer.data(), 7, 5, 8 * channels, image);
    Bytes back(buffer.size());
    int width = 0;
    int height = 0;
    int bitCount = 0;
    ImageToBuffer(image, back.data(), width, height, bitCount);
    EXPECT_EQ(back, buffer);
  }
}

// --- black ---

TEST(IsImageBlack, OnlyWhenEveryByteIsZero) {
  for (const int channels : {1, 3, 4}) {
    cv::Mat image(3, 5, CV_8UC(channels), cv::Scalar::all(0));
    EXPECT_TRUE(IsImageBlack(image));
    for (int y = 0; y < 3; ++y) {
      for (int b = 0; b < 5 * channels; ++b) {
        image.ptr(y)[b] = 1;
        EXPECT_FALSE(IsImageBlack(image)) << channels << " channels, row " << y << " byte " << b;
        image.ptr(y)[b] = 0;
      }
    }
  }
}

TEST(IsImageBlack, LooksOnlyAtTheImagesOwnPixels) {
  cv::Mat large(3, 3, CV_8UC1, cv::Scalar(9));
  cv::Mat part = large(cv::Rect(1, 1, 1, 1));
  part.setTo(0);
  EXPECT_TRUE(IsImageBlack(part));
}

TEST(IsImageBlack, OtherImagesCountAsBlack) {
  EXPECT_TRUE(IsImageBlack(cv::Mat(2, 2, CV_8UC2, cv::Scalar::all(1))));
  EXPECT_TRUE(IsImageBlack(cv::Mat(2, 2, CV_16UC1, cv::Scalar::all(1))));
  EXPECT_TRUE(IsImageBlack(cv::Mat()));
}

// --- warp ---

// Columns 10, 20, 30, 40 in one row, two times.
cv::Mat ramp() { return (cv::Mat_<unsigned char>(2, 4) << 10, 20, 30, 40, 50, 60, 70, 80); }

// Top row of the ramp, warped.
Bytes warpedTopRow(const cv::Matx33d& Hinv, double dx, double dy = 0) {
  cv::Mat result;
  EXPECT_TRUE(WarpByInverseHomography(ramp(), result, cv::Mat(Hinv), dx, dy, 99));
  return bytesOf(result.row(0));
}

const cv::Matx33d kIdentity = cv::Matx33d::eye();

TEST(WarpByInverseHomography, IdentityCopies) {
  EXPECT_EQ(warpedTopRow(kIdentity, 0), (Bytes{10, 20, 30, 40}));
}

TEST(WarpByInverseHomography, ShiftMovesTheImageAndFillsTheRest) {
  // Column 0 is shown twice: it reaches to the left by one pixel more.
  EXPECT_EQ(warpedTopRow(kIdentity, 2), (Bytes{99, 10, 10, 20}));
  EXPECT_EQ(warpedTopRow(kIdentity, -2), (Bytes{30, 40, 99, 99}));
  EXPECT_EQ(warpedTopRow(kIdentity, 0, -1), (Bytes{50, 60, 70, 80}));
  EXPECT_EQ(warpedTopRow(kIdentity, 0, 2), Bytes(4, 99));
}

TEST(WarpByInverseHomography, HalvesGoToTheHigherColumn) {
  EXPECT_EQ(warpedTopRow(kIdentity, -0.5), (Bytes{20, 30, 40, 99}));
  EXPECT_EQ(warpedTopRow(kIdentity, -0.375), (Bytes{10, 20, 30, 40}));
}

TEST(WarpByInverseHomography, ColumnZeroReachesToMinusOneAndAHalf) {
  EXPECT_EQ(warpedTopRow(kIdentity, 0.5), (Bytes{10, 20, 30, 40}));
  EXPECT_EQ(warpedTopRow(kIdentity, 1.25), (Bytes{10, 10, 20, 30}));
  EXPECT_EQ(warpedTopRow(kIdentity, 1.5), (Bytes{99, 10, 20, 30}));
  EXPECT_EQ(warpedTopRow(kIdentity, 0, 1.25), (Bytes{10, 20, 30, 40}));
  EXPECT_EQ(warpedTopRow(kIdentity, 0, 1.5), Bytes(4, 99));
}

TEST(WarpByInverseHomography, HalfIsAddedInDouble) {
  // The float below a half: in float the sum would round to 1.
  const double below = std::nextafter(0.5f, 0.0f);
  EXPECT_EQ(warpedTopRow(kIdentity, -below)[0], 10);
}

TEST(WarpByInverseHomography, PositionIsNarrowedToFloatFirst) {
  EXPECT_EQ(warpedTopRow(kIdentity, -(0.5 - 1e-12))[0], 20);
}

TEST(WarpByInverseHomography, SumsRunFromLeftToRight) {
  // (1e17 + 1) - 1e17 is 0 in double, 1e17 + (1 - 1e17) would be 0 too, (1e17 - 1e17) + 1 is 1.
  const cv::Matx33d Hinv(1e17, 1, -1e17, 0, 1, -1, 0, 0, 1);
  EXPECT_EQ(warpedTopRow(Hinv, -1, -1)[0], 10);
}

TEST(WarpByInverseHomography, PositionsAreDividedByTheThirdCoordinate) {
  EXPECT_EQ(warpedTopRow(kIdentity * -2.0, 0), (Bytes{10, 20, 30, 40}));
  // s = x/(1 + x): 0, 1/2, 2/3, 3/4
  EXPECT_EQ(warpedTopRow({1, 0, 0, 0, 1, 0, 1, 0, 1}, 0), (Bytes{10, 20, 20, 20}));
}

TEST(WarpByInverseHomography, NanAndHugePositionsAreOutside) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ(warpedTopRow(cv::Matx33d::zeros(), 0), Bytes(4, 99));                    // 0/0
  EXPECT_EQ(warpedTopRow({1, 0, 1, 0, 1, 0, 0, 0, 0}, 0), Bytes(4, 99));             // 1/0
  EXPECT_EQ(warpedTopRow({1, 0, 4294967296.0, 0, 1, 0, 0, 0, 1}, 0), Bytes(4, 99));  // wraps to 0
  EXPECT_EQ(warpedTopRow({1, 0, -4294967296.0, 0, 1, 0, 0, 0, 1}, 0), Bytes(4, 99));
  EXPECT_EQ(warpedTopRow({1, 0, 0, 0, 1, 1e300, 0, 0, 1}, 0), Bytes(4, 99));
  for (const double shift : {kInfinity, -kInfinity, kNan, 1e300}) {
    EXPECT_EQ(warpedTopRow(kIdentity, shift), Bytes(4, 99));
    EXPECT_EQ(warpedTopRow(kIdentity, 0, shift), Bytes(4, 99));
  }
}

TEST(WarpByInverseHomography, EveryByteOfAPixelIsCopiedOrFilled) {
  const Bytes pixels = counted(8);
  for (const int channels : {3, 4}) {
    const cv::Mat source(1, 2, CV_8UC(channels), const_cast<unsigned char*>(pixels.data()));
    cv::Mat result;
    EXPECT_TRUE(WarpByInverseHomography(source, result, cv::Mat(kIdentity), -1, 0, 99));
    Bytes expected(pixels.begin() + channels, pixels.begin() + 2 * channels);
    expected.resize(2 * expected.size(), 99);
    EXPECT_EQ(bytesOf(result), expected);
  }
}

TEST(WarpByInverseHomography, OtherImagesGiveZeros) {
  for (const int type : {CV_8UC2, CV_16UC1, CV_8SC1}) {
    cv::Mat result;
    EXPECT_TRUE(WarpByInverseHomography(cv::Mat(2, 3, type, cv::Scalar::all(5)), result,
                                        cv::Mat(kIdentity), 0, 0, 99));
    EXPECT_EQ(result.type(), type);
    EXPECT_EQ(bytesOf(result), Bytes(result.total() * result.elemSize(), 0));
    EXPECT_EQ(result.size(), cv::Size(3, 2));
  }
}

TEST(WarpByInverseHomography, EmptyImageStaysEmpty) {
  cv::Mat result = ramp();
  EXPECT_TRUE(WarpByInverseHomography(cv::Mat(), result, cv::Mat(kIdentity), 0, 0, 99));
  EXPECT_TRUE(result.empty());
}

TEST(WarpByInverseHomography, ResultMayBeTheSource) {
  cv::Mat image = ramp();
  EXPECT_TRUE(WarpByInverseHomography(image, image, cv::Mat(kIdentity), -1, 0, 99));
  EXPECT_EQ(bytesOf(image), (Bytes{20, 30, 40, 99, 60, 70, 80, 99}));
}

TEST(WarpByInverseHomography, MatrixMustBeThreeByThree) {
  cv::Mat result;
  EXPECT_THROW(WarpByInverseHomography(ramp(), result, cv::Mat::eye(2, 3, CV_64F), 0, 0, 99),
               cv::Exception);
  EXPECT_THROW(WarpByInverseHomography(ramp(), result, cv::Mat(), 0, 0, 99), cv::Exception);
}

TEST(WarpByInverseHomography, EqualsThePlainWarp) {
  support::Random random(17);
  const auto number = [&](double reach) { return random.uniform(-reach, reach); };
  for (int i = 0; i < 2000; ++i) {
    const int channels = i % 3 == 0 ? 1 : i % 3 + 2;
    const cv::Mat source = noise(random, static_cast<int>(random.uniform(1, 20)),
                                 static_cast<int>(random.uniform(1, 20)), channels);
    const double tilt = i % 5 == 0 ? 0.5 : 0.01;
    const cv::Mat Hinv =
        (cv::Mat_<double>(3, 3) << number(1.5), number(1), number(9), number(1), number(1.5),
         number(9), number(tilt), number(tilt), random.uniform(0.2, 1));
    const double dx = number(6);
    const double dy = i % 7 == 0 ? 0.5 : number(6);
    cv::Mat result;
    ASSERT_TRUE(WarpByInverseHomography(source, result, Hinv, dx, dy, 255));
    ASSERT_EQ(support::bytesOf(result),
              support::bytesOf(plain::warpByInverseHomography(source, Hinv, dx, dy, 255)))
        << "warp " << i;
  }
}

}  // namespace
