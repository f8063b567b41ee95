#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "fisheye_calibration.h"
#include "support/raises.h"

namespace {

using Bytes = std::vector<unsigned char>;

constexpr unsigned char kUntouched = 0xA5;

// A lens so long that the distortion of a small frame vanishes: undistorted pixel (x, y) shows raw
// pixel (x, y) + (shiftX, shiftY) when the view has dstWidth x dstHeight pixels, both even.
FishEyeCalibrationParam flatCamera(int dstWidth, int dstHeight, float shiftX, float shiftY) {
  FishEyeCalibrationParam param{};
  param.fx = 1e6f;
  param.fy = 1e6f;
  param.u0 = static_cast<float>(dstWidth / 2) + shiftX;
  param.v0 = static_cast<float>(dstHeight / 2) + shiftY;
  param.p1 = param.p5 = param.p9 = 1;
  return param;
}

// A host's frame. Pictures are written top row first.
struct Frame {
  int width;
  int height;
  int bitCount;
  Bytes bytes;
};

Bytes upsideDown(const Bytes& rows, int height) {
  Bytes flipped;
  const auto length = static_cast<std::ptrdiff_t>(rows.size()) / height;
  for (int y = height - 1; y >= 0; --y) {
    flipped.insert(flipped.end(), rows.begin() + y * length, rows.begin() + (y + 1) * length);
  }
  return flipped;
}

Frame frameOf(int width, int height, int bitCount, const Bytes& picture) {
  return {width, height, bitCount, upsideDown(picture, height)};
}

// Byte b of pixel (x, y) is 16 y + 2 x + 64 b (small frames).
Frame ramp(int width, int height, int bitCount) {
  Bytes picture;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      for (int b = 0; b < bitCount / 8; ++b) {
        picture.push_back(static_cast<unsigned char>(16 * y + 2 * x + 64 * b));
      }
    }
  }
  return frameOf(width, height, bitCount, picture);
}

struct View {
  bool shown;
  Bytes picture;  // top row first
  Bytes mask;
};

View render(const Frame& frame, const FishEyeCalibrationParam& param, int width, int height) {
  Bytes src = frame.bytes;
  const auto pixels = static_cast<std::size_t>(width * height);
  Bytes dst(pixels * static_cast<std::size_t>(frame.bitCount / 8), kUntouched);
  Bytes mask(pixels, kUntouched);
  const bool shown = SingleCamCorrected(src.data(), frame.width, frame.height, frame.bitCount,
                                        param, dst.data(), width, height, mask.data());
  return {shown, upsideDown(dst, height), upsideDown(mask, height)};
}

TEST(CorrectedImage, IdentityShowsTheUndistortedFrame) {
  const View view = render(ramp(8, 8, 8), flatCamera(4, 4, 2, 1), 4, 4);
  EXPECT_TRUE(view.shown);
  EXPECT_EQ(view.picture, (Bytes{20, 22, 24, 26, 36, 38, 40, 42, 52, 54, 56, 58, 68, 70, 72, 74}));
  EXPECT_EQ(view.mask, Bytes(16, 0));
}

TEST(CorrectedImage, FirstByteIsTheBottomLeftPixel) {
  Frame frame = ramp(8, 8, 8);
  const FishEyeCalibrationParam param = flatCamera(4, 4, 2, 1);
  Bytes dst(16);
  ASSERT_TRUE(SingleCamCorrected(frame.bytes.data(), 8, 8, 8, param, dst.data(), 4, 4, nullptr));
  EXPECT_EQ(dst.front(), 16 * 4 + 2 * 2);  // raw pixel (0 + 2, 3 + 1)
}

TEST(CorrectedImage, BytesOfAPixelStayTogether) {
  const View three = render(ramp(4, 4, 24), flatCamera(2, 2, 1, 1), 2, 2);
  EXPECT_EQ(three.picture, (Bytes{18, 82, 146, 20, 84, 148, 34, 98, 162, 36, 100, 164}));
  const View four = render(ramp(4, 4, 32), flatCamera(2, 2, 1, 1), 2, 2);
  EXPECT_EQ(four.picture, (Bytes{18, 82, 146, 210, 20, 84, 148, 212,  //
                                 34, 98, 162, 226, 36, 100, 164, 228}));
}

