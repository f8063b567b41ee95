#include "platform/message_box.h"

#if FISHEYE_CALIBRATION_MFC
#include <afxwin.h>
#else
#include <windows.h>
#endif

#include <string>

namespace fisheye_calibration::platform {
namespace {

std::wstring wideText(const char* utf8Text) {
  const int length = MultiByteToWideChar(CP_UTF8, 0, utf8Text, -1, nullptr, 0);
  if (length <= 0) {
    return {};
  }
  std::wstring text(static_cast<std::size_t>(length), L'\0');
  MultiByteToWideChar(CP_UTF8, 0, utf8Text, -1, text.data(), length);
  text.pop_back();  // the terminating NUL
  return text;
}

}  // namespace

// The wide functions show the text correctly under any code page; the narrow ones would require
// GBK, where both show the same characters.
void showMessage(const char* utf8Text) {
  const std::wstring text = wideText(utf8Text);
  constexpr UINT kStyle = MB_OK | MB_ICONEXCLAMATION;
#if FISHEYE_CALIBRATION_MFC
  // Uses the application object of a host built with MFC, which knows the window to block.
  AfxMessageBox(text.c_str(), kStyle);
#else
  // A box without an owner is modal only if told to disable the thread's other windows.
  MessageBoxW(nullptr, text.c_str(), L"fisheye_calibration", kStyle | MB_TASKMODAL);
#endif
}

}  // namespace fisheye_calibration::platform
