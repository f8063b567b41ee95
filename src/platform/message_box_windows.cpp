#include "platform/message_box.h"

#include <windows.h>

#include <string>

namespace platform {

// The wide function shows the text on a system of any code page, where a narrow one would need the
// host's to be GBK; users of GBK systems see the same characters either way.
void showMessage(const char* utf8Text) {
  const int length = MultiByteToWideChar(CP_UTF8, 0, utf8Text, -1, nullptr, 0);
  if (length <= 0) {
    return;
  }
  std::wstring text(static_cast<std::size_t>(length), L'\0');  // with the terminating NUL
  MultiByteToWideChar(CP_UTF8, 0, utf8Text, -1, text.data(), length);
  // Without an owner the box is modal only if asked to hold up the thread's other windows.
  MessageBoxW(nullptr, text.c_str(), L"fisheye_calibration",
              MB_OK | MB_ICONEXCLAMATION | MB_TASKMODAL);
}

}  // namespace platform
