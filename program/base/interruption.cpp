#include "base/interruption.h"

#include <csignal>

namespace fisheye_calibration::program {
namespace {

// NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables): all that a handler may set
volatile std::sig_atomic_t interrupted = 0;

extern "C" void noteInterruption(int signal) {
  interrupted = 1;
  std::signal(signal, SIG_DFL);
}

}  // namespace

Interruption::Interruption() {
  interrupted = 0;
  before_ = std::signal(SIGINT, noteInterruption);
  if (before_ == SIG_IGN) {  // as in the background of a script
    std::signal(SIGINT, SIG_IGN);
  }
}

Interruption::~Interruption() { std::signal(SIGINT, before_ == SIG_ERR ? SIG_DFL : before_); }

bool Interruption::requested() const { return interrupted != 0; }

}  // namespace fisheye_calibration::program
