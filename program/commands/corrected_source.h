// correct for what moves: videos, devices and streams, and a folder's pictures as a video.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "commands/command.h"
#include "commands/corrected_view.h"

namespace fisheye_calibration::program {

// As given on the command line; empty if not given.
struct SourceOptions {
  std::string source;
  std::filesystem::path output;  // a video by its name, otherwise a folder
  std::filesystem::path mask;
  std::string frames;  // take no more than these
  std::string rate;    // of the video, frames per second
};

// True if there is one frame argument that is no picture or folder, or is a folder while `output`
// is a video. Fails as bad input if something of the kind is one of several arguments.
bool isMovingSource(const std::vector<std::filesystem::path>& frames,
                    const std::filesystem::path& output);

// Corrects frame after frame. Broken ones are named and left out.
int correctSource(const SourceOptions& options, const Renderer& renderer, const Streams& streams);

}  // namespace fisheye_calibration::program
