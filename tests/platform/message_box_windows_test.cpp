// The real message box: opened by one thread, looked at and closed by another.
#include <gtest/gtest.h>
#include <windows.h>
#undef MessageBox

#include "platform/message_box.h"
#include "support/message_boxes_windows.h"

using namespace fisheye_calibration;

namespace {

TEST(MessageBox, ShowsUtf8TextAndOneButtonOnWindows) {
  const auto boxes = support::messageBoxesShownBy(
      [] { platform::showMessage("\xE7\x89\xB9\xE5\xBE\x81\xEF\xBC\x81 100 %s"); });
  ASSERT_EQ(boxes.size(), 1U);
  EXPECT_EQ(boxes[0].text, L"\u7279\u5F81\uFF01 100 %s");
  EXPECT_EQ(boxes[0].buttons.size(), 1U);
  EXPECT_EQ(boxes[0].title, L"fisheye_calibration");
}

TEST(MessageBox, TextIsGbkOnAGbkSystem) {
  if (GetACP() != 936) GTEST_SKIP() << "The system's code page is " << GetACP();
  const auto boxes = support::messageBoxesShownBy(
      [] { platform::showMessage("\xE7\x89\xB9\xE5\xBE\x81\xEF\xBC\x81"); });
  ASSERT_EQ(boxes.size(), 1U);
  EXPECT_EQ(boxes[0].narrowText, "\xCC\xD8\xD5\xF7\xA3\xA1");
}

TEST(MessageBox, HasNoOwnerButDisablesTheThreadsOtherWindows) {
  const HWND other = CreateWindowW(L"STATIC", L"other", WS_POPUP | WS_VISIBLE, 0, 0, 20, 20,
                                   nullptr, nullptr, GetModuleHandleW(nullptr), nullptr);
  ASSERT_NE(other, nullptr);
  BOOL enabled = TRUE;
  const auto boxes = support::messageBoxesShownBy([] { platform::showMessage("text"); },
                                                  [&] { enabled = IsWindowEnabled(other); });
  const BOOL enabledAfterwards = IsWindowEnabled(other);
  DestroyWindow(other);
  ASSERT_EQ(boxes.size(), 1U);
  EXPECT_EQ(boxes[0].owner, nullptr);
  EXPECT_FALSE(enabled);
  EXPECT_TRUE(enabledAfterwards);
}

}  // namespace
