// From exceptions to the status and the error text of the C interface.
#pragma once

#include <string_view>

#include "fisheye_calibration_c.h"

namespace fisheye_calibration::c_api {

// Sets the thread's error text to "argument: what".
void setError(std::string_view argument, std::string_view what);

// Ends the call with FCAL_BAD_ARGUMENT and this text.
[[noreturn]] void refuse(std::string_view argument, std::string_view what);

// Ends the call with FCAL_FALSE and this text.
inline fcal_status withoutResult(std::string_view argument, std::string_view what) {
  setError(argument, what);
  return FCAL_FALSE;
}

void clearError() noexcept;

// The status of the exception that is being handled; sets the error text.
fcal_status statusOfException() noexcept;

// Runs the body of an exported function. No exception passes.
template <class Body>
fcal_status guarded(const Body& body) noexcept {
  clearError();
  try {
    return body();
  } catch (...) {
    return statusOfException();
  }
}

}  // namespace fisheye_calibration::c_api
