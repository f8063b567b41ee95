// Memory that runs out. A test program that uses this compiles limited_memory.cpp, which takes the
// place of the C library's allocation where that can be, else of the C++ library's.
#pragma once

namespace support {

// Allocations of this thread that still succeed; negative: all of them.
extern thread_local int allocationsLeft;

// Blocks of memory, of all threads, that have been allocated and not freed; always 0 where only the
// C++ library's allocation is replaced.
long blocksInUse();

// Lets `count` allocations of the action succeed. True when they were used up: it may have wanted
// more. An exception passes through.
template <typename Action>
bool runsOutOfMemory(int count, Action action) {
  struct Unlimited {
    ~Unlimited() { allocationsLeft = -1; }
  } const afterwards;
  allocationsLeft = count;
  action();
  return allocationsLeft == 0;
}

}  // namespace support
