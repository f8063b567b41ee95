// What the hosts compiled by clang use of the system and of Visual C++'s runtime.
#pragma once

#include <cstddef>

namespace host {

// Counts and prints a check of the host.
void check(bool holds, const char* what);

// Blocks and bytes in use on the heap of the host's C runtime.
struct Heap {
  std::size_t blocks;
  std::size_t bytes;
};
Heap heapInUse();

// Runs `call` once for what it keeps, then ten times more: what is in use must not change.
void checkBalance(const char* what, void (*call)());

// Whether the tables by which exceptions pass know the function.
bool hasUnwindData(const void* function);

}  // namespace host

// The parts of this test that need the release build's vectors or the debug build's.
void checkFiller();
void checkVectors();
void checkExceptions();
void checkMemory();
void checkRegisters();
void checkUnwindData();
void checkDebugBuild();
