// The start of a host that Visual C++ would build, and the parts of its runtime that are linked
// statically.
#include "runtime.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>

#include "host.h"

#define SYSTEM extern "C" __declspec(dllimport)
SYSTEM char* GetCommandLineA();
SYSTEM void* RtlLookupFunctionEntry(unsigned long long, unsigned long long*, void*);
SYSTEM void* _get_heap_handle();
struct HeapEntry {
  void* data;
  unsigned long size;
  unsigned char overhead;
  unsigned char region;
  unsigned short flags;
  unsigned long long unused[2];
};
SYSTEM int HeapWalk(void*, HeapEntry*);

extern "C" const int _fltused = 0x9875;
extern "C" const void* const typeInfoTable[4] __asm__("??_7type_info@@6B@") = {};

void* operator new(std::size_t bytes) { return std::malloc(bytes); }
void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }

namespace std {

exception::exception(const exception& other) noexcept : text_(other.text_), isOwned_(false) {
  if (other.isOwned_) {
    const size_t bytes = strlen(other.text_) + 1;
    text_ = static_cast<char*>(memcpy(malloc(bytes), other.text_, bytes));
    isOwned_ = true;
  }
}
exception::~exception() noexcept {
  if (isOwned_) free(const_cast<char*>(text_));
}
const char* exception::what() const noexcept { return text_; }

}  // namespace std

extern "C" void brokenVector() {
  std::puts("FAILED: a vector's memory has no valid address before it");
  std::exit(1);
}

namespace host {
namespace {

int failures = 0;
int checks = 0;

}  // namespace

void check(bool holds, const char* what) {
  ++checks;
  if (!holds) ++failures;
  const char* const sign = holds ? "ok: " : "FAILED: ";
  char line[256];
  const std::size_t length = std::strlen(what);
  std::memcpy(line, sign, std::strlen(sign));
  std::memcpy(line + std::strlen(sign), what, length + 1);
  std::puts(line);
  std::fflush(nullptr);
}

Heap heapInUse() {
  const unsigned short kBusy = 4;
  Heap heap = {0, 0};
  HeapEntry entry = HeapEntry();
  while (HeapWalk(_get_heap_handle(), &entry)) {
    if (entry.flags & kBusy) {
      ++heap.blocks;
      heap.bytes += entry.size;
    }
  }
  return heap;
}

void checkBalance(const char* what, void (*call)()) {
  call();
  const Heap before = heapInUse();
  for (int i = 0; i < 10; ++i) call();
  const Heap after = heapInUse();
  check(before.blocks > 0 && before.blocks == after.blocks && before.bytes == after.bytes, what);
}

bool hasUnwindData(const void* function) {
  unsigned long long base = 0;
  return RtlLookupFunctionEntry(reinterpret_cast<unsigned long long>(function), &base, nullptr) !=
         nullptr;
}

}  // namespace host

// host.exe FILE writes the results of all functions; host.exe alone checks the rules.
extern "C" void mainCRTStartup() {
  const char* const line = GetCommandLineA();
  const char* file = nullptr;
  for (const char* c = line; *c != '\0'; ++c) {
    if (*c == ' ' && c[1] != ' ' && c[1] != '\0') file = c + 1;
  }
#if _ITERATOR_DEBUG_LEVEL
  (void)file;
  checkDebugBuild();
#else
  if (file != nullptr) {
    host::openResults(file);
    host::callAllFunctions();
    host::closeResults();
    std::exit(0);
  }
  checkUnwindData();
  checkFiller();
  checkRegisters();
  checkVectors();
  checkMemory();
  checkExceptions();
#endif
  std::puts(host::failures == 0 && host::checks > 0 ? "all checks passed" : "some checks failed");
  std::exit(host::failures == 0 && host::checks > 0 ? 0 : 1);
}
