#include "c_api/status.h"

#include <algorithm>
#include <cstddef>
#include <exception>
#include <iterator>
#include <new>
#include <opencv2/core.hpp>
#include <stdexcept>

namespace fisheye_calibration::c_api {
namespace {

// The text of the latest call is in memory of its own, so that reporting never fails.
constexpr std::size_t kTextLength = 512;
thread_local char lastError[kTextLength] = "";

struct BadArgument {};

fcal_status failed(fcal_status status, std::string_view argument, std::string_view what) {
  setError(argument, what);
  return status;
}

}  // namespace

void clearError() noexcept { lastError[0] = '\0'; }

void setError(std::string_view argument, std::string_view what) {
  char* end = lastError;
  for (const std::string_view part : {argument, std::string_view(": "), what}) {
    const auto room = static_cast<std::size_t>(std::end(lastError) - 1 - end);
    end = std::copy_n(part.begin(), std::min(part.size(), room), end);
  }
  *end = '\0';
}

void refuse(std::string_view argument, std::string_view what) {
  setError(argument, what);
  throw BadArgument();
}

fcal_status statusOfException() noexcept {
  constexpr std::string_view kMemory = "too little, or an image of more than 2^31 - 1 bytes";
  try {
    throw;
  } catch (const BadArgument&) {
    return FCAL_BAD_ARGUMENT;  // with its text
  } catch (const std::bad_alloc&) {
    return failed(FCAL_NO_MEMORY, "memory", kMemory);
  } catch (const std::length_error&) {
    return failed(FCAL_NO_MEMORY, "memory", kMemory);
  } catch (const cv::Exception& error) {
    if (error.code == cv::Error::StsNoMem) {
      return failed(FCAL_NO_MEMORY, "memory", kMemory);
    }
    return failed(FCAL_IMAGE_LIBRARY, error.func, error.err);
  } catch (const std::exception& error) {
    return failed(FCAL_OTHER, "unexpected", error.what());
  } catch (...) {
    return failed(FCAL_OTHER, "unexpected", "an exception of unknown type");
  }
}

}  // namespace fisheye_calibration::c_api

using namespace fisheye_calibration::c_api;

const char* fcal_version(void) { return FISHEYE_CALIBRATION_VERSION; }

const char* fcal_last_error(void) { return lastError; }

const char* fcal_status_text(fcal_status status) {
  switch (status) {
    case FCAL_OK:
      return "success";
    case FCAL_FALSE:
      return "no result";
    case FCAL_BAD_ARGUMENT:
      return "bad argument";
    case FCAL_NO_MEMORY:
      return "out of memory";
    case FCAL_IMAGE_LIBRARY:
      return "refused by the image library";
    case FCAL_OTHER:
      return "unexpected failure";
    default:
      return "unknown status";
  }
}
