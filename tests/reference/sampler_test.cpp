// The library's own sampler against the version of the image library that defines the pixels, on
// every instruction set.
#include <gtest/gtest.h>

#include <algorithm>
#include <opencv2/core.hpp>

#include "reference/generator.h"
#include "reference/remap_case.h"
#include "rendering/bilinear_sampler.h"
#include "rendering/run.h"
#include "support/instruction_sets.h"

using namespace fisheye_calibration;

namespace {

using reference::RemapCase;
using reference::RemapInput;
using rendering::kRun;

// A run of the positions of two maps, in 1/32 pixels.
struct Run {
  alignas(64) int u[kRun] = {};
  alignas(64) int v[kRun] = {};
  std::size_t count;

  Run(const RemapInput& input, std::size_t first)
      : count(std::min(kRun, input.map2.total() - first)) {
    const auto* const whole = input.map1.ptr<cv::Vec2s>() + first;
    const auto* const fractions = input.map2.ptr<unsigned short>() + first;
    for (std::size_t k = 0; k < count; ++k) {
      u[k] = 32 * whole[k][0] + (fractions[k] & 31);
      v[k] = 32 * whole[k][1] + (fractions[k] >> 5);
    }
  }
};

struct Sampled {
  cv::Mat pixels;
  cv::Mat mask;
};

Sampled sampled(const RemapCase& c, const RemapInput& input) {
  cv::Mat bottomUp;
  cv::flip(input.source, bottomUp, 0);
  const images::Frame frame{bottomUp.data, c.frame.width, c.frame.height, c.channels};
  const Sampled result{cv::Mat(c.map, input.source.type()), cv::Mat(c.map, CV_8UC1)};
  const std::size_t total = input.map2.total();
  for (std::size_t first = 0; first < total; first += kRun) {
    const Run run(input, first);
    rendering::sampleRun(frame, run.u, run.v, run.count,
                         result.pixels.data + first * input.source.elemSize(),
                         result.mask.data + first);
  }
  return result;
}

// Runs `test` with every case of a border on every instruction set; returns how many there are.
template <class Test>
int withEveryCase(const std::string& border, int fill, const Test& test) {
  int count = 0;
  for (const RemapCase& c : reference::readRemapCases()) {
    if (c.border != border || c.fill != fill) continue;
    SCOPED_TRACE(c.line);
    const RemapInput input = reference::remapInput(c);
    support::onEveryInstructionSet([&] { test(c, sampled(c, input)); });
    ++count;
  }
  return count;
}

// The sampler writes 0 where remap leaves a pixel as it was.
TEST(Sampler, GivesEveryRecordedByte) {
  const int count = withEveryCase("transparent", 0, [](const RemapCase& c, const Sampled& result) {
    EXPECT_EQ(reference::hashOf(result.pixels), c.hash);
  });
  EXPECT_EQ(count, 3 * 28);
}

TEST(Sampler, GivesEveryRecordedByteOfTheMask) {
  const int count = withEveryCase("validity", 255, [](const RemapCase& c, const Sampled& result) {
    EXPECT_EQ(reference::hashOf(result.mask), c.hash);
  });
  EXPECT_EQ(count, 28);
}

}  // namespace
