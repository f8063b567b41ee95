// Reads a whole file.
#pragma once

#include <cstddef>
#include <filesystem>
#include <iosfwd>
#include <string>

namespace fisheye_calibration::program {

// Files of text are far smaller, and pictures that come through pipes are, too.
constexpr std::size_t kLongestText = std::size_t{1} << 26;

// For pictures in files.
constexpr std::size_t kLongestPicture = (std::size_t{1} << 31) - 1;

// Fails as bad input if there is no such file, if it cannot be read or if it is longer than
// `longest` bytes; of devices and pipes, which may have no end, no more than kLongestText is read.
std::string readFile(const std::filesystem::path& path, std::size_t longest = kLongestText);

// The rest of a stream, with the same limit; `name` is for messages.
std::string readStream(std::istream& stream, const std::string& name,
                       std::size_t longest = kLongestText);

}  // namespace fisheye_calibration::program
