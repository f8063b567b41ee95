// Calls that would show nothing or are invalid; they write nothing.
#include <gtest/gtest.h>

#include <limits>
#include <new>

#include "fisheye_calibration.h"
#include "single/corrected_frames.h"

namespace {

using frames::Bytes;
using frames::flatCamera;
using frames::Frame;
using frames::kUntouched;
using frames::ramp;

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

TEST(CorrectedImageFailures, UnspoiltCallSucceeds) {
  Call call;
  EXPECT_TRUE(call.run());
  EXPECT_FALSE(call.wroteNothing());
}

TEST(CorrectedImageFailures, NullSourceFails) {
  Call call;
  call.nullSource = true;
  EXPECT_FALSE(call.run());
  EXPECT_TRUE(call.wroteNothing());
}

TEST(CorrectedImageFailures, NullOutputFails) {
  Call call;
  call.nullOutput = true;
  EXPECT_FALSE(call.run());
  EXPECT_TRUE(call.wroteNothing());
}

const int kNotPositive[] = {0, -1, -8, std::numeric_limits<std::int32_t>::min()};

TEST(CorrectedImageFailures, NonPositiveOutputSizeFails) {
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

TEST(CorrectedImageFailures, NonPositiveSourceSizeFails) {
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

TEST(CorrectedImageFailures, OtherBitCountsFail) {
  for (const int bitCount : {0, 1, 7, 9, 16, 25, 48, 64, -8, -24}) {
    Call call;
    call.frame.bitCount = bitCount;
    EXPECT_FALSE(call.run()) << bitCount;
    EXPECT_TRUE(call.wroteNothing()) << bitCount;
  }
}

TEST(CorrectedImageFailures, BlackFrameFails) {
  Call call;
  call.frame.bytes.assign(call.frame.bytes.size(), 0);
  EXPECT_FALSE(call.run());
  EXPECT_TRUE(call.wroteNothing());
}

// The view shows columns 2 to 5 and rows 1 to 4 of the frame.
TEST(CorrectedImageFailures, FrameThatIsLitOnlyOutsideTheViewFails) {
  Call call;
  call.frame.bytes.assign(call.frame.bytes.size(), 0);
  call.frame.bytes[call.frame.bytes.size() - 1] = 255;  // top right
  EXPECT_FALSE(call.run());
  EXPECT_TRUE(call.wroteNothing());
}

TEST(CorrectedImageFailures, OneLitByteInTheUndistortedImageSuffices) {
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

TEST(CorrectedImageFailures, LitPixelNeedNotShowAfterTheHomography) {
  Call call;
  call.param.ImageDx = 100;  // the whole view moves out
  EXPECT_TRUE(call.run());
  EXPECT_EQ(Bytes(call.dst.begin(), call.dst.begin() + 48), Bytes(48, 0));
  EXPECT_EQ(call.mask, Bytes(16, 255));
}

// Whether a call with buffers of these sizes fails as an allocation does and writes nothing.
::testing::AssertionResult isTooLarge(int srcSide, int dstSide, int bitCount) {
  Call call;
  call.frame.bitCount = bitCount;
  call.frame.width = call.frame.height = srcSide;
  call.dstWidth = call.dstHeight = dstSide;
  try {
    return ::testing::AssertionFailure() << "returned " << call.run();
  } catch (const std::bad_alloc&) {
    return call.wroteNothing() ? ::testing::AssertionSuccess()
                               : ::testing::AssertionFailure() << "wrote to the outputs";
  }
}

TEST(CorrectedImageFailures, BuffersBeyondTwoGigabytesFailAsAllocationsDo) {
  EXPECT_TRUE(isTooLarge(8, 46341, 8));  // 46341^2 = 2^31 + 4633
  EXPECT_TRUE(isTooLarge(46341, 4, 8));
  EXPECT_TRUE(isTooLarge(8, 26755, 24));  // 3 * 26755^2 = 2^31 + 6427
  EXPECT_TRUE(isTooLarge(26755, 4, 24));
}

TEST(CorrectedImageFailures, SizesWhoseProductOverflowsFailAsAllocationsDo) {
  constexpr int kLargest = std::numeric_limits<std::int32_t>::max();
  for (const int bitCount : {8, 24, 32}) {
    EXPECT_TRUE(isTooLarge(8, kLargest, bitCount)) << bitCount;
    EXPECT_TRUE(isTooLarge(kLargest, 4, bitCount)) << bitCount;
  }
}

}  // namespace
