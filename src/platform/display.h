// Whether a window can be shown at all.
#pragma once

namespace fisheye_calibration::platform {

// Raises a cv::Exception that names what is missing if the image library's window toolkit would not
// find a display. Some toolkits then terminate the process, so call this before the first window.
void requireDisplay();

}  // namespace fisheye_calibration::platform
