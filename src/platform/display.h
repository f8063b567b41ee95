// Whether a window can be shown at all.
#pragma once

namespace fisheye_calibration::platform {

// Raises cv::Exception that says what is missing when the image library's window toolkit would not
// find a display. Some toolkits end the whole process in that case, so this is asked before the
// first window.
void requireDisplay();

}  // namespace fisheye_calibration::platform
