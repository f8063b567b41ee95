#include "support/limited_memory.h"

#include <cstdlib>
#include <new>

namespace support {

thread_local int allocationsLeft = -1;

}  // namespace support

namespace {

void* allocate(std::size_t size) {
  int& left = support::allocationsLeft;
  void* memory = left == 0 ? nullptr : std::malloc(size > 0 ? size : 1);
  if (memory == nullptr) {
    throw std::bad_alloc();
  }
  left -= left > 0 ? 1 : 0;
  return memory;
}

}  // namespace

void* operator new(std::size_t size) { return allocate(size); }
void* operator new[](std::size_t size) { return allocate(size); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }
