#include "files/quiet_decoders.h"

#include <cstdlib>

namespace fisheye_calibration::program {
namespace {

// The image library reads it once, when it first uses FFmpeg; -8 is FFmpeg's level of silence.
constexpr const char* kName = "OPENCV_FFMPEG_LOGLEVEL";
constexpr const char* kSilent = "-8";

bool setUnlessSet() {
#if defined(_WIN32)
  return std::getenv(kName) != nullptr || ::_putenv_s(kName, kSilent) == 0;
#else
  return ::setenv(kName, kSilent, 0) == 0;
#endif
}

}  // namespace

void quietDecoders() { [[maybe_unused]] static const bool kSet = setUnlessSet(); }

}  // namespace fisheye_calibration::program
