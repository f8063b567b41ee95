// Counts every allocation of the process: these functions replace the C library's, in shared
// libraries too.
#include "allocation_peak.h"

#if defined(__GLIBC__)

#include <malloc.h>

#include <atomic>
#include <cerrno>

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* memory);
}

namespace {

std::atomic<long> live{0};
std::atomic<long> peak{0};

void count(long bytes) {
  const long now = live += bytes;
  long most = peak;
  while (now > most && !peak.compare_exchange_weak(most, now)) {
  }
}

long sizeOf(void* memory) { return static_cast<long>(malloc_usable_size(memory)); }

void* counted(void* memory) {
  count(sizeOf(memory));
  return memory;
}

}  // namespace

extern "C" {

void* malloc(std::size_t size) { return counted(__libc_malloc(size)); }

void* calloc(std::size_t n, std::size_t size) { return counted(__libc_calloc(n, size)); }

void* realloc(void* memory, std::size_t size) {
  count(-sizeOf(memory));
  return counted(__libc_realloc(memory, size));
}

void* memalign(std::size_t alignment, std::size_t size) {
  return counted(__libc_memalign(alignment, size));
}

void* aligned_alloc(std::size_t alignment, std::size_t size) { return memalign(alignment, size); }

int posix_memalign(void** memory, std::size_t alignment, std::size_t size) {
  *memory = memalign(alignment, size);
  return *memory != nullptr ? 0 : ENOMEM;
}

void free(void* memory) {
  count(-sizeOf(memory));
  __libc_free(memory);
}
}

namespace bench {

void AllocationPeak::start() {
  live = 0;
  peak = 0;
}

long AllocationPeak::stop() { return peak; }

}  // namespace bench

#else

namespace bench {

void AllocationPeak::start() {}

long AllocationPeak::stop() { return -1; }

}  // namespace bench

#endif
