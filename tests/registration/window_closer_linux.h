// The user's window manager, closing the perspective aid's window on Linux.
#pragma once

#include <cstdint>

// Asks the window on the X server that DISPLAY names to close, as a click on its cross does.
// Returns false if that is not possible.
bool askToClose(std::uint32_t window);
