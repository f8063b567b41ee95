#include "platform/message_box.h"

#include <cstdio>

namespace fisheye_calibration::platform {

void showMessage(const char* utf8Text) { std::fprintf(stderr, "%s\n", utf8Text); }

}  // namespace fisheye_calibration::platform
