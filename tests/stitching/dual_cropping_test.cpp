#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "fisheye_calibration.h"
#include "support/plain_stitching.h"
#include "support/shown_message.h"

#if __has_include(<rapidcheck.h>)  // not for Windows
#include <rapidcheck.h>
#endif

namespace {

using Bytes = std::vector<unsigned char>;

Bytes numbered(int width, int height, int bits) {
  Bytes pixels(static_cast<std::size_t>(width * height * bits / 8));
  unsigned char next = 0;
  for (unsigned char& byte : pixels) byte = ++next;
  return pixels;
}

DualFishEyeCalibrationParam frame() { return {0.5F, 1380, 960, 640, 480, 12.5F, -3.25F}; }

bool same(const DualFishEyeCalibrationParam& a, const DualFishEyeCalibrationParam& b) {
  return a.Pixel == b.Pixel && a.StdImageWidth == b.StdImageWidth &&
         a.StdImageHeight == b.StdImageHeight && a.DatumImagePtX == b.DatumImagePtX &&
         a.DatumImagePtY == b.DatumImagePtY && a.DatumPtXw == b.DatumPtXw &&
         a.DatumPtYw == b.DatumPtYw;
}

TEST(DualCropping, TheTopOfThePictureIsTheEndOfTheBuffer) {
  Bytes src = numbered(1380, 960, 8);
  Bytes dst(1200 * 900);
  DualFishEyeCalibrationParam dual = frame();
  DualCam_CroppingImage(src.data(), 1380, 960, 8, 100, 0, dual, dst.data(), 1200, 900);
  // Source buffer row 960 - 0 - 900 = 60 comes first.
  EXPECT_TRUE(std::equal(dst.begin(), dst.begin() + 1200, src.begin() + 60 * 1380 + 100));
  EXPECT_TRUE(std::equal(dst.end() - 1200, dst.end(), src.begin() + 959 * 1380 + 100));
  EXPECT_TRUE(same(dual, {0.5F, 1200, 900, 540, 420, 12.5F, -3.25F}));
}

TEST(DualCropping, PictureRowsAboveTheCropAreLeftOut) {
  // Four columns, eight rows; picture rows 2...5 are buffer rows 2...5 as well: 8 - 2 - 4 = 2.
  Bytes src = numbered(4, 8, 8);
  Bytes dst(16);
  DualFishEyeCalibrationParam dual = frame();
  DualCam_CroppingImage(src.data(), 4, 8, 8, 0, 2, dual, dst.data(), 4, 4);
  EXPECT_EQ(dst, Bytes(src.begin() + 8, src.begin() + 24));
  EXPECT_EQ(dual.DatumImagePtY, 478);
  // Picture rows 1...4 are buffer rows 3...6.
  DualCam_CroppingImage(src.data(), 4, 8, 8, 0, 1, dual, dst.data(), 4, 4);
  EXPECT_EQ(dst, Bytes(src.begin() + 12, src.begin() + 28));
  EXPECT_EQ(dual.DatumImagePtY, 475);
}

TEST(DualCropping, ANegativeLeftLeavesTheFirstColumnsUnwritten) {
  Bytes src = numbered(16, 4, 24);
  Bytes dst(16 * 4 * 3, 0xEE);
  DualFishEyeCalibrationParam dual = frame();
  DualCam_CroppingImage(src.data(), 16, 4, 24, -10, 0, dual, dst.data(), 16, 4);
  for (int row = 0; row < 4; ++row) {
    const auto to = dst.begin() + row * 48;
    const auto from = src.begin() + row * 48;
    EXPECT_TRUE(std::all_of(to, to + 30, [](int byte) { return byte == 0xEE; }));
    EXPECT_TRUE(std::equal(to + 30, to + 48, from));
  }
  EXPECT_EQ(dual.DatumImagePtX, 650);
}

TEST(DualCropping, SizesThatAreNotMultiplesOfFourShowTheMessageAndChangeNothing) {
  Bytes src = numbered(8, 8, 8);
  for (const auto& [width, height] : {std::pair{6, 4}, std::pair{4, 6}, std::pair{642, 480},
                                      std::pair{-6, 4}, std::pair{4, -1}}) {
    Bytes dst(642 * 480, 0x77);
    DualFishEyeCalibrationParam dual = frame();
    const int w = width;
    const int h = height;
    const std::string message = support::messageShownBy(
        [&] { DualCam_CroppingImage(src.data(), 8, 8, 8, 0, 0, dual, dst.data(), w, h); });
    EXPECT_EQ(message, "裁剪后图像的长和宽必须是4的整数倍！\n") << width << " x " << height;
    EXPECT_EQ(dst, Bytes(642 * 480, 0x77));
    EXPECT_TRUE(same(dual, frame()));
  }
}

TEST(DualCropping, HeightsBelowOneUpdateOnlyTheRecord) {
  Bytes src = numbered(8, 8, 8);
  Bytes dst(64, 0x77);
  for (const int height : {0, -4}) {
    DualFishEyeCalibrationParam dual = frame();
    EXPECT_EQ(support::messageShownBy([&] {
                DualCam_CroppingImage(src.data(), 8, 8, 8, 3, 2, dual, dst.data(), 4, height);
              }),
              "");
    EXPECT_EQ(dst, Bytes(64, 0x77));
    EXPECT_EQ(dual.StdImageWidth, 4);
    EXPECT_EQ(dual.StdImageHeight, height);
    EXPECT_EQ(dual.DatumImagePtX, 637);
    EXPECT_EQ(dual.DatumImagePtY, 480 + 2 - 8 + height);
  }
}

TEST(DualCropping, OtherBitCountsCopyNothingButUpdateTheRecord) {
  Bytes src = numbered(8, 8, 32);
  for (const int bits : {16, 1, 0, -8}) {
    Bytes dst(256, 0x77);
    DualFishEyeCalibrationParam dual = frame();
    DualCam_CroppingImage(src.data(), 8, 8, bits, 0, 0, dual, dst.data(), 4, 4);
    EXPECT_EQ(dst, Bytes(256, 0x77)) << bits;
    EXPECT_EQ(dual.StdImageWidth, 4);
    EXPECT_EQ(dual.DatumImagePtY, 476);
  }
}

TEST(DualCropping, NullBuffersDoNothing) {
  Bytes buffer(64, 0x77);
  DualFishEyeCalibrationParam dual = frame();
  DualCam_CroppingImage(nullptr, 8, 8, 8, 0, 0, dual, buffer.data(), 4, 4);
  DualCam_CroppingImage(buffer.data(), 8, 8, 8, 0, 0, dual, nullptr, 4, 4);
  EXPECT_EQ(buffer, Bytes(64, 0x77));
  EXPECT_TRUE(same(dual, frame()));
}

TEST(DualCropping, HostileNumbersSaturate) {
  constexpr int lowest = std::numeric_limits<int>::min();
  constexpr int highest = std::numeric_limits<int>::max();
  Bytes src = numbered(8, 8, 8);
  Bytes dst(16, 0x77);
  DualFishEyeCalibrationParam dual = frame();
  dual.DatumImagePtX = highest;
  dual.DatumImagePtY = -10;
  DualCam_CroppingImage(src.data(), 8, 8, 8, lowest, lowest, dual, dst.data(), 4, 4);
  EXPECT_EQ(dst, Bytes(16, 0x77));
  EXPECT_EQ(dual.DatumImagePtX, highest);
  EXPECT_EQ(dual.DatumImagePtY, lowest);  // -10 - (8 + 2^31 - 4) is below
  DualCam_CroppingImage(src.data(), 8, 8, 8, highest, highest, dual, dst.data(), 4, 4);
  EXPECT_EQ(dst, Bytes(16, 0x77));
  EXPECT_EQ(dual.DatumImagePtX, 0);
  EXPECT_EQ(dual.DatumImagePtY, -5);  // lowest - (8 - (2^31 - 1) - 4)
}

#if __has_include(<rapidcheck.h>)
TEST(DualCropping, AgreesWithTheLoopOverPixels) {
  EXPECT_TRUE(rc::check([] {
    const int bits = *rc::gen::element(8, 24, 32);
    const int srcWidth = *rc::gen::inRange(1, 20);
    const int srcHeight = *rc::gen::inRange(1, 20);
    const int dstWidth = 4 * *rc::gen::inRange(0, 6);
    const int dstHeight = 4 * *rc::gen::inRange(0, 6);
    const int left = *rc::gen::inRange(-25, 25);
    const int top = *rc::gen::inRange(-25, 25);
    Bytes src = numbered(srcWidth, srcHeight, bits);
    Bytes ours(static_cast<std::size_t>(dstWidth * dstHeight * bits / 8) + 1, 0x77);
    Bytes plainly = ours;
    DualFishEyeCalibrationParam dual = frame();
    DualFishEyeCalibrationParam plainDual = frame();
    DualCam_CroppingImage(src.data(), srcWidth, srcHeight, bits, left, top, dual, ours.data(),
                          dstWidth, dstHeight);
    plain::dualCamCroppingImage(src.data(), srcWidth, srcHeight, bits, left, top, plainDual,
                                plainly.data(), dstWidth, dstHeight);
    RC_ASSERT(ours == plainly);
    RC_ASSERT(same(dual, plainDual));
  }));
}
#endif

}  // namespace