// 5 pixels of 3 bytes: the second row starts at byte 15.
TEST(CorrectedImage, RowsAreReadWithoutPadding) {
  const View view = render(ramp(5, 5, 24), flatCamera(2, 2, 2, 2), 2, 2);
  EXPECT_EQ(view.picture, (Bytes{36, 100, 164, 38, 102, 166, 52, 116, 180, 54, 118, 182}));
}

TEST(CorrectedImage, BetweenPixelsIsBilinear) {
  const Frame frame = frameOf(4, 4, 8, {8, 8, 8, 8, 8, 16, 80, 8, 8, 48, 112, 8, 8, 8, 8, 8});
  EXPECT_EQ(render(frame, flatCamera(2, 2, 1.25f, 1), 2, 2).picture[0], 32);    // 16 + 64/4
  EXPECT_EQ(render(frame, flatCamera(2, 2, 1, 1.5f), 2, 2).picture[0], 32);     // 16 + 32/2
  EXPECT_EQ(render(frame, flatCamera(2, 2, 1.5f, 1.5f), 2, 2).picture[0], 64);  // their mean
}

TEST(CorrectedImage, OddWidthShiftsPrincipalPointByHalfAPixel) {
  // The principal point (3, 3) shows at column trunc(3 * 0.5 + 0.5) = 2, not at 1.5; same for rows.
  FishEyeCalibrationParam param = flatCamera(2, 2, 0, 0);
  param.u0 = 3;
  param.v0 = 3;
  const View view = render(ramp(8, 8, 8), param, 3, 3);
  EXPECT_EQ(view.picture[2 * 3 + 2], 16 * 3 + 2 * 3);
  EXPECT_EQ(view.picture[0], 16 * 1 + 2 * 1);
}

TEST(CorrectedImage, HomographyMovesTheView) {
  FishEyeCalibrationParam param = flatCamera(4, 2, 1, 1);
  param.p3 = 2;
  const View view = render(ramp(8, 8, 8), param, 4, 2);
  // Column 1 lies one pixel left of undistorted column 0, and still shows it.
  EXPECT_EQ(view.picture, (Bytes{0, 18, 18, 20, 0, 34, 34, 36}));
  EXPECT_EQ(view.mask, (Bytes{255, 0, 0, 0, 255, 0, 0, 0}));
}

TEST(CorrectedImage, ShiftIsAddedAfterTheHomography) {
  FishEyeCalibrationParam param = flatCamera(4, 2, 1, 1);
  param.p1 = 2;        // columns twice as far apart,
  param.ImageDx = -2;  // then two to the left
  const View view = render(ramp(8, 8, 8), param, 4, 2);
  // Result column x shows undistorted column trunc((x + 2)/2 + 0.5): 1, 2, 2, 3.
  EXPECT_EQ(view.picture, (Bytes{20, 22, 22, 24, 36, 38, 38, 40}));
  param.ImageDx = 0;
  param.ImageDy = -1;
  EXPECT_EQ(render(ramp(8, 8, 8), param, 4, 2).mask, (Bytes{0, 0, 0, 0, 255, 255, 255, 255}));
}

TEST(CorrectedImage, QuarterTurn) {
  FishEyeCalibrationParam param = flatCamera(2, 2, 1, 1);
  // (x, y) -> (1 - y, x): the top row becomes the right column.
  param.p1 = 0;
  param.p2 = -1;
  param.p3 = 1;
  param.p4 = 1;
  param.p5 = 0;
  const View view = render(ramp(4, 4, 8), param, 2, 2);
  EXPECT_EQ(view.picture, (Bytes{34, 18, 36, 20}));
  EXPECT_EQ(view.mask, Bytes(4, 0));
}

TEST(CorrectedImage, ViewLargerThanTheFrameIsBlackAndMaskedAroundIt) {
  const View view = render(ramp(4, 4, 8), flatCamera(8, 8, -2, -2), 8, 8);
  EXPECT_TRUE(view.shown);
  for (int y = 0; y < 8; ++y) {
    for (int x = 0; x < 8; ++x) {
      const auto at = static_cast<std::size_t>(8 * y + x);
      const bool inside = x >= 2 && x < 6 && y >= 2 && y < 6;
      // Bilinear samples reach one pixel on: the frame's last row and column are not drawn.
      const bool drawn = inside && x < 5 && y < 5;
      EXPECT_EQ(view.mask[at], inside ? 0 : 255) << x << ", " << y;
      EXPECT_EQ(view.picture[at], drawn ? 16 * (y - 2) + 2 * (x - 2) : 0) << x << ", " << y;
    }
  }
}

