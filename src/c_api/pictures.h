// From the pictures of the C interface to those of the library.
#pragma once

#include <string_view>

#include "fisheye_calibration_c.h"
#include "images/view.h"

namespace fisheye_calibration::c_api {

// Ends the call with FCAL_BAD_ARGUMENT unless the picture is a picture. Only kOptional ones may
// lack pixels.
enum class Pixels { kRequired, kOptional };
images::Target checkedImage(const fcal_image& image, std::string_view name,
                            Pixels pixels = Pixels::kRequired);

inline images::Frame frameOf(const images::Target& image) {
  return {image.pixels, image.width, image.height, image.bytes, image.step};
}

// Two pictures, for example "view" and "frame", must have the same bits.
void requireSameBits(const fcal_image& image, std::string_view name, const fcal_image& other,
                     std::string_view otherName);

}  // namespace fisheye_calibration::c_api
