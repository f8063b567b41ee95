// Exceptions for hosts built with Visual C++.
#pragma once

namespace fisheye_calibration::visual_cxx {

// Raise an exception that such hosts catch as their own std::bad_alloc or std::runtime_error. No
// frame of the front is unwound: release what is held before the call. raiseRuntimeError copies the
// text to the heap of the usual hosts' runtime; raiseConstant expects one that stays where it is,
// for hosts that may have another heap.
[[noreturn]] void raiseBadAlloc();
[[noreturn]] void raiseRuntimeError(const char* text);
[[noreturn]] void raiseConstant(const char* text);

}  // namespace fisheye_calibration::visual_cxx
