// The canvas from views whose rows are rendered where it shows them.
#include <gtest/gtest.h>

#include <algorithm>
#include <new>
#include <opencv2/core/utility.hpp>

#include "fisheye_calibration.h"
#include "registration/debug_drive.h"
#include "single/corrected_view_of.h"
#include "stitching/canvas.h"
#include "stitching/rigs.h"
#include "support/instruction_sets.h"
#include "support/limited_memory.h"
#include "support/plain_correction.h"
#include "support/scene_factor.h"

using namespace fisheye_calibration;

namespace {

using Bytes = std::vector<unsigned char>;
using support::Random;

constexpr std::size_t kGuard = 64;

int bitsOf(int i) { return i % 3 == 0 ? 8 : i % 3 == 1 ? 24 : 32; }

// A canvas with guard bytes on both sides.
class GuardedCanvas {
 public:
  GuardedCanvas(int width, int height, int bits, unsigned char fill)
      : fill_(fill),
        bytes_(static_cast<std::size_t>(width * height * bits / 8) + 2 * kGuard, fill),
        target_{bytes_.data() + kGuard, width, height, bits / 8} {}

  const images::Target& target() const { return target_; }
  Bytes canvas() const { return {bytes_.begin() + kGuard, bytes_.end() - kGuard}; }
  bool isGuardIntact() const {
    const auto intact = [this](unsigned char byte) { return byte == fill_; };
    return std::all_of(bytes_.begin(), bytes_.begin() + kGuard, intact) &&
           std::all_of(bytes_.end() - kGuard, bytes_.end(), intact);
  }

