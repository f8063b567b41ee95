// The real message box: opened by one thread, looked at and closed by another.
#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <string>
#include <thread>
#include <vector>

#include "platform/message_box.h"

namespace {

struct Box {
  bool found = false;
  std::vector<std::wstring> texts;
  int buttons = 0;
};

BOOL CALLBACK lookAtChild(HWND child, LPARAM box) {
  wchar_t text[256] = L"";
  GetWindowTextW(child, text, 256);
  wchar_t kind[32] = L"";
  GetClassNameW(child, kind, 32);
  Box& seen = *reinterpret_cast<Box*>(box);
  if (std::wstring(kind) == L"Button") {
    ++seen.buttons;
  } else {
    seen.texts.emplace_back(text);
  }
  return TRUE;
}

// Waits up to ten seconds for the box.
void lookAndClose(Box& seen) {
  for (int i = 0; i < 100 && !seen.found; ++i) {
    Sleep(100);
    const HWND window = FindWindowW(nullptr, L"fisheye_calibration");
    if (window != nullptr && IsWindowVisible(window) != FALSE) {
      seen.found = true;
      EnumChildWindows(window, lookAtChild, reinterpret_cast<LPARAM>(&seen));
      PostMessageW(window, WM_COMMAND, IDOK, 0);
    }
  }
}

TEST(MessageBox, ShowsUtf8TextAndOneButtonOnWindows) {
  Box seen;
  std::thread user([&seen] { lookAndClose(seen); });
  platform::showMessage("\xE7\x89\xB9\xE5\xBE\x81\xEF\xBC\x81");
  user.join();
  ASSERT_TRUE(seen.found);
  EXPECT_EQ(seen.buttons, 1);
  const std::vector<std::wstring>& texts = seen.texts;
  EXPECT_NE(std::find(texts.begin(), texts.end(), L"\u7279\u5F81\uFF01"), texts.end());
}

}  // namespace
