#include "visual_cxx/outcome.h"

#include <algorithm>
#include <exception>
#include <new>
#include <opencv2/core.hpp>
#include <stdexcept>
#include <string_view>

namespace fisheye_calibration::visual_cxx {
namespace {

Outcome failed(std::string_view text, Failure& failure) noexcept {
  *std::copy_n(text.begin(), std::min(text.size(), kTextLength - 1), failure.text) = '\0';
  return Outcome::kFailed;
}

}  // namespace

Outcome outcomeOfException(Failure& failure) noexcept {
  try {
    throw;
  } catch (const std::bad_alloc&) {
    return Outcome::kOutOfMemory;
  } catch (const std::length_error&) {  // more elements than any memory holds
    return Outcome::kOutOfMemory;
  } catch (const cv::Exception& error) {
    return error.code == cv::Error::StsNoMem ? Outcome::kOutOfMemory
                                             : failed(error.what(), failure);
  } catch (const std::exception& error) {
    return failed(error.what(), failure);
  } catch (...) {
    return failed("an exception of unknown type", failure);
  }
}

}  // namespace fisheye_calibration::visual_cxx
