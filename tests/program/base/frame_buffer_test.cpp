#include "base/frame_buffer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace fisheye_calibration::program {
namespace {

using testing::ElementsAre;

TEST(FrameBuffer, RowsAreStoredFromTheBottomWithoutPadding) {
  cv::Mat picture(2, 3, CV_8UC3);
  for (int i = 0; i < 18; ++i) {
    picture.data[i] = static_cast<unsigned char>(i);
  }
  const FrameBuffer buffer = toBuffer(picture);
  EXPECT_EQ(buffer.bitCount, 24);
  EXPECT_THAT(buffer.bytes,
              ElementsAre(9, 10, 11, 12, 13, 14, 15, 16, 17, 0, 1, 2, 3, 4, 5, 6, 7, 8));
  EXPECT_EQ(cv::norm(toPicture(buffer), picture), 0);
}

}  // namespace
}  // namespace fisheye_calibration::program
