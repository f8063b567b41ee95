// What the program notes in a camera file beside the record: a section of its own, which the
// library leaves alone and does not read.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/size.h"

namespace fisheye_calibration::program {

struct CameraNotes {
  // The notes in the file are about another record, which somebody has replaced since; nothing of
  // them is here.
  bool outdated = false;
  std::optional<Size> image;      // of the raw picture
  std::optional<Size> corrected;  // for which the second correction was made
  // Bounds on the error on the bed, world units.
  std::optional<double> insideTarget;
  std::optional<double> onBed;
  // Covariance of fx, fy, u0, v0, k0, k1, row by row; 36 numbers.
  std::optional<std::vector<double>> lensCovariance;

  bool operator==(const CameraNotes&) const = default;
};

// The text of a camera file with these notes in place of those in it, and with a digest of its
// record, by which a record that is replaced later is recognised.
std::string withNotes(std::string_view text, const CameraNotes& notes);

// Notes that are missing, incomplete or not numbers are left out.
CameraNotes notesIn(std::string_view text);
CameraNotes loadNotes(const std::filesystem::path& path);

}  // namespace fisheye_calibration::program
