#include "registration/window_user_windows.h"

#include <windows.h>

#include <utility>

namespace {

struct Search {
  const std::string& name;
  HWND found;
};

BOOL CALLBACK lookAtWindow(HWND window, LPARAM parameter) {
  Search& search = *reinterpret_cast<Search*>(parameter);
  DWORD process = 0;
  GetWindowThreadProcessId(window, &process);
  char name[256] = "";
  GetWindowTextA(window, name, 256);
  if (process == GetCurrentProcessId() && name == search.name && IsWindowVisible(window) != FALSE) {
    search.found = window;
  }
  return TRUE;
}

}  // namespace

WindowUser::WindowUser(std::string windowName, std::function<void()> whileOpen)
    : windowName_(std::move(windowName)),
      whileOpen_(std::move(whileOpen)),
      thread_([this] { serve(); }) {}

WindowUser::~WindowUser() {
  leaving_ = true;
  thread_.join();
}

void WindowUser::serve() {
  while (!leaving_) {
    Search search{windowName_, nullptr};
    EnumWindows(lookAtWindow, reinterpret_cast<LPARAM>(&search));
    if (search.found == nullptr) {
      Sleep(20);
      continue;
    }
    ++windowsSeen_;
    Sleep(500);
    whileOpen_();
    // The window may not accept keys immediately.
    while (!leaving_ && IsWindow(search.found) != FALSE) {
      PostMessageW(search.found, WM_KEYDOWN, VK_SPACE, 0x00390001);
      PostMessageW(search.found, WM_KEYUP, VK_SPACE, static_cast<LPARAM>(0xC0390001));
      Sleep(50);
    }
  }
}
