// What kinds of videos there are: the extensions of their files, and their codecs.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace fisheye_calibration::program {

// True if the path's extension is that of a video. Others are not tried: some decoders would take
// any text for a film.
bool hasVideoName(const std::filesystem::path& path);

// True if files of this extension state how many frames they hold; others state how long they last,
// from which the number is estimated.
bool statesFrameCount(const std::filesystem::path& path);

// True for the extensions of ISO base media files, such as .mp4 and .mov.
bool isIsoMedia(const std::filesystem::path& path);

// The name of the codec that a four-letter code stands for, whatever its case: "H.264". An unknown
// code is its own name.
std::string codecName(const std::string& code);

// The codes to try for a video to be written, of which that of the original's codec comes first if
// it is there. Empty if no such file can be written. Codecs that do not suit the kind of file are
// left out, and so are those that take long to encode unless the original has them.
std::vector<std::string> codesFor(const std::filesystem::path& path, const std::string& original);

}  // namespace fisheye_calibration::program