 private:
  unsigned char fill_;
  Bytes bytes_;
  images::Target target_;
};

std::optional<rendering::CorrectedView> viewOf(const plain::StitchCamera& camera) {
  return single::correctedViewOf(
      {camera.image.data(), camera.width, camera.height, camera.bits / 8}, camera.param,
      cv::Size(2 * camera.width, 2 * camera.height));
}

void expectCanvas(const Bytes& expected, const rigs::Rig& rig, int width, int height,
                  unsigned char fill, const stitching::RowBudget& budget) {
  GuardedCanvas canvas(width, height, rig.first.bits, fill);
  const auto first = viewOf(rig.first);
  const auto second = viewOf(rig.second);
  stitching::composeOnDemand({2 * rig.first.height, first ? &*first : nullptr},
                             {2 * rig.second.height, second ? &*second : nullptr},
                             plain::firstToSecond(rig.first, rig.second, true), canvas.target(),
                             budget);
  ASSERT_EQ(canvas.canvas(), expected)
      << "ring " << budget.ring << ", ranges of " << budget.rangeRows << " rows";
  ASSERT_TRUE(canvas.isGuardIntact());
}

TEST(CanvasOnDemand, EqualsThePlainCanvasForRingsAndRangesOfAnyLength) {
  Random random(51);
  for (int i = 0; i < 120 * support::kSceneFactor; ++i) {
    const rigs::Rig rig =
        rigs::turned(rigs::randomRig(random, bitsOf(i)), i % 2 == 0 ? 0 : random.uniform(0, 360));
    const int width = rigs::whole(random, 1, 150);
    const int height = rigs::whole(random, 1, 80);
    const auto fill = static_cast<unsigned char>(i);
    const Bytes expected = rigs::stitchPlainly(rig, width, height, rig.first.bits, fill).canvas;
    support::onEveryInstructionSet([&] {
      for (const int ring : {1, 4, 256}) {
        for (const int rangeRows : {1, 7, 1000}) {
          expectCanvas(expected, rig, width, height, fill, {ring, rangeRows});
        }
      }
    });
    if (testing::Test::HasFatalFailure()) return;
  }
}

TEST(CanvasOnDemand, BytesDoNotDependOnTheNumberOfThreads) {
  const int before = cv::getNumThreads();
  Random random(53);
  for (int i = 0; i < 12; ++i) {
    const rigs::Rig rig = rigs::turned(rigs::randomRig(random, bitsOf(i)), 5 * i);
    const Bytes expected = rigs::stitchPlainly(rig, 150, 80, rig.first.bits, 3).canvas;
    for (const int threads : {1, 2, 5}) {
      cv::setNumThreads(threads);
      for (const int rangeRows : {1, 16}) {
        expectCanvas(expected, rig, 150, 80, 3, {16, rangeRows});
      }
    }
  }
  cv::setNumThreads(before);
}

// Positions that follow each other may lie in different rows.
TEST(CanvasOnDemand, AViewOfOneColumnIsCrossedRowByRow) {
  const cv::Size size(1, 40);
  plain::StitchCamera camera = rigs::flatCamera(6, 40, 24, 0);
  Random random(55);
  for (unsigned char& byte : camera.image) {
    byte = static_cast<unsigned char>(rigs::whole(random, 0, 255));
  }
  plain::StitchView whole{size.width, size.height, 24, Bytes(120), Bytes(40)};
  ASSERT_TRUE(plain::singleCamCorrected(camera.image.data(), camera.width, camera.height, 24,
                                        camera.param, whole.pixels.data(), size.width, size.height,
                                        whole.mask.data()));
  ASSERT_EQ(std::count(whole.mask.begin(), whole.mask.end(), 0), 40);
  const plain::StitchView none{2, 2, 24, Bytes(12), Bytes(4, 255)};
  const cv::Matx33d M(0, 0, 0, 1, 0, 0, 0, 0, 1);  // column c shows row c
  GuardedCanvas canvas(50, 1, 24, 3);
  Bytes expected = canvas.canvas();
  plain::composeCanvas(none, whole, M, expected.data(), 50, 1, 24);
  const auto view = single::correctedViewOf({camera.image.data(), camera.width, camera.height, 3},
                                            camera.param, size);
  ASSERT_TRUE(view);
  stitching::composeOnDemand({2, nullptr}, {size.height, &*view}, M, canvas.target(), {64, 1});
  EXPECT_EQ(canvas.canvas(), expected);
}

TEST(CanvasOnDemand, RunningOutOfMemoryRaisesTheAllocationError) {
  const int before = cv::getNumThreads();
  cv::setNumThreads(1);  // the allocations of this thread are counted
  Random random(67);
  const rigs::Rig rig = rigs::randomRig(random, 24);
  const cv::Matx33d M = plain::firstToSecond(rig.first, rig.second, true);
  const Bytes expected = rigs::stitchPlainly(rig, 92, 56, 24, 3).canvas;
  int failures = 0;
  bool ranOut = true;
  for (int count = 0; ranOut; ++count) {
    ASSERT_LT(count, 1000);
    GuardedCanvas canvas(92, 56, 24, 3);
    try {
      ranOut = support::runsOutOfMemory(count, [&] {
        const auto first = viewOf(rig.first);
        const auto second = viewOf(rig.second);
        stitching::composeOnDemand({2 * rig.first.height, &*first},
                                   {2 * rig.second.height, &*second}, M, canvas.target(), {16, 16});
      });
      EXPECT_EQ(canvas.canvas(), expected);
    } catch (const std::bad_alloc&) {
      ++failures;
    }
  }
  EXPECT_GT(failures, 6);  // the rings alone have three buffers each
  cv::setNumThreads(before);
}

class StitchingOnDemand : public DebugDriveTest {
 protected:
  static void expectPlain(const rigs::Rig& rig, int width, int height) {
    const auto plainly = rigs::stitchPlainly(rig, width, height, rig.first.bits, 3);
    support::onEveryInstructionSet([&] {
      const auto ours = rigs::stitch(rig, width, height, rig.first.bits, 3);
      ASSERT_TRUE(ours.result);
      ASSERT_EQ(ours.canvas, plainly.canvas);
      ASSERT_TRUE(rigs::same(ours.dual, plainly.dual));
    });
  }

