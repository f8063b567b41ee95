// The one file of the front that is compiled with exceptions: the compiler then writes the tables
// that describe what is thrown. Nothing of Visual C++'s own runtime is needed: throwing means to
// raise a structured exception with those tables, which the host's runtime catches.
#include "visual_cxx/raise.h"

#include <cstddef>

#include "visual_cxx/host_runtime.h"

// The classes as the runtime of Visual C++ 2015 to 2022 lays them out: a table of the deleting
// destructor and what(), the text, and whether the text is to be freed. The runtimes compare the
// names of types.
namespace std {

class exception {
 public:
  explicit exception(const char* text) noexcept { copy(text); }
  exception(const char* constant, int) noexcept : text_(constant) {}
  exception(const exception& other) noexcept {
    if (other.isOwned_) {
      copy(other.text_);
    } else {
      text_ = other.text_;
    }
  }
  exception& operator=(const exception&) = delete;
  virtual ~exception() noexcept {
    if (isOwned_) {
      fisheyeHostFree(const_cast<char*>(text_));
    }
  }
  virtual const char* what() const noexcept {
    return text_ != nullptr ? text_ : "Unknown exception";
  }
  // Called by the deleting destructor.
  static void operator delete(void* block) noexcept { fisheyeHostFree(block); }

 private:
  void copy(const char* text) noexcept {
    const size_t bytes = __builtin_strlen(text) + 1;
    auto* const block = static_cast<char*>(fisheyeHostMalloc(bytes));
    if (block == nullptr) {
      return;
    }
    __builtin_memcpy(block, text, bytes);
    text_ = block;
    isOwned_ = true;
  }

  const char* text_ = nullptr;
  bool isOwned_ = false;
};

class runtime_error : public exception {
 public:
  explicit runtime_error(const char* text) noexcept : exception(text) {}
  runtime_error(const char* constant, int) noexcept : exception(constant, 0) {}
};

class bad_alloc : public exception {
 public:
  bad_alloc() noexcept : exception("bad allocation", 0) {}
};

static_assert(sizeof(exception) == 24, "as in the host's runtime");

}  // namespace std

extern "C" {
// The descriptors of types begin with the address of this table, which nobody calls through.
extern const void* const fisheyeTypeInfoTable[4] __asm__("??_7type_info@@6B@");
const void* const fisheyeTypeInfoTable[4] = {};

extern char __ImageBase;  // of this DLL; the addresses in the tables are relative to it

__declspec(dllimport) void __stdcall RaiseException(unsigned long code, unsigned long flags,
                                                    unsigned long count,
                                                    const unsigned long long* arguments) noexcept;

// What the compiler calls to throw, named by Visual C++.
[[noreturn]] void _CxxThrowException(void* object, void* description) {
  constexpr unsigned long kCxxException = 0xE06D7363;
  constexpr unsigned long kNotContinuable = 1;
  constexpr unsigned long long kVersion = 0x19930520;
  const unsigned long long arguments[] = {kVersion, reinterpret_cast<unsigned long long>(object),
                                          reinterpret_cast<unsigned long long>(description),
                                          reinterpret_cast<unsigned long long>(&__ImageBase)};
  RaiseException(kCxxException, kNotContinuable, 4, arguments);
  __builtin_trap();
}
}

namespace fisheye_calibration::visual_cxx {

void raiseBadAlloc() { throw std::bad_alloc(); }

void raiseRuntimeError(const char* text) { throw std::runtime_error(text); }

void raiseConstant(const char* text) { throw std::runtime_error(text, 0); }

}  // namespace fisheye_calibration::visual_cxx
