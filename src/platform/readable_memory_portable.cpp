#include "platform/readable_memory.h"

namespace platform {

bool isReadable(const void* block, std::size_t) { return block != nullptr; }

}  // namespace platform
