#include "images/view.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <vector>

using namespace fisheye_calibration::images;

namespace {

TEST(View, WithoutAStepHasNoPadding) {
  std::vector<unsigned char> bytes(24);
  const Target view{bytes.data(), 4, 2, 3};
  EXPECT_EQ(view.rowBytes(), 12U);
  EXPECT_EQ(view.stride(), 12);
  EXPECT_EQ(view.bufferRow(1), bytes.data() + 12);
  EXPECT_EQ(view.pictureRow(0), bytes.data() + 12);
  EXPECT_EQ(view.memory().data(), bytes.data());
  EXPECT_EQ(view.memory().size(), 24U);
}

TEST(View, OfAPartOfAPictureEndsWithItsLastPixel) {
  std::vector<unsigned char> bytes(40);
  const Target view{bytes.data() + 2, 4, 3, 1, 10};
  EXPECT_EQ(view.bufferRow(2), bytes.data() + 22);
  EXPECT_EQ(view.memory().data(), bytes.data() + 2);
  EXPECT_EQ(view.memory().size(), 24U);
}

TEST(View, WithANegativeStepBeginsInMemoryWithItsTopRow) {
  std::vector<unsigned char> bytes(30);
  const Target view{bytes.data() + 20, 4, 3, 1, -10};
  EXPECT_EQ(view.pictureRow(0), bytes.data());
  EXPECT_EQ(view.pictureRow(2), bytes.data() + 20);
  EXPECT_EQ(view.memory().data(), bytes.data());
  EXPECT_EQ(view.memory().size(), 24U);
}

TEST(View, WithoutPixelsOccupiesNoMemory) {
  unsigned char byte = 0;
  EXPECT_TRUE((Target{&byte, 0, 5, 1}.memory().empty()));
  EXPECT_TRUE((Target{&byte, 5, -1, 1}.memory().empty()));
  EXPECT_TRUE((Target{&byte, 5, 5, 0}.memory().empty()));
}

}  // namespace
