// The user of the perspective aid's window on Windows: a second thread of the same process.
#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <thread>

// During its lifetime, presses the space bar in every window of that name that this process opens,
// half a second after it opened.
class WindowUser {
 public:
  // `whileOpen` runs before the key is pressed.
  WindowUser(std::string windowName, std::function<void()> whileOpen);
  WindowUser(const WindowUser&) = delete;
  WindowUser& operator=(const WindowUser&) = delete;
  ~WindowUser();

  [[nodiscard]] int windowsSeen() const { return windowsSeen_; }

 private:
  void serve();

  std::string windowName_;
  std::function<void()> whileOpen_;
  std::atomic<int> windowsSeen_ = 0;
  std::atomic<bool> leaving_ = false;
  std::thread thread_;
};
