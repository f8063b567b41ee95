// detect for several frames: folders, videos, devices and streams.
#pragma once

#include <filesystem>
#include <string>

#include "commands/command.h"
#include "commands/target_options.h"

namespace fisheye_calibration::program {

// Writes the points of each frame that shows the target to a file of its own in the folder
// `output`: "b.csv" for the picture b.png, "frame-000012.csv" for a frame of a video; likewise the
// overlays in the folder that the target's options name. Other frames are named. An empty
// `frameLimit` means all frames.
int detectInSource(const std::string& text, const TargetOptions& target,
                   const std::filesystem::path& output, const std::string& frameLimit,
                   const Streams& streams);

}  // namespace fisheye_calibration::program
