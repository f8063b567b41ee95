#include "platform/message_box.h"

#include <gtest/gtest.h>

using namespace fisheye_calibration;

namespace {

TEST(MessageBox, IsOneLineOfUtf8OnStandardErrorWithoutWindows) {
  testing::internal::CaptureStderr();
  platform::showMessage("特征点少于9个点，无法完成标定！");
  EXPECT_EQ(
      testing::internal::GetCapturedStderr(),
      "\xE7\x89\xB9\xE5\xBE\x81\xE7\x82\xB9\xE5\xB0\x91\xE4\xBA\x8E\x39\xE4\xB8\xAA\xE7\x82\xB9"
      "\xEF\xBC\x8C\xE6\x97\xA0\xE6\xB3\x95\xE5\xAE\x8C\xE6\x88\x90\xE6\xA0\x87\xE5\xAE\x9A"
      "\xEF\xBC\x81\n");
}

TEST(MessageBox, PercentSignsAreText) {
  testing::internal::CaptureStderr();
  platform::showMessage("100 %s");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "100 %s\n");
}

}  // namespace
