#include "support/limited_memory.h"

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <new>

// The image library and the C++ library take their memory from the C library, so that its functions
// catch every allocation. Sanitizers have their own in their place.
#if defined(__GLIBC__) && !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
#define REPLACES_MALLOC 1
#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#undef REPLACES_MALLOC
#endif
#endif
#endif

namespace support {

thread_local int allocationsLeft = -1;

}  // namespace support

namespace {

std::atomic<long> blocks{0};

// Whether one more allocation of this thread is allowed.
bool takeOne() {
  int& left = support::allocationsLeft;
  if (left == 0) {
    return false;
  }
  left -= left > 0 ? 1 : 0;
  return true;
}

}  // namespace

long support::blocksInUse() { return blocks; }

#if defined(REPLACES_MALLOC)

extern "C" {

// NOLINTBEGIN(bugprone-reserved-identifier): so the C library names them
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* memory);
// NOLINTEND(bugprone-reserved-identifier)

static void* counted(void* memory) {
  blocks += memory != nullptr ? 1 : 0;
  return memory;
}

static void* none() {
  errno = ENOMEM;
  return nullptr;
}

void* malloc(std::size_t size) { return takeOne() ? counted(__libc_malloc(size)) : none(); }

void* calloc(std::size_t count, std::size_t size) {
  return takeOne() ? counted(__libc_calloc(count, size)) : none();
}

void* realloc(void* memory, std::size_t size) {
  if (!takeOne()) {
    return none();
  }
  void* const moved = __libc_realloc(memory, size);
  blocks +=
      (moved != nullptr ? 1 : 0) - (memory != nullptr && (moved != nullptr || size == 0) ? 1 : 0);
  return moved;
}

void* memalign(std::size_t alignment, std::size_t size) {
  return takeOne() ? counted(__libc_memalign(alignment, size)) : none();
}

void* aligned_alloc(std::size_t alignment, std::size_t size) { return memalign(alignment, size); }

int posix_memalign(void** memory, std::size_t alignment, std::size_t size) {
  void* const block = memalign(alignment, size);
  if (block == nullptr) {
    return ENOMEM;
  }
  *memory = block;
  return 0;
}

void free(void* memory) {
  blocks -= memory != nullptr ? 1 : 0;
  __libc_free(memory);
}

}  // extern "C"

#else

#if defined(__SANITIZE_ADDRESS__)
// The image library loses the elements of a matrix if it cannot allocate what describes them.
// NOLINTNEXTLINE(bugprone-reserved-identifier)
extern "C" [[gnu::visibility("default")]] const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() { return "leak:cv::fastMalloc\n"; }
#endif

namespace {

void* tryToAllocate(std::size_t size) noexcept {
  return takeOne() ? std::malloc(size > 0 ? size : 1) : nullptr;
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

#endif
