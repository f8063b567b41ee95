// What the front uses of the C runtime of hosts built with Visual C++ 2015 or later, the Universal
// C Runtime. The names are private, because the library's own compiler links another runtime under
// the usual names; host_runtime_*.def assigns them to the runtime's DLLs.
#pragma once

#include <cstddef>

extern "C" {
__declspec(dllimport) void* fisheyeHostMalloc(std::size_t bytes) noexcept;
__declspec(dllimport) void fisheyeHostFree(void* block) noexcept;
__declspec(dllimport) int fisheyeHostRand();
}
