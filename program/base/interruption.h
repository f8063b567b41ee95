// Lets the user end an endless run with Ctrl+C and keep what it has made.
#pragma once

namespace fisheye_calibration::program {

// While it exists, the first interruption of the process is only noted; a second one ends it. A
// process that ignores interruptions goes on doing so. One at a time.
class Interruption {
 public:
  Interruption();
  Interruption(const Interruption&) = delete;
  Interruption& operator=(const Interruption&) = delete;
  ~Interruption();

  bool requested() const;

 private:
  void (*before_)(int) = nullptr;  // what interruptions did before
};

}  // namespace fisheye_calibration::program
