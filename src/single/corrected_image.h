// Rendering the corrected view of a frame, whatever the layout of the rows.
#pragma once

#include "fisheye_calibration.h"
#include "images/view.h"

namespace fisheye_calibration::single {

// Renders the second-corrected view of a frame. Frame and view have the same bytes per pixel, none
// of their sizes is 0, and each has at most 2^31 - 1 bytes from its first to its last; the mask,
// one byte per pixel and of the view's size, is left out if it has no pixels. View and mask may
// overlap the frame but not each other. Returns false, with nothing written, if there is nothing to
// show (compatibility 34).
bool renderCorrected(const images::Frame& frame, const FishEyeCalibrationParam& param,
                     const images::Target& view, const images::Target& mask);

}  // namespace fisheye_calibration::single