// The mask is the share of the sample outside the frame, cut above 127/255.
TEST(CorrectedImage, MaskTurnsWhereHalfOfTheSampleLiesOutside) {
  const auto maskAt = [](float shift) {
    return render(ramp(4, 4, 8), flatCamera(4, 4, shift, 0), 4, 4).mask[0];
  };
  EXPECT_EQ(maskAt(-15.0f / 32), 0);    // 255 * 15/32 = 120
  EXPECT_EQ(maskAt(-16.0f / 32), 255);  // 127.5 rounds to 128
  EXPECT_EQ(maskAt(-17.0f / 32), 255);  // 135
}

TEST(CorrectedImage, SingularHomographyIsAllOutside) {
  FishEyeCalibrationParam param = flatCamera(4, 4, 2, 2);
  param.p5 = 0;
  const View view = render(ramp(8, 8, 24), param, 4, 4);
  EXPECT_TRUE(view.shown);
  EXPECT_EQ(view.picture, Bytes(48, 0));
  EXPECT_EQ(view.mask, Bytes(16, 255));
}

TEST(CorrectedImage, MaskMayBeLeftOut) {
  Frame frame = ramp(8, 8, 24);
  const FishEyeCalibrationParam param = flatCamera(4, 4, 2, 1);
  Bytes dst(48);
  EXPECT_TRUE(SingleCamCorrected(frame.bytes.data(), 8, 8, 24, param, dst.data(), 4, 4, nullptr));
  EXPECT_EQ(upsideDown(dst, 4), render(frame, param, 4, 4).picture);
}

TEST(CorrectedImage, SourceIsOnlyRead) {
  Frame frame = ramp(8, 8, 24);
  const Bytes before = frame.bytes;
  Bytes dst(48);
  Bytes mask(16);
  SingleCamCorrected(frame.bytes.data(), 8, 8, 24, flatCamera(4, 4, 2, 1), dst.data(), 4, 4,
                     mask.data());
  EXPECT_EQ(frame.bytes, before);
}

TEST(CorrectedImage, FillerAndPoseOfTheRecordAreNotRead) {
  const FishEyeCalibrationParam param = flatCamera(4, 4, 2, 1);
  FishEyeCalibrationParam other = param;
  other.k2 = other.k3 = other.k4 = other.k5 = 1e9;
  other.R1 = other.R5 = other.Rx = other.Tz = 1e9f;
  other.Pixel = other.DatumPtXw = other.DatumPtYw = 1e9f;
  EXPECT_EQ(render(ramp(8, 8, 8), other, 4, 4).picture, render(ramp(8, 8, 8), param, 4, 4).picture);
}

// --- what fails, and writes nothing ---

// A call that would succeed; each test spoils one argument.
struct Call {
  Frame frame = ramp(8, 8, 24);
  FishEyeCalibrationParam param = flatCamera(4, 4, 2, 1);
  Bytes dst = Bytes(64, kUntouched);
  Bytes mask = Bytes(16, kUntouched);
  bool nullSource = false;
  bool nullOutput = false;
  int dstWidth = 4;
  int dstHeight = 4;

  bool run() {
    return SingleCamCorrected(nullSource ? nullptr : frame.bytes.data(), frame.width, frame.height,
                              frame.bitCount, param, nullOutput ? nullptr : dst.data(), dstWidth,
                              dstHeight, mask.data());
  }
  bool wroteNothing() const {
    return dst == Bytes(64, kUntouched) && mask == Bytes(16, kUntouched);
  }
};

TEST(CorrectedImage, CallThatTheFailuresSpoilSucceeds) {
  Call call;
  EXPECT_TRUE(call.run());
  EXPECT_FALSE(call.wroteNothing());
}

TEST(CorrectedImage, NullSourceFails) {
  Call call;
  call.nullSource = true;
  EXPECT_FALSE(call.run());
  EXPECT_TRUE(call.wroteNothing());
}

TEST(CorrectedImage, NullOutputFails) {
  Call call;
  call.nullOutput = true;
  EXPECT_FALSE(call.run());
  EXPECT_TRUE(call.wroteNothing());
}

const int kNotPositive[] = {0, -1, -8, std::numeric_limits<std::int32_t>::min()};

