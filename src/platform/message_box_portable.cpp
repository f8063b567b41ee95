#include "platform/message_box.h"

#include <cstdio>

namespace platform {

void showMessage(const char* utf8Text) { std::fprintf(stderr, "%s\n", utf8Text); }

}  // namespace platform