  // Frames of noise without distortion, whose views lie on each other.
  static rigs::Rig highRig(int width, int height, int bits) {
    rigs::Rig rig{rigs::flatCamera(width, height, bits, 0),
                  rigs::flatCamera(width, height, bits, 0)};
    Random random(57);
    for (plain::StitchCamera* const camera : {&rig.first, &rig.second}) {
      for (unsigned char& byte : camera->image) {
        byte = static_cast<unsigned char>(rigs::whole(random, 0, 255));
      }
      camera->points = rigs::corners(0, 0, static_cast<float>(width), static_cast<float>(height));
      camera->param.DatumPtXw = static_cast<float>(width) / 2;
      camera->param.DatumPtYw = static_cast<float>(height) / 2;
    }
    return rig;
  }
};

TEST_F(StitchingOnDemand, TurnedSecondCamerasGiveThePlainCanvas) {
  Random random(59);
  for (const double degrees : {1.0, 30.0, 90.0, 135.0, 180.0, 270.0}) {
    for (int i = 0; i < 12 * support::kSceneFactor; ++i) {
      SCOPED_TRACE(degrees);
      expectPlain(rigs::turned(rigs::randomRig(random, bitsOf(i)), degrees), 120, 80);
    }
  }
}

// Turned by a right angle, a row of the canvas shows up to 600 rows of the second view.
TEST_F(StitchingOnDemand, RowsThatShowMoreRowsThanAreKeptGiveThePlainCanvas) {
  for (const int bits : {8, 24, 32}) {
    for (const double degrees : {0.0, 20.0, 30.0, 90.0, 180.0}) {
      SCOPED_TRACE(degrees);
      expectPlain(rigs::turned(highRig(300, 300, bits), degrees), 640, 600);
    }
  }
}

TEST_F(StitchingOnDemand, FramesOfOnePixelGiveThePlainCanvas) {
  Random random(61);
  for (int i = 0; i < 30; ++i) {
    rigs::Rig rig = rigs::randomRig(random, bitsOf(i));
    const plain::StitchCamera dot = rigs::flatCamera(1, 1, bitsOf(i), 77);
    for (plain::StitchCamera* const camera : {&rig.first, &rig.second}) {
      if (rigs::whole(random, 0, 1) == 0) {
        camera->image = dot.image;
        camera->width = camera->height = 1;
        camera->param = dot.param;
      }
    }
    expectPlain(rig, 60, 40);
  }
}

TEST_F(StitchingOnDemand, ViewsThatShowNothingGiveThePlainCanvas) {
  Random random(63);
  for (int i = 0; i < 24; ++i) {
    rigs::Rig rig = rigs::randomRig(random, bitsOf(i));
    for (int k = 0; k < 2; ++k) {
      plain::StitchCamera& camera = k == 0 ? rig.first : rig.second;
      if (i / 3 % 4 == 3 || i / 3 % 2 == k) {
        std::fill(camera.image.begin(), camera.image.end(), static_cast<unsigned char>(0));
      }
    }
    expectPlain(rig, 100, 60);
  }
}

// The frames are read before the canvas is written.
TEST_F(StitchingOnDemand, ACanvasThatOverlapsAFrameShowsTheOriginalFrame) {
  Random random(65);
  for (int i = 0; i < 60; ++i) {
    const int bits = bitsOf(i);
    rigs::Rig rig = rigs::turned(rigs::randomRig(random, bits), random.uniform(-5, 5));
    const int width = 90;
    const int height = 50;
    plain::StitchCamera& overlapped = i % 2 == 0 ? rig.first : rig.second;
    const std::size_t frame = overlapped.image.size();
    const auto canvas = static_cast<std::size_t>(width * height * bits / 8);
    const auto frameAt = static_cast<std::size_t>(
        rigs::whole(random, 0, static_cast<int>(frame + canvas)));  // canvas at `frame`
    Bytes memory(canvas + 2 * frame, 9);
    std::copy(overlapped.image.begin(), overlapped.image.end(),
              memory.begin() + static_cast<std::ptrdiff_t>(frameAt));
    Bytes expected = memory;
    DualFishEyeCalibrationParam dual{};
    plain::fishEyeImageStitching(rig.first, rig.second, expected.data() + frame, width, height,
                                 bits, dual);
    unsigned char* const inMemory = memory.data() + frameAt;
    ASSERT_TRUE(FishEyeImageStitching(
        i % 2 == 0 ? inMemory : rig.first.image.data(), rig.first.width, rig.first.height, bits,
        rig.first.param, rig.first.points, i % 2 == 0 ? rig.second.image.data() : inMemory,
        rig.second.width, rig.second.height, bits, rig.second.param, rig.second.points,
        memory.data() + frame, width, height, bits, dual));
    ASSERT_EQ(memory, expected) << "rig " << i << ", frame at " << frameAt;
  }
}

}  // namespace
