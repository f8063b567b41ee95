#include "c_api/pictures.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <string>

#include "c_api/arguments.h"
#include "c_api/records.h"
#include "images/pixel_format.h"
#include "single/corrected_image.h"
#include "single/cropping.h"
#include "stitching/dual_cropping.h"

namespace fisheye_calibration::c_api {

// The library's views begin with the bottom row, and step upwards.
images::Target checkedImage(const fcal_image& image, std::string_view name, Pixels pixels) {
  if (image.data == nullptr && pixels == Pixels::kRequired) {
    refuse(name, "data is null");
  }
  if (image.width <= 0 || image.height <= 0) {
    refuse(name, "width or height is not positive");
  }
  const int bytes = images::bytesPerPixel(image.bits);
  if (bytes == 0) {
    refuse(name, "bits is not 8, 24 or 32");
  }
  const std::int64_t row = std::int64_t{image.width} * bytes;
  const std::int64_t stride = image.stride != 0 ? image.stride : row;
  if (std::abs(stride) < row) {
    refuse(name, "stride is shorter than a row");
  }
  constexpr std::int64_t kLargest = std::numeric_limits<std::int32_t>::max();
  if (row > kLargest || std::abs(stride) * (image.height - 1) + row > kLargest) {
    refuse(name, "more than 2^31 - 1 bytes");
  }
  std::uint8_t* const bottom =
      image.data == nullptr ? nullptr
                            : image.data + static_cast<std::ptrdiff_t>(stride * (image.height - 1));
  return {bottom, image.width, image.height, bytes, static_cast<std::ptrdiff_t>(-stride)};
}

void requireSameBits(const fcal_image& image, std::string_view name, const fcal_image& other,
                     std::string_view otherName) {
  if (image.bits != other.bits) {
    refuse(name, "bits differ from those of " + std::string(otherName));
  }
}

}  // namespace fisheye_calibration::c_api

using namespace fisheye_calibration;
using namespace fisheye_calibration::c_api;

fcal_status fcal_correct(const fcal_image* frame, const fcal_camera* camera, const fcal_image* view,
                         const fcal_image* mask) {
  return guarded([&]() -> fcal_status {
    const images::Target source = checkedImage(required(frame, "frame"), "frame");
    const FishEyeCalibrationParam param = recordOf(required(camera, "camera"));
    const images::Target target = checkedImage(required(view, "view"), "view");
    requireSameBits(*view, "view", *frame, "frame");
    images::Target maskTarget;
    if (mask != nullptr) {
      maskTarget = checkedImage(*mask, "mask");
      if (mask->bits != 8 || mask->width != view->width || mask->height != view->height) {
        refuse("mask", "not 8 bits or not the size of view");
      }
    }
    if (!single::renderCorrected(frameOf(source), param, target, maskTarget)) {
      return withoutResult("frame", "entirely black without its distortion");
    }
    return FCAL_OK;
  });
}

fcal_status fcal_crop(const fcal_image* source, const fcal_image* target) {
  return guarded([&]() -> fcal_status {
    const images::Target from = checkedImage(required(source, "source"), "source");
    const images::Target to = checkedImage(required(target, "target"), "target");
    requireSameBits(*target, "target", *source, "source");
    single::cropCentred(frameOf(from), to);
    return FCAL_OK;
  });
}

fcal_status fcal_crop_stitched(const fcal_image* source, int32_t left, int32_t top,
                               const fcal_image* target, fcal_dual* dual) {
  return guarded([&]() -> fcal_status {
    const images::Target from = checkedImage(required(source, "source"), "source");
    const images::Target to = checkedImage(required(target, "target"), "target");
    requireSameBits(*target, "target", *source, "source");
    if (to.width % 4 != 0 || to.height % 4 != 0) {
      refuse("target", "width or height is not a multiple of 4");
    }
    DualFishEyeCalibrationParam record = recordOf(required(dual, "dual"));
    stitching::cropStitched(frameOf(from), left, top, to, record);
    store(record, *dual);
    return FCAL_OK;
  });
}
