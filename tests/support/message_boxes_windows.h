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

// Runs `call` while another thread reads every box that shows up, calls `whileShown` and presses
// the box's OK. A call whose box is never seen, because there is nothing to show it on, gives an
// empty list.
std::vector<MessageBox> messageBoxesShownBy(
    const std::function<void()>& call, const std::function<void()>& whileShown = [] {});

}  // namespace support