TEST(CorrectedImage, OutputSizeThatIsNotPositiveFails) {
  for (const int size : kNotPositive) {
    Call wide;
    wide.dstWidth = size;
    EXPECT_FALSE(wide.run()) << size;
    EXPECT_TRUE(wide.wroteNothing());
    Call tall;
    tall.dstHeight = size;
    EXPECT_FALSE(tall.run()) << size;
    EXPECT_TRUE(tall.wroteNothing());
  }
}

TEST(CorrectedImage, SourceSizeThatIsNotPositiveFails) {
  for (const int size : kNotPositive) {
    Call wide;
    wide.frame.width = size;
    EXPECT_FALSE(wide.run()) << size;
    EXPECT_TRUE(wide.wroteNothing());
    Call tall;
    tall.frame.height = size;
    EXPECT_FALSE(tall.run()) << size;
    EXPECT_TRUE(tall.wroteNothing());
  }
}

TEST(CorrectedImage, OtherBitCountsFail) {
  for (const int bitCount : {0, 1, 7, 9, 16, 25, 48, 64, -8, -24}) {
    Call call;
    call.frame.bitCount = bitCount;
    EXPECT_FALSE(call.run()) << bitCount;
    EXPECT_TRUE(call.wroteNothing()) << bitCount;
  }
}

TEST(CorrectedImage, BlackFrameFails) {
  Call call;
  call.frame.bytes.assign(call.frame.bytes.size(), 0);
  EXPECT_FALSE(call.run());
  EXPECT_TRUE(call.wroteNothing());
}

// The view shows columns 2 to 5 and rows 1 to 4 of the frame.
TEST(CorrectedImage, FrameThatIsLitOnlyOutsideTheViewFails) {
  Call call;
  call.frame.bytes.assign(call.frame.bytes.size(), 0);
  call.frame.bytes[call.frame.bytes.size() - 1] = 255;  // top right
  EXPECT_FALSE(call.run());
  EXPECT_TRUE(call.wroteNothing());
}

TEST(CorrectedImage, OneLitByteInTheUndistortedImageSuffices) {
  for (int byte = 0; byte < 3; ++byte) {
    Call call;
    call.frame.bytes.assign(call.frame.bytes.size(), 0);
    // Raw picture pixel (3, 2), which is in buffer row 5, shows at (1, 1).
    const std::size_t lit = (5 * 8 + 3) * 3 + static_cast<std::size_t>(byte);
    call.frame.bytes[lit] = 1;
    EXPECT_TRUE(call.run());
    EXPECT_FALSE(call.wroteNothing());
  }
}

TEST(CorrectedImage, LitPixelNeedNotShowAfterTheHomography) {
  Call call;
  call.param.ImageDx = 100;  // the whole view moves out
  EXPECT_TRUE(call.run());
  EXPECT_EQ(Bytes(call.dst.begin(), call.dst.begin() + 48), Bytes(48, 0));
  EXPECT_EQ(call.mask, Bytes(16, 255));
}

// Whether a call with buffers of these sizes raises the allocation error, nothing written.
::testing::AssertionResult isTooLarge(int srcSide, int dstSide, int bitCount) {
  Call call;
  call.frame.bitCount = bitCount;
  call.frame.width = call.frame.height = srcSide;
  call.dstWidth = call.dstHeight = dstSide;
  const std::string start = "raised " + std::to_string(cv::Error::StsNoMem);
  const std::string outcome =
      support::outcomeOf([&] { return std::string(call.run() ? "true" : "false"); });
  if (outcome.substr(0, start.size()) != start || !call.wroteNothing()) {
    return ::testing::AssertionFailure() << outcome;
  }
  return ::testing::AssertionSuccess();
}

TEST(CorrectedImage, BuffersBeyondTwoGigabytesRaiseTheAllocationError) {
  EXPECT_TRUE(isTooLarge(8, 46341, 8));  // 46341^2 = 2^31 + 4633
  EXPECT_TRUE(isTooLarge(46341, 4, 8));
  EXPECT_TRUE(isTooLarge(8, 26755, 24));  // 3 * 26755^2 = 2^31 + 6427
  EXPECT_TRUE(isTooLarge(26755, 4, 24));
}

TEST(CorrectedImage, SizesWhoseProductOverflowsRaiseTheAllocationError) {
  constexpr int kLargest = std::numeric_limits<std::int32_t>::max();
  for (const int bitCount : {8, 24, 32}) {
    EXPECT_TRUE(isTooLarge(8, kLargest, bitCount)) << bitCount;
    EXPECT_TRUE(isTooLarge(kLargest, 4, bitCount)) << bitCount;
  }
}

}  // namespace
