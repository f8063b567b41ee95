#include "platform/display.h"

#if defined(__linux__)

#include <dlfcn.h>

#include <cstdlib>
#include <memory>
#include <opencv2/core.hpp>
#include <opencv2/core/utility.hpp>
#include <string>

namespace fisheye_calibration::platform {
namespace {

std::string environment(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr ? value : "";
}

// True if the image library draws its windows with Qt, which aborts the process if there is no
// display. Other toolkits raise an exception.
bool windowsAreQt() {
  const std::string& information = cv::getBuildInformation();
  const std::size_t gui = information.find("GUI:");
  if (gui == std::string::npos) {
    return false;
  }
  return information.substr(gui, information.find('\n', gui) - gui).find("QT") != std::string::npos;
}

// True if this program may open windows on the X server that DISPLAY names. Asks the X library that
// Qt uses, loaded at run time so that the library does not depend on it.
bool canConnectToXServer() {
  struct CloseLibrary {
    void operator()(void* library) const { dlclose(library); }
  };
  const std::unique_ptr<void, CloseLibrary> library(dlopen("libxcb.so.1", RTLD_LAZY | RTLD_LOCAL));
  if (library == nullptr) {
    return false;
  }
  using Connect = void* (*)(const char* display, int* screen);
  using HasError = int (*)(void* connection);
  using Disconnect = void (*)(void* connection);
  const auto connect = reinterpret_cast<Connect>(dlsym(library.get(), "xcb_connect"));
  const auto hasError =
      reinterpret_cast<HasError>(dlsym(library.get(), "xcb_connection_has_error"));
  const auto disconnect = reinterpret_cast<Disconnect>(dlsym(library.get(), "xcb_disconnect"));
  if (connect == nullptr || hasError == nullptr || disconnect == nullptr) {
    return false;
  }
  void* connection = connect(nullptr, nullptr);
  const bool connected = hasError(connection) == 0;
  disconnect(connection);
  return connected;
}

}  // namespace

void requireDisplay() {
  if (!windowsAreQt()) {
    return;
  }
  const std::string platform = environment("QT_QPA_PLATFORM");
  if (platform.starts_with("offscreen") || platform.starts_with("minimal")) {
    CV_Error(cv::Error::StsError, "The window cannot be shown: QT_QPA_PLATFORM=" + platform +
                                      " has neither a screen nor a keyboard");
  }
  // Qt uses platforms other than X (frame buffer, Wayland ...) only if explicitly chosen.
  if (!platform.empty() && platform.find("xcb") == std::string::npos) {
    return;
  }

  const std::string display = environment("DISPLAY");
  if (display.empty()) {
    CV_Error(cv::Error::StsError,
             "The window cannot be shown: there is no display (DISPLAY is not set)");
  }
  if (!canConnectToXServer()) {
    CV_Error(cv::Error::StsError, "The window cannot be shown: the display that DISPLAY=" +
                                      display + " names does not let this program connect");
  }
}

}  // namespace fisheye_calibration::platform

#else

namespace fisheye_calibration::platform {

void requireDisplay() {}  // there always is one, or the toolkit raises an exception

}  // namespace fisheye_calibration::platform

#endif
