// Messages of the library to its user.
#pragma once

namespace fisheye_calibration::platform {

// Shows a message to the user: on Windows a modal box with an OK button, which returns when it is
// closed; elsewhere a line on standard error. The text is UTF-8.
void showMessage(const char* utf8Text);

}  // namespace fisheye_calibration::platform
