// The system's message boxes, seen and closed by a second thread of the same process.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace support {

struct MessageBox {
  void* window = nullptr;  // HWND
  void* owner = nullptr;
  std::wstring title;
  std::wstring text;
  std::string narrowText;  // in the system's code page
  std::vector<std::wstring> buttons;
};

// Runs `call` while another thread reads every box that appears, calls `whileShown` and presses its
// OK button. If no box is ever seen, because there is no display, the list is empty.
std::vector<MessageBox> messageBoxesShownBy(
    const std::function<void()>& call, const std::function<void()>& whileShown = [] {});

}  // namespace support
