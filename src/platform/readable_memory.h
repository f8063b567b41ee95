#pragma once

#include <cstddef>

namespace platform {

// Whether `size` bytes from `block` on can be read. Windows is asked; elsewhere everything but null
// counts as readable, because there only a fault would tell.
bool isReadable(const void* block, std::size_t size);

}  // namespace platform
