#include "support/limited_memory.h"

#include <cstdlib>
#include <new>

namespace support {

thread_local int allocationsLeft = -1;

}  // namespace support

namespace {

void* tryToAllocate(std::size_t size) noexcept {
  int& left = support::allocationsLeft;
  if (left == 0) {
    return nullptr;
  }
  left -= left > 0 ? 1 : 0;
  return std::malloc(size > 0 ? size : 1);
}

void* allocate(std::size_t size) {
  void* memory = tryToAllocate(size);
  if (memory == nullptr) {
    throw std::bad_alloc();
  }
  return memory;
}

}  // namespace

void* operator new(std::size_t size) { return allocate(size); }
void* operator new[](std::size_t size) { return allocate(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return tryToAllocate(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return tryToAllocate(size);
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }
