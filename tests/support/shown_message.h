// The messages that a call shows the user, by the means of the current system.
#pragma once

#include <functional>
#include <string>

#if defined(_WIN32)
#include <filesystem>

#include "support/message_boxes_windows.h"
#else
#include <gtest/gtest.h>
#endif

namespace support {

// Runs `call` and returns the messages that it shows, each as a line of UTF-8. On Windows they
// appear in boxes, which this function closes as a user would.
inline std::string messageShownBy(const std::function<void()>& call) {
#if defined(_WIN32)
  std::string lines;
  for (const MessageBox& box : messageBoxesShownBy(call)) {
    const std::u8string text = std::filesystem::path(box.text).u8string();
    lines.append(text.begin(), text.end());
    lines += '\n';
  }
  return lines;
#else
  testing::internal::CaptureStderr();
  call();
  return testing::internal::GetCapturedStderr();
#endif
}

}  // namespace support
