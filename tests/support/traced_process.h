// A process whose system calls are counted, fail, or are its last (Linux on x86-64).
#pragma once

#include <functional>
#include <vector>

namespace support {

struct SystemCall {
  long number;  // such as SYS_write
  long arguments[6];
  long result;  // -errno for a failure
};

// What happened to the process that ran an action.
struct Traced {
  bool possible = false;          // false: this system does not let processes be traced
  bool ended = false;             // by itself, after its action
  std::vector<SystemCall> calls;  // those of the action
};

// Runs the action in a process of its own.
Traced traced(const std::function<void()>& action);

// The same; the process is killed before it makes the call of that index, the first being 0.
Traced tracedAndKilled(const std::function<void()>& action, std::size_t last);

// The same; the call of that index does nothing and fails.
Traced tracedWithFailure(const std::function<void()>& action, std::size_t failing, int error);

}  // namespace support
