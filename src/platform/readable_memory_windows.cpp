#include "platform/readable_memory.h"

#include <windows.h>

namespace platform {

bool isReadable(const void* block, std::size_t size) { return IsBadReadPtr(block, size) == FALSE; }

}  // namespace platform
