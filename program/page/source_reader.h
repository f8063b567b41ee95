// Reads a source in a thread of its own and keeps its newest frame.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "page/frame_slot.h"
#include "sources/frame_source.h"

namespace fisheye_calibration::program {

using SourceOpener = std::function<std::unique_ptr<FrameSource>(const std::string&)>;

struct ReaderEvents {
  std::function<void()> live;                    // a frame has come after none
  std::function<void(const std::string&)> lost;  // why there is none
};

// Waits between attempts to open a source: 0.5, 1, 2, 4 and then always 5 seconds.
std::chrono::milliseconds pauseBeforeAttempt(int failures);

// A picture stays there and is repeated, the pictures of a folder are shown one after the other,
// and both and videos begin again at their end. Devices and streams that end are opened again.
class SourceReader {
 public:
  SourceReader(std::string text, SourceOpener open, std::shared_ptr<FrameSlot> slot,
               ReaderEvents events);
  SourceReader(const SourceReader&) = delete;
  SourceReader& operator=(const SourceReader&) = delete;
  // Ends the thread. If it hangs in a device that does not answer, it is left behind; it then
  // touches nothing but the slot, which it shares.
  ~SourceReader();

 private:
  struct Shared;
  std::shared_ptr<Shared> shared_;
};

}  // namespace fisheye_calibration::program
