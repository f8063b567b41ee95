// A user on a second thread, who closes message boxes and presses keys. The system's functions are
// declared here, because its headers are not made for both compilers.
#include "host.h"

#define SYSTEM extern "C" __declspec(dllimport)
SYSTEM void* FindWindowW(const wchar_t*, const wchar_t*);
SYSTEM void* GetDlgItem(void*, int);
SYSTEM int GetWindowTextW(void*, wchar_t*, int);
SYSTEM int PostMessageW(void*, unsigned, unsigned long long, long long);
SYSTEM void* CreateThread(void*, std::size_t, unsigned long (*)(void*), void*, unsigned long,
                          unsigned long*);
SYSTEM unsigned long WaitForSingleObject(void*, unsigned long);
SYSTEM int CloseHandle(void*);
SYSTEM void Sleep(unsigned long);

namespace host {
namespace {

const int kTextOfBox = 0xFFFF;
const unsigned kCommand = 0x0111;
const unsigned long long kOk = 1;
const unsigned kKeyDown = 0x0100;
const unsigned kKeyUp = 0x0101;
const unsigned long long kSpace = 0x20;
const int kMostText = 256;
const int kPatience = 2000;  // steps of 10 or 50 ms

struct Watch {
  volatile bool isOver;
  int length;
  wchar_t text[kMostText];
};

unsigned long closeBoxes(void* argument) {
  Watch& seen = *static_cast<Watch*>(argument);
  for (int step = 0; step < kPatience && !seen.isOver; ++step) {
    void* const box = FindWindowW(L"#32770", L"fisheye_calibration");
    wchar_t text[kMostText];
    // A box that is just closing has no text any more.
    const int length =
        box == nullptr ? 0 : GetWindowTextW(GetDlgItem(box, kTextOfBox), text, kMostText);
    if (length > 0) {
      seen.length = length;
      for (int i = 0; i < length; ++i) seen.text[i] = text[i];
      PostMessageW(box, kCommand, kOk, 0);
    }
    Sleep(10);
  }
  return 0;
}

// The window may not accept keys immediately.
unsigned long pressKey(void* argument) {
  Watch& seen = *static_cast<Watch*>(argument);
  for (int step = 0; step < kPatience && !seen.isOver; ++step) {
    void* const window = FindWindowW(nullptr, L"Transformed Image");
    if (window != nullptr) {
      seen.length = 1;
      PostMessageW(window, kKeyDown, kSpace, 0x00390001);
      PostMessageW(window, kKeyUp, kSpace, 0xC0390001);
    }
    Sleep(50);
  }
  return 0;
}

// Runs `call` while a second thread runs `act`.
void with(unsigned long (*act)(void*), Watch& watch, void (*call)()) {
  void* const thread = CreateThread(nullptr, 0, act, &watch, 0, nullptr);
  call();
  watch.isOver = true;
  WaitForSingleObject(thread, ~0UL);
  CloseHandle(thread);
}

}  // namespace

void recordMessages(const char* name, void (*call)()) {
  Watch seen = Watch();
  with(closeBoxes, seen, call);
  record(name, seen.text, sizeof(wchar_t) * static_cast<std::size_t>(seen.length));
}

void recordWindow(const char* name, void (*call)()) {
  Watch seen = Watch();
  with(pressKey, seen, call);
  recordValue(name, seen.length);
}

}  // namespace host
