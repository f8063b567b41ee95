#include <gtest/gtest.h>

#include "fisheye_calibration.h"
#include "single/corrected_frames.h"

namespace {

using frames::Bytes;
using frames::flatCamera;
using frames::Frame;
using frames::frameOf;
using frames::ramp;
using frames::render;
using frames::upsideDown;
using frames::View;

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
      EXPECT_EQ(view.mask[at], inside ? 0 : 255) << x << ", " << y;
      EXPECT_EQ(view.picture[at], inside ? 16 * (y - 2) + 2 * (x - 2) : 0) << x << ", " << y;
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

}  // namespace
