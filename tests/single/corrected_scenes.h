// Scenes for comparing SingleCamCorrected with the plain pipeline, byte for byte.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <numeric>
#include <ostream>
#include <vector>

#include "fisheye_calibration.h"
#include "support/instruction_sets.h"
#include "support/plain_correction.h"

namespace scenes {

using Bytes = std::vector<unsigned char>;

struct Scene {
  int srcWidth = 0;
  int srcHeight = 0;
  int bitCount = 8;
  int dstWidth = 0;
  int dstHeight = 0;
  bool masked = true;
  FishEyeCalibrationParam param{};
  Bytes src;
};

inline std::ostream& operator<<(std::ostream& to, const Scene& scene) {
  return to << scene.srcWidth << "x" << scene.srcHeight << " to " << scene.dstWidth << "x"
            << scene.dstHeight << ", " << scene.bitCount << " bits";
}

// What a call leaves behind, with guard bytes around both outputs.
struct View {
  bool shown = false;
  Bytes dst;
  Bytes mask;

  bool operator==(const View&) const = default;
};

template <class Renderer>
View render(const Renderer& renderer, const Scene& scene) {
  constexpr unsigned char kUntouched = 0xA5;
  constexpr std::size_t kGuard = 64;
  const auto pixels = static_cast<std::size_t>(scene.dstWidth * scene.dstHeight);
  View view;
  view.dst.assign(pixels * static_cast<std::size_t>(scene.bitCount / 8) + 2 * kGuard, kUntouched);
  view.mask.assign(pixels + 2 * kGuard, kUntouched);
  Bytes src = scene.src;  // the interface takes what it does not change as changeable
  view.shown = renderer(src.data(), scene.srcWidth, scene.srcHeight, scene.bitCount, scene.param,
                        view.dst.data() + kGuard, scene.dstWidth, scene.dstHeight,
                        scene.masked ? view.mask.data() + kGuard : nullptr);
  return view;
}

inline View renderPlainly(const Scene& scene) { return render(plain::singleCamCorrected, scene); }

inline std::ptrdiff_t differences(const Bytes& a, const Bytes& b) {
  return std::inner_product(a.begin(), a.end(), b.begin(), std::ptrdiff_t{0}, std::plus<>(),
                            std::not_equal_to<>());
}

inline testing::AssertionResult shows(const Scene& scene, const View& expected) {
  const View view = render(SingleCamCorrected, scene);
  if (view == expected) return testing::AssertionSuccess();
  return testing::AssertionFailure()
         << scene << ": shown " << view.shown << ", plain " << expected.shown << "; "
         << differences(view.dst, expected.dst) << " bytes and "
         << differences(view.mask, expected.mask) << " mask bytes differ";
}

// Compares scenes `first` ... of a generator on every instruction set. Returns how many are shown.
template <class Generator>
std::uint64_t compareWithPlain(const Generator& generator, std::uint64_t first,
                               std::uint64_t count) {
  std::uint64_t shown = 0;
  for (std::uint64_t seed = first; seed < first + count; ++seed) {
    const Scene scene = generator(seed);
    const View expected = renderPlainly(scene);
    shown += expected.shown ? 1 : 0;
    support::onEveryInstructionSet(
        [&] { EXPECT_TRUE(shows(scene, expected)) << "scene " << seed; });
    if (testing::Test::HasFailure()) break;
  }
  return shown;
}

}  // namespace scenes
