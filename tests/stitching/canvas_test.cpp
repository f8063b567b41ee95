#include "stitching/canvas.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <opencv2/core/utility.hpp>

#include "stitching/rigs.h"
#include "support/instruction_sets.h"
#include "support/scene_factor.h"

using namespace fisheye_calibration;

namespace {

using rigs::whole;
using support::Random;

stitching::DoubledView asDoubledView(const plain::StitchView& view) {
  stitching::DoubledView result{view.width, view.height, view.bits,
                                std::make_unique<unsigned char[]>(view.pixels.size()),
                                std::make_unique<unsigned char[]>(view.mask.size())};
  std::copy(view.pixels.begin(), view.pixels.end(), result.pixels.get());
  std::copy(view.mask.begin(), view.mask.end(), result.mask.get());
  return result;
}

// A view of one value with content everywhere.
plain::StitchView evenView(int width, int height, int bits, unsigned char value) {
  const auto count = static_cast<std::size_t>(width * height);
  return {width, height, bits,
          std::vector<unsigned char>(count * static_cast<std::size_t>(bits / 8), value),
          std::vector<unsigned char>(count, 0)};
}

using Canvas = std::vector<unsigned char>;

Canvas composed(const plain::StitchView& first, const plain::StitchView& second,
                const cv::Matx33d& M, int width, int height, unsigned char fill) {
  const int bits = first.bits;
  Canvas canvas(static_cast<std::size_t>(width * height * bits / 8), fill);
  stitching::compose(asDoubledView(first), asDoubledView(second), M,
                     {canvas.data(), width, height, bits / 8});
  return canvas;
}

Canvas composedPlainly(const plain::StitchView& first, const plain::StitchView& second,
                       const cv::Matx33d& M, int width, int height, unsigned char fill) {
  const int bits = first.bits;
  Canvas canvas(static_cast<std::size_t>(width * height * bits / 8), fill);
  plain::composeCanvas(first, second, M, canvas.data(), width, height, bits);
  return canvas;
}

// Column c and row r of the first view show column c + dx and row r + dy of the second.
cv::Matx33d shift(double dx, double dy) { return {1, 0, dx, 0, 1, dy, 0, 0, 1}; }

TEST(Canvas, OverlapIsARampFromTheFirstOverlappingColumnToTheSeam) {
  // The first view's last column is 7; the second begins at column 3, where trunc(c - 3.5 + 0.5)
  // is 0, so D = 4.
  const auto first = evenView(8, 1, 8, 100);
  const auto second = evenView(8, 1, 8, 50);
  EXPECT_EQ(composed(first, second, shift(-3.5, 0), 12, 1, 1),
            // t = 1, 3/4, 1/2, 1/4, 0: 100 + 0, 75 + 12, 50 + 25, 25 + 37, 0 + 50
            (Canvas{100, 100, 100, 100, 87, 75, 62, 50, 50, 50, 50, 1}));
}

// In 32-bit float 7 (1 - 3/7) is just below 4 and is cut to 3; in double it is 4.
TEST(Canvas, TheRampIsTakenIn32BitFloat) {
  const auto first = evenView(8, 1, 8, 0);
  const auto second = evenView(8, 1, 8, 7);
  EXPECT_EQ(composed(first, second, shift(0, 0), 8, 1, 9)[4], 3);  // d = 3 of D = 7
  // 3 (1 - 1/3): 1, not 2; 3 (1 - 2/3): 0, not 1.
  EXPECT_EQ(composed(evenView(4, 1, 8, 0), evenView(4, 1, 8, 3), shift(0, 0), 4, 1, 9),
            (Canvas{0, 0, 1, 3}));
}

TEST(Canvas, EveryByteOfAPixelIsBlendedOnItsOwn) {
  for (const int bits : {24, 32}) {
    auto first = evenView(3, 1, bits, 0);
    auto second = evenView(3, 1, bits, 0);
    const int bytes = bits / 8;
    for (int i = 0; i < 3 * bytes; ++i) {
      first.pixels[static_cast<std::size_t>(i)] = static_cast<unsigned char>(40 + i % bytes);
      second.pixels[static_cast<std::size_t>(i)] = static_cast<unsigned char>(80 + 3 * (i % bytes));
    }
    const Canvas canvas = composed(first, second, shift(0, 0), 3, 1, 0);
    for (int i = 0; i < bytes; ++i) {  // the middle pixel has t = 1/2
      EXPECT_EQ(canvas[static_cast<std::size_t>(bytes + i)], (40 + i) / 2 + (80 + 3 * i) / 2);
    }
  }
}

TEST(Canvas, OverlapThatBeginsAtTheSeamTakesTheMean) {
  const auto first = evenView(4, 1, 8, 101);
  const auto second = evenView(4, 1, 8, 50);
  EXPECT_EQ(composed(first, second, shift(-3.5, 0), 8, 1, 9),
            (Canvas{101, 101, 101, 75, 50, 50, 50, 9}));
}

TEST(Canvas, TheSeamIsTheRightmostColumnWithContentOfItsRow) {
  auto first = evenView(6, 2, 8, 100);
  first.mask = {0, 0, 0, 255, 255, 255, 0, 0, 0, 0, 0, 255};
  const auto second = evenView(6, 2, 8, 200);
  EXPECT_EQ(composed(first, second, shift(0, 0), 6, 2, 0),
            (Canvas{100, 150, 200, 200, 200, 200,              // seam 2, D = 2
                    100, 75 + 50, 150, 25 + 150, 200, 200}));  // seam 4, D = 4
}

TEST(Canvas, ColumnZeroIsNoSeamSoARowOfItAloneTakesTheMean) {
  auto first = evenView(3, 1, 8, 100);
  first.mask = {0, 255, 255};
  EXPECT_EQ(composed(first, evenView(3, 1, 8, 201), shift(0, 0), 3, 1, 0), (Canvas{150, 201, 201}));
}

TEST(Canvas, AHoleInTheOverlapDoesNotRestartTheRamp) {
  const auto first = evenView(5, 1, 8, 100);
  auto second = evenView(5, 1, 8, 200);
  second.mask = {0, 0, 255, 0, 0};
  EXPECT_EQ(composed(first, second, shift(0, 0), 5, 1, 0),
            (Canvas{100, 75 + 50, 100, 25 + 150, 200}));
}

TEST(Canvas, MaskValuesBelow255ShowContent) {
  auto first = evenView(2, 1, 8, 7);
  first.mask = {254, 255};
  auto second = evenView(2, 1, 8, 8);
  second.mask = {255, 254};
  EXPECT_EQ(composed(first, second, shift(0, 0), 2, 1, 0), (Canvas{7, 8}));
}

TEST(Canvas, PixelsWithoutContentKeepTheirValue) {
  auto first = evenView(2, 1, 24, 7);
  first.mask = {255, 255};
  EXPECT_EQ(composed(first, evenView(2, 1, 24, 8), shift(-3.5, 0), 4, 1, 0x5A),
            (Canvas{0x5A, 0x5A, 0x5A, 0x5A, 0x5A, 0x5A, 0x5A, 0x5A, 0x5A, 8, 8, 8}));
}

TEST(Canvas, PositionsAreTruncatedAfterAddingHalf) {
  auto first = evenView(4, 1, 8, 1);
  first.mask = {255, 255, 255, 255};
  auto second = evenView(4, 1, 8, 0);
  second.pixels = {10, 20, 30, 40};
  // c - 1.4 + 0.5 = -0.9, 0.1, 1.1, 2.1; the first one is cut to 0.
  EXPECT_EQ(composed(first, second, shift(-1.4, 0), 4, 1, 0), (Canvas{10, 10, 20, 30}));
  // c - 1.5 + 0.5 = -1, 0, 1, 2: -1 lies outside.
  EXPECT_EQ(composed(first, second, shift(-1.5, 0), 4, 1, 0), (Canvas{0, 10, 20, 30}));
  // c + 0.5 + 0.5 = 1, 2, 3, 4: 4 lies outside.
  EXPECT_EQ(composed(first, second, shift(0.5, 0), 4, 1, 0), (Canvas{20, 30, 40, 0}));
  // Rows likewise.
  EXPECT_EQ(composed(first, second, shift(0, -1.4), 4, 1, 0), (Canvas{10, 20, 30, 40}));
  EXPECT_EQ(composed(first, second, shift(0, -1.5), 4, 1, 0), (Canvas{0, 0, 0, 0}));
  EXPECT_EQ(composed(first, second, shift(0, 0.49), 4, 1, 0), (Canvas{10, 20, 30, 40}));
  EXPECT_EQ(composed(first, second, shift(0, 0.5), 4, 1, 0), (Canvas{0, 0, 0, 0}));
}

TEST(Canvas, AHigherCanvasShowsTheFirstViewInItsMiddle) {
  const auto first = evenView(1, 2, 8, 5);
  auto second = evenView(1, 1, 8, 9);
  second.mask = {255};
  EXPECT_EQ(stitching::verticalOffset(5, 2), 1);
  EXPECT_EQ(composed(first, second, shift(0, 0), 1, 5, 0), (Canvas{0, 5, 5, 0, 0}));
}

TEST(Canvas, ALowerCanvasCutsTheFirstViewOnBothSides) {
  auto first = evenView(1, 7, 8, 0);
  first.pixels = {1, 2, 3, 4, 5, 6, 7};
  auto second = evenView(1, 1, 8, 9);
  second.mask = {255};
  EXPECT_EQ(stitching::verticalOffset(4, 7), -1);  // -1.5 cut towards zero
  EXPECT_EQ(composed(first, second, shift(0, 0), 1, 4, 0), (Canvas{2, 3, 4, 5}));
}

TEST(Canvas, AboveAndBelowTheFirstViewTheSecondStaysWhereItIs) {
  auto first = evenView(1, 2, 8, 5);
  first.mask = {255, 255};
  auto second = evenView(1, 6, 8, 0);
  second.pixels = {10, 11, 12, 13, 14, 15};
  // Canvas row r is row r - 2 of the first view and r - 1 of the second; -1 + 0.5 is cut to 0.
  EXPECT_EQ(composed(first, second, shift(0, 1), 1, 6, 0), (Canvas{10, 10, 11, 12, 13, 14}));
}

TEST(Canvas, NanTransformsLeaveTheSecondViewOut) {
  const auto first = evenView(2, 1, 8, 5);
  const auto second = evenView(2, 1, 8, 9);
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double infinity = std::numeric_limits<double>::infinity();
  const double huge = std::numeric_limits<double>::max();
  for (const cv::Matx33d& M :
       {cv::Matx33d::all(nan), cv::Matx33d::all(infinity), cv::Matx33d::zeros(),
        cv::Matx33d(1, 0, nan, 0, 1, 0, 0, 0, 1), cv::Matx33d(1, 0, 0, 0, nan, 0, 0, 0, 1),
        cv::Matx33d(1, 0, 0, 0, 1, 0, 0, 0, nan), cv::Matx33d(1, 0, 0, 0, 1, infinity, 0, 0, 1),
        cv::Matx33d(1, 0, 3e9, 0, 1, 0, 0, 0, 1), cv::Matx33d(1, 0, 0, 0, 1, -1e300, 0, 0, 1),
        cv::Matx33d(huge, huge, huge, huge, huge, huge, huge, huge, huge) * 2.0}) {
    EXPECT_EQ(composed(first, second, M, 4, 1, 1), (Canvas{5, 5, 1, 1})) << M;
  }
}

TEST(Canvas, EmptyViewsAndCanvasesAreAccepted) {
  const auto none = evenView(0, 0, 8, 0);
  const auto one = evenView(1, 1, 8, 9);
  EXPECT_EQ(composed(none, none, shift(0, 0), 2, 1, 3), (Canvas{3, 3}));
  EXPECT_EQ(composed(none, one, shift(0, 0), 2, 1, 3), (Canvas{9, 3}));
  EXPECT_EQ(composed(one, none, shift(0, 0), 2, 1, 3), (Canvas{9, 3}));
  // -1 + 0.5 is cut to 0, which an empty view does not have either.
  EXPECT_EQ(composed(one, none, shift(-1, -1), 2, 1, 3), (Canvas{9, 3}));
  EXPECT_EQ(composed(one, one, shift(0, 0), 0, 1, 3), Canvas{});
  EXPECT_EQ(composed(one, one, shift(0, 0), 1, 0, 3), Canvas{});
  unsigned char untouched = 3;
  stitching::compose(asDoubledView(one), asDoubledView(one), shift(0, 0), {&untouched, -4, -4, 8});
  EXPECT_EQ(untouched, 3);
}

// Views with islands of content, and transforms of every kind.
struct Scene {
  plain::StitchView first;
  plain::StitchView second;
  cv::Matx33d M;
  int width = 0;
  int height = 0;
};

plain::StitchView randomView(Random& random, int width, int height, int bits) {
  plain::StitchView view = evenView(width, height, bits, 0);
  for (unsigned char& byte : view.pixels) byte = static_cast<unsigned char>(whole(random, 0, 255));
  const int emptyOfTen = whole(random, 0, 10);
  unsigned char mask = 0;
  for (unsigned char& byte : view.mask) {
    if (whole(random, 0, 3) == 0) {
      mask = static_cast<unsigned char>(whole(random, 1, 10) <= emptyOfTen ? 255
                                                                           : whole(random, 0, 254));
    }
    byte = mask;
  }
  return view;
}

cv::Matx33d randomTransform(Random& random, int width, int height) {
  const double strength = std::pow(10.0, random.uniform(-6, 1));
  cv::Matx33d M = shift(random.uniform(-1.2, 0.8) * width, random.uniform(-0.6, 0.6) * height);
  switch (whole(random, 0, 5)) {
    case 0:  // whole pixels
      M = shift(whole(random, -width, width), whole(random, -3, 3));
      break;
    case 1:  // half pixels, where the rounding decides
      M = shift(whole(random, -width, width) + 0.5, whole(random, -3, 3) - 0.5);
      break;
    case 2:  // any plane transform at all, horizon and mirror included
      for (double& m : M.val) m = random.uniform(-1, 1) * strength;
      break;
    default:
      M(0, 0) += random.uniform(-0.3, 0.3);
      M(0, 1) += random.uniform(-0.3, 0.3);
      M(1, 0) += random.uniform(-0.3, 0.3);
      M(1, 1) += random.uniform(-0.3, 0.3);
      M(2, 0) = random.uniform(-1, 1) * strength / width;
      M(2, 1) = random.uniform(-1, 1) * strength / height;
  }
  if (whole(random, 0, 9) == 0) M = M * -1.0;
  return M;
}

Scene randomScene(std::uint64_t seed) {
  Random random(seed);
  const int bits = std::vector<int>{8, 24, 32}[static_cast<std::size_t>(seed % 3)];
  const int width = whole(random, 1, 60);
  const int height = whole(random, 1, 12);
  const bool equal = whole(random, 0, 1) == 0;
  Scene scene;
  scene.first = randomView(random, width, height, bits);
  scene.second = randomView(random, equal ? width : whole(random, 1, 60),
                            equal ? height : whole(random, 1, 12), bits);
  scene.M = randomTransform(random, width, height);
  scene.width = whole(random, 1, 130);
  scene.height = whole(random, 1, 20);
  return scene;
}

TEST(Canvas, AgreesWithTheLoopOverPixelsOnEveryInstructionSet) {
  for (int seed = 0; seed < 6000 * support::kSceneFactor; ++seed) {
    const Scene s = randomScene(static_cast<std::uint64_t>(seed));
    const auto fill = static_cast<unsigned char>(seed);
    const Canvas expected = composedPlainly(s.first, s.second, s.M, s.width, s.height, fill);
    support::onEveryInstructionSet([&] {
      ASSERT_EQ(composed(s.first, s.second, s.M, s.width, s.height, fill), expected)
          << "scene " << seed;
    });
    if (testing::Test::HasFatalFailure()) return;
  }
}

TEST(Canvas, WideRowsAreComputedInPieces) {
  Random random(5);
  const auto first = randomView(random, 1300, 3, 24);
  const auto second = randomView(random, 1700, 3, 24);
  const cv::Matx33d M = shift(-300.25, 0.125);
  EXPECT_EQ(composed(first, second, M, 2100, 4, 7), composedPlainly(first, second, M, 2100, 4, 7));
}

TEST(Canvas, BytesDoNotDependOnTheNumberOfThreads) {
  Random random(11);
  const auto first = randomView(random, 200, 97, 24);
  const auto second = randomView(random, 180, 111, 24);
  const cv::Matx33d M(1.02, 0.03, -90, -0.02, 0.97, 5, 1e-4, -2e-4, 1);
  const int before = cv::getNumThreads();
  const Canvas expected = composedPlainly(first, second, M, 320, 120, 7);
  for (const int threads : {1, 2, 5}) {
    cv::setNumThreads(threads);
    EXPECT_EQ(composed(first, second, M, 320, 120, 7), expected) << threads << " threads";
  }
  cv::setNumThreads(before);
}

}  // namespace
