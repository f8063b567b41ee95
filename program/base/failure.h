// How the program ends if it cannot do what it was asked to: one line of text and an exit code.
#pragma once

#include <stdexcept>
#include <string>

namespace fisheye_calibration::program {

enum ExitCode : int {
  kExitOk = 0,
  kExitJobFailed = 1,  // the job failed, or its result is not to be trusted
  kExitBadInput = 2    // bad usage or bad input
};

class Failure : public std::runtime_error {
 public:
  Failure(ExitCode code, const std::string& message) : std::runtime_error(message), code_(code) {}
  ExitCode code() const { return code_; }

 private:
  ExitCode code_;
};

[[noreturn]] inline void failBadInput(const std::string& message) {
  throw Failure(kExitBadInput, message);
}

[[noreturn]] inline void failJob(const std::string& message) {
  throw Failure(kExitJobFailed, message);
}

}  // namespace fisheye_calibration::program
