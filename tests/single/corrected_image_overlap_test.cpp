// Output and mask that overlap the frame: the view shows the original frame.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <vector>

#include "fisheye_calibration.h"
#include "support/dice.h"
#include "support/plain_correction.h"

namespace {

using Bytes = std::vector<unsigned char>;

constexpr int kWidth = 150;
constexpr int kHeight = 40;
constexpr std::size_t kPixels = std::size_t{kWidth} * kHeight;

FishEyeCalibrationParam camera() {
  FishEyeCalibrationParam param{};
  param.fx = param.fy = 60;
  param.u0 = 70;
  param.v0 = 22;
  param.k0 = 0.02;
  param.k1 = -0.01;
  param.p1 = param.p5 = param.p9 = 1;
  return param;
}

// A frame of noise, and memory in which it, the output and the mask may lie anywhere.
class Memory {
 public:
  explicit Memory(int bitCount)
      : bitCount_(bitCount), frame_(kPixels * static_cast<std::size_t>(bitCount / 8)) {
    support::Dice dice(7);
    for (unsigned char& byte : frame_) {
      byte = static_cast<unsigned char>(dice.whole(1, 255));
    }
    view_.resize(frame_.size());
    mask_.resize(kPixels);
    shown_ = plain::singleCamCorrected(frame_.data(), kWidth, kHeight, bitCount_, camera(),
                                       view_.data(), kWidth, kHeight, mask_.data());
  }

  std::size_t frameBytes() const { return frame_.size(); }

  // With all three at these places.
  void expectTheSameView(std::size_t srcAt, std::size_t dstAt, std::size_t maskAt) {
    ASSERT_TRUE(shown_);
    Bytes memory(std::max({srcAt, dstAt, maskAt}) + frame_.size());
    unsigned char* const src = memory.data() + srcAt;
    unsigned char* const dst = memory.data() + dstAt;
    unsigned char* const mask = memory.data() + maskAt;
    std::copy(frame_.begin(), frame_.end(), src);
    ASSERT_TRUE(
        SingleCamCorrected(src, kWidth, kHeight, bitCount_, camera(), dst, kWidth, kHeight, mask));
    EXPECT_TRUE(std::equal(view_.begin(), view_.end(), dst)) << srcAt << ", " << dstAt;
    EXPECT_TRUE(std::equal(mask_.begin(), mask_.end(), mask)) << srcAt << ", " << maskAt;
  }

 private:
  int bitCount_;
  Bytes frame_;
  Bytes view_;
  Bytes mask_;
  bool shown_ = false;
};

TEST(CorrectedImageOverlap, OutputMayOverwriteTheFrame) {
  for (const int bitCount : {8, 24, 32}) {
    Memory memory(bitCount);
    memory.expectTheSameView(0, 0, memory.frameBytes());
  }
}

TEST(CorrectedImageOverlap, OutputMayBeginWithinTheFrame) {
  Memory memory(24);
  const std::size_t bytes = memory.frameBytes();
  for (const std::size_t offset : {std::size_t{1}, std::size_t{100}, bytes / 2, bytes - 1}) {
    memory.expectTheSameView(0, offset, 2 * bytes);
  }
}

TEST(CorrectedImageOverlap, OutputMayEndWithinTheFrame) {
  Memory memory(24);
  const std::size_t bytes = memory.frameBytes();
  for (const std::size_t offset : {std::size_t{1}, std::size_t{100}, bytes / 2, bytes - 1}) {
    memory.expectTheSameView(offset, 0, 2 * bytes);
  }
}

TEST(CorrectedImageOverlap, MaskMayOverwriteTheFrame) {
  for (const int bitCount : {8, 24, 32}) {
    Memory memory(bitCount);
    const std::size_t bytes = memory.frameBytes();
    for (const std::size_t offset : {std::size_t{0}, bytes / 2, bytes - 1}) {
      memory.expectTheSameView(0, bytes + kPixels, offset);
    }
  }
}

TEST(CorrectedImageOverlap, OutputAndMaskMayBothOverwriteTheFrame) {
  Memory memory(24);
  const std::size_t bytes = memory.frameBytes();
  memory.expectTheSameView(kPixels, kPixels + bytes / 2, 10);
  memory.expectTheSameView(bytes / 2, 0, bytes);
}

TEST(CorrectedImageOverlap, OutputNextToTheFrameLeavesItUnchanged) {
  Bytes memory(3 * kPixels);
  std::fill_n(memory.begin() + kPixels, kPixels, static_cast<unsigned char>(77));
  unsigned char* const src = memory.data() + kPixels;
  ASSERT_TRUE(SingleCamCorrected(src, kWidth, kHeight, 8, camera(), memory.data(), kWidth, kHeight,
                                 src + kPixels));
  EXPECT_EQ(std::count(src, src + kPixels, 77), std::ptrdiff_t{kPixels});
}

}  // namespace
