// The options for finding the target in a picture, which several commands share, and the search
// itself.
#pragma once

#include <filesystem>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "commands/command.h"
#include "files/output_files.h"
#include "fisheye_calibration.h"

namespace CLI {
class App;
}

namespace fisheye_calibration::program {

// As given on the command line; empty if not given.
struct TargetOptions {
  std::string chessboard;  // "8x6" inner corners
  std::string circles;     // "11x4"
  bool asymmetric = false;
  std::string spacing;
  std::string origin = "0,0";
  std::string firstId = "1";
  std::filesystem::path overlay;

  bool anyGiven() const {
    return !chessboard.empty() || !circles.empty() || !spacing.empty() || !overlay.empty();
  }
};

void addTargetOptions(CLI::App& command, TargetOptions& target);

struct DetectedTarget {
  cv::Mat grey;
  std::vector<CalibrationPoint> points;
  std::string summary;  // what was found and how
};

// Reads the picture, finds the target and numbers its points; stages the overlay if one is wanted.
DetectedTarget detectInPicture(const std::filesystem::path& image, const TargetOptions& options,
                               OutputFiles& files, const Streams& streams);

}  // namespace fisheye_calibration::program
