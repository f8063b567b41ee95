// A run over the frames of a source: which of them are taken, and what the user is told meanwhile.
#pragma once

#include <functional>
#include <iosfwd>
#include <string>

#include "base/interruption.h"
#include "commands/command.h"
#include "sources/frame_source.h"

namespace fisheye_calibration::program {

// --frames; nothing given means no limit.
int parseFrameLimit(const std::string& text);

struct SourceTally {
  int seen = 0;           // frames that the source yielded, broken ones included
  int done = 0;           // frames that the work succeeded for
  int broken = 0;         // frames that could not be read or that the work failed for
  double seconds = 0;     // for all of it
  bool cutShort = false;  // the device or stream has gone before the run was over
};

// Does `work` on each frame that can be read, with its number from 1, until the source ends,
// `limit` frames have come, or the user interrupts. It returns an empty text if the frame counts as
// done, otherwise what to tell the user; failures are reported, too, and the run goes on, unless
// they are hopeless. A device or a stream ends well with an interruption; any other source fails.
SourceTally runOver(FrameSource& source, int limit, const Interruption& interruption,
                    const Streams& streams,
                    const std::function<std::string(const SourceFrame&, int number)>& work);

// What the command exits with. Says in `messages` if the source `name` has gone too early.
int exitCodeOf(const SourceTally& tally, const std::string& name, std::ostream& messages);

// "90 of 100 frames", of all that the source should have had; "90 frames" if none is missing and
// nothing states how many there are.
std::string shareDone(const SourceTally& tally, const FrameSource& source, int limit);

}  // namespace fisheye_calibration::program
