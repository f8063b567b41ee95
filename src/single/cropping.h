// Cropping an image with rows of any stride.
#pragma once

#include "images/view.h"

namespace fisheye_calibration::single {

// As CroppingImage. Both have the same bytes per pixel.
void cropCentred(const images::Frame& from, const images::Target& to);

}  // namespace fisheye_calibration::single
