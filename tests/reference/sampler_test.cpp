// The library's own sampler against the version of the image library that defines the pixels: one
// sample at a time, and in blocks on every instruction set.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <opencv2/core.hpp>

#include "reference/generator.h"
#include "reference/remap_case.h"
#include "rendering/block_access.h"
#include "rendering/block_sets.h"
#include "rendering/one_sample.h"

using namespace fisheye_calibration;

namespace {

using reference::RemapCase;
using reference::RemapInput;
using rendering::kBlock;

struct Sampled {
  cv::Mat pixels;
  cv::Mat mask;
};

// The frame and the positions of two maps, in 1/32 pixels, of a case.
class Sampler {
 public:
  Sampler(const RemapCase& c, const RemapInput& input)
      : input_(input), total_(static_cast<int>(input.map2.total())), size_(c.map) {
    cv::flip(input.source, bottomUp_, 0);
    frame_ = {bottomUp_.data, c.frame.width, c.frame.height, c.channels};
  }

  Sampled oneByOne() const {
    Sampled result = untouched();
    for (int i = 0; i < total_; ++i) {
      rendering::sampleOne(frame_, u(i), v(i), pixelOf(result, i));
      result.mask.data[i] = rendering::validityOfOne(frame_, u(i), v(i));
    }
    return result;
  }

  // Positions that follow each other share a block if they lie close enough together. Every other
  // one has a block of its own.
  Sampled inBlocks() const {
    Sampled result = untouched();
    for (int i = 0; i < total_;) {
      if (i + kBlock <= total_ && areClose(i)) {
        sampleBlock(i, result);
        i += kBlock;
      } else {
        sampleAlone(i, result);
        ++i;
      }
    }
    return result;
  }

  int sharedBlocks() const {
    int count = 0;
    for (int i = 0; i + kBlock <= total_; i += kBlock) count += areClose(i) ? 1 : 0;
    return count;
  }

 private:
  int sx(int i) const { return input_.map1.ptr<cv::Vec2s>()[i][0]; }
  int sy(int i) const { return input_.map1.ptr<cv::Vec2s>()[i][1]; }
  int u(int i) const { return 32 * sx(i) + (input_.map2.ptr<unsigned short>()[i] & 31); }
  int v(int i) const { return 32 * sy(i) + (input_.map2.ptr<unsigned short>()[i] >> 5); }

  Sampled untouched() const {
    return {cv::Mat(size_, input_.source.type(), cv::Scalar::all(0xA5)),
            cv::Mat(size_, CV_8UC1, cv::Scalar(0xA5))};
  }
  unsigned char* pixelOf(const Sampled& result, int i) const {
    return result.pixels.data + static_cast<std::size_t>(i) * input_.source.elemSize();
  }

  // Whether 16 bits hold the offsets from the first of these positions to the others.
  bool areClose(int first) const { return extentOf(first) <= 900; }
  int extentOf(int first) const {
    int largest = 0;
    for (int k = 0; k < kBlock; ++k) {
      largest = std::max(
          {largest, std::abs(sx(first + k) - sx(first)), std::abs(sy(first + k) - sy(first))});
    }
    return largest + 1;
  }

  void sampleBlock(int first, const Sampled& result) const {
    rendering::BlockPositions positions;
    for (int k = 0; k < kBlock; ++k) {
      positions.u[k] = static_cast<std::int16_t>(u(first + k) - 32 * sx(first));
      positions.v[k] = static_cast<std::int16_t>(v(first + k) - 32 * sy(first));
    }
    blocks::sample(frame_, {positions, sx(first), sy(first), extentOf(first), false, true},
                   pixelOf(result, first), result.mask.data + first);
  }

  // All of the block's pixels show the same; that at position i is taken.
  void sampleAlone(int i, const Sampled& result) const {
    rendering::BlockPositions positions;
    std::fill_n(positions.u, kBlock, static_cast<std::int16_t>(u(i) & 31));
    std::fill_n(positions.v, kBlock, static_cast<std::int16_t>(v(i) & 31));
    unsigned char pixels[kBlock * 4];
    unsigned char mask[kBlock];
    blocks::sample(frame_, {positions, sx(i), sy(i), 1, false, true}, pixels, mask);
    const int k = i % kBlock;
    const std::size_t bytes = input_.source.elemSize();
    std::copy_n(pixels + static_cast<std::size_t>(k) * bytes, bytes, pixelOf(result, i));
    result.mask.data[i] = mask[k];
  }

  const RemapInput& input_;
  const int total_;
  const cv::Size size_;
  cv::Mat bottomUp_;
  images::Frame frame_;
};

// Runs `test` with every case of a border, which has so many.
template <class Test>
void withEveryCase(const std::string& border, int fill, int wantedCount, const Test& test) {
  int count = 0;
  for (const RemapCase& c : reference::readRemapCases()) {
    if (c.border != border || c.fill != fill) continue;
    SCOPED_TRACE(c.line);
    const RemapInput input = reference::remapInput(c);
    test(c, Sampler(c, input));
    if (testing::Test::IsSkipped()) return;
    ++count;
  }
  EXPECT_EQ(count, wantedCount);
}

constexpr int kTransparentCases = 3 * 28;
constexpr int kMaskCases = 28;

// The sampler writes 0 where remap leaves a pixel as it was.
TEST(Sampler, GivesEveryRecordedByteOneByOne) {
  withEveryCase("transparent", 0, kTransparentCases,
                [](const RemapCase& c, const Sampler& sampler) {
                  EXPECT_EQ(reference::hashOf(sampler.oneByOne().pixels), c.hash);
                });
}

TEST(Sampler, GivesEveryRecordedByteOfTheMaskOneByOne) {
  withEveryCase("validity", 255, kMaskCases, [](const RemapCase& c, const Sampler& sampler) {
    EXPECT_EQ(reference::hashOf(sampler.oneByOne().mask), c.hash);
  });
}

TEST(Sampler, GivesEveryRecordedByteInBlocks) {
  int shared = 0;
  withEveryCase("transparent", 0, kTransparentCases,
                [&](const RemapCase& c, const Sampler& sampler) {
                  shared += sampler.sharedBlocks();
                  blocks::onEverySet(
                      [&] { EXPECT_EQ(reference::hashOf(sampler.inBlocks().pixels), c.hash); });
                });
  if (!IsSkipped()) {
    EXPECT_GT(shared, 1000);
  }
}

TEST(Sampler, GivesEveryRecordedByteOfTheMaskInBlocks) {
  withEveryCase("validity", 255, kMaskCases, [](const RemapCase& c, const Sampler& sampler) {
    blocks::onEverySet([&] { EXPECT_EQ(reference::hashOf(sampler.inBlocks().mask), c.hash); });
  });
}

}  // namespace
