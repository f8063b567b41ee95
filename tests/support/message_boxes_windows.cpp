#include "support/message_boxes_windows.h"

#include <windows.h>
#undef MessageBox  // the system's header makes it MessageBoxA

#include <algorithm>
#include <atomic>
#include <thread>

namespace support {
namespace {

std::wstring textOf(HWND window) {
  std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(window)) + 1, L'\0');
  const int length = GetWindowTextW(window, text.data(), static_cast<int>(text.size()));
  text.resize(static_cast<std::size_t>(length));
  return text;
}

std::wstring classOf(HWND window) {
  wchar_t name[64] = L"";
  GetClassNameW(window, name, 64);
  return name;
}

// A box has its buttons and a label, and a label without text that holds the picture.
BOOL CALLBACK lookAtPart(HWND part, LPARAM parameter) {
  MessageBox& box = *reinterpret_cast<MessageBox*>(parameter);
  const std::wstring text = textOf(part);
  if (classOf(part) == L"Button") {
    box.buttons.push_back(text);
  } else if (!text.empty()) {
    box.text += text;
    char narrow[256] = "";
    GetWindowTextA(part, narrow, 256);
    box.narrowText += narrow;
  }
  return TRUE;
}

struct Search {
  std::vector<MessageBox> found;
  const std::function<void()>& whileShown;
};

// Picks the visible boxes of this process; other programs may have some too.
BOOL CALLBACK lookAtWindow(HWND window, LPARAM parameter) {
  Search& search = *reinterpret_cast<Search*>(parameter);
  DWORD process = 0;
  GetWindowThreadProcessId(window, &process);
  const bool known = std::any_of(search.found.begin(), search.found.end(),
                                 [window](const MessageBox& box) { return box.window == window; });
  if (known || process != GetCurrentProcessId() || classOf(window) != L"#32770" ||
      IsWindowVisible(window) == FALSE) {
    return TRUE;
  }
  MessageBox box;
  box.window = window;
  box.owner = GetWindow(window, GW_OWNER);
  box.title = textOf(window);
  EnumChildWindows(window, lookAtPart, reinterpret_cast<LPARAM>(&box));
  search.found.push_back(box);
  search.whileShown();
  PostMessageW(window, WM_COMMAND, IDOK, 0);
  return TRUE;
}

}  // namespace

std::vector<MessageBox> messageBoxesShownBy(const std::function<void()>& call,
                                            const std::function<void()>& whileShown) {
  Search search{{}, whileShown};
  std::atomic<bool> returned = false;
  std::thread user([&] {
    while (!returned) {
      EnumWindows(lookAtWindow, reinterpret_cast<LPARAM>(&search));
      Sleep(10);
    }
  });
  call();
  returned = true;
  user.join();
  return search.found;
}

}  // namespace support
