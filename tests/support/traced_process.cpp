#include "support/traced_process.h"

#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstddef>
#include <optional>

namespace support {
namespace {

struct Interference {
  std::size_t call;          // its index
  std::optional<int> error;  // without one the process is killed
};

class TracedChild {
 public:
  explicit TracedChild(const std::function<void()>& action) : process_(::fork()) {
    if (process_ != 0) return;
    if (::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) ::_exit(1);
    ::raise(SIGSTOP);
    action();
    ::syscall(SYS_getppid);  // marks the end of the action
    ::_exit(0);
  }

  // Waits for the first stop. False if tracing is not allowed.
  bool begin() {
    int status = 0;
    if (process_ < 0 || ::waitpid(process_, &status, 0) != process_ || !WIFSTOPPED(status)) {
      return false;
    }
    return ::ptrace(PTRACE_SETOPTIONS, process_, nullptr,
                    PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL) == 0;
  }

  // Goes on to the next begin or end of a system call. False if the process has ended.
  bool advance() {
    long signal = 0;
    while (true) {
      int status = 0;
      if (::ptrace(PTRACE_SYSCALL, process_, nullptr, signal) != 0 ||
          ::waitpid(process_, &status, 0) != process_ || !WIFSTOPPED(status)) {
        return false;
      }
      if (WSTOPSIG(status) == (SIGTRAP | 0x80)) return true;
      signal = WSTOPSIG(status);
    }
  }

  user_regs_struct registers() const {
    user_regs_struct registers{};
    ::ptrace(PTRACE_GETREGS, process_, nullptr, &registers);
    return registers;
  }

  void setRegisters(const user_regs_struct& registers) const {
    ::ptrace(PTRACE_SETREGS, process_, nullptr, &registers);
  }

  void kill() const {
    ::kill(process_, SIGKILL);
    int status = 0;
    ::waitpid(process_, &status, 0);
  }

 private:
  pid_t process_;
};

// The call that has begun, with its result.
std::optional<SystemCall> finished(TracedChild& child, const std::optional<int>& error) {
  user_regs_struct begun = child.registers();
  const auto word = [](unsigned long long value) { return static_cast<long>(value); };
  SystemCall call{word(begun.orig_rax),
                  {word(begun.rdi), word(begun.rsi), word(begun.rdx), word(begun.r10),
                   word(begun.r8), word(begun.r9)},
                  0};
  if (error) {  // a call that there is not
    begun.orig_rax = static_cast<unsigned long long>(-1);
    child.setRegisters(begun);
  }
  if (!child.advance()) return std::nullopt;
  user_regs_struct ended = child.registers();
  if (error) {
    ended.rax = static_cast<unsigned long long>(-*error);
    child.setRegisters(ended);
  }
  call.result = word(ended.rax);
  return call;
}

Traced trace(const std::function<void()>& action, const std::optional<Interference>& interference) {
  Traced result;
  TracedChild child(action);
  if (!child.begin()) return result;
  result.possible = true;
  while (child.advance()) {
    const bool interferes = interference && interference->call == result.calls.size();
    if (interferes && !interference->error) {
      child.kill();
      return result;
    }
    const auto call = finished(child, interferes ? interference->error : std::nullopt);
    if (!call) break;
    if (call->number == SYS_getppid) {
      result.ended = true;
      child.kill();
      return result;
    }
    result.calls.push_back(*call);
  }
  return result;
}

}  // namespace

Traced traced(const std::function<void()>& action) { return trace(action, std::nullopt); }

Traced tracedAndKilled(const std::function<void()>& action, std::size_t last) {
  return trace(action, Interference{last, std::nullopt});
}

Traced tracedWithFailure(const std::function<void()>& action, std::size_t failing, int error) {
  return trace(action, Interference{failing, error});
}

}  // namespace support
