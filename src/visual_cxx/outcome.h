// How a call of the bridge ended. The front and the bridge include this, each with its own standard
// library.
#pragma once

#include <cstddef>

namespace fisheye_calibration::visual_cxx {

// With the function's own result, or with an exception.
enum class Outcome : int { kFalse, kTrue, kOutOfMemory, kFailed };

// The text of an exception, for kFailed. Longer ones are cut.
constexpr std::size_t kTextLength = 1024;
struct Failure {
  char text[kTextLength];
};

// Call within a catch block: what the exception means to the host. Lack of memory is kOutOfMemory,
// whichever library reports it and however.
Outcome outcomeOfException(Failure& failure) noexcept;

}  // namespace fisheye_calibration::visual_cxx
