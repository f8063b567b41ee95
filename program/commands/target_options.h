// The options for finding the target in a picture, which several commands share, and the search
// itself.
#pragma once

#include <filesystem>
#include <iosfwd>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "base/failure.h"
#include "commands/command.h"
#include "detection/target_detection.h"
#include "detection/target_places.h"
#include "files/output_files.h"
#include "fisheye_calibration.h"

namespace CLI {
class App;
}

namespace fisheye_calibration::program {

// As given on the command line; empty if not given.
struct TargetOptions {
  std::string chessboard;  // "8x6" inner corners
  std::string charuco;     // the same, with markers
  std::string circles;     // "11x4"
  bool asymmetric = false;
  std::string markerBits;  // empty: 5
  std::string marker;      // side of a marker, world units; empty: 0.7 of the spacing
  std::string spacing;
  std::string origin;  // empty: 0,0
  std::string firstId = "1";
  std::filesystem::path overlay;

  bool anyGiven() const {
    return !chessboard.empty() || !charuco.empty() || !circles.empty() || asymmetric ||
           !marker.empty() || !markerBits.empty() || !spacing.empty() || !origin.empty() ||
           !overlay.empty();
  }
};

// Those that describe the target.
void addTargetKindOptions(CLI::App& command, TargetOptions& target);
// The same, and those for looking for it in a picture.
void addTargetOptions(CLI::App& command, TargetOptions& target);

Target parseTarget(const TargetOptions& options);
World parseWorld(const TargetOptions& options, int pointCount);

struct DetectedTarget {
  cv::Mat grey;
  std::vector<CalibrationPoint> points;
  std::string summary;  // what was found and how
};

// There is no such target in a picture that can be searched.
class NoTarget : public Failure {
 public:
  using Failure::Failure;
};

// Finds the target in a grey picture and numbers its points. `name` names the picture in messages.
// Fails as NoTarget if it is not there.
DetectedTarget detectIn(const cv::Mat& grey, const std::string& name, const TargetOptions& options,
                        std::ostream& progress);

// The picture with the numbered points.
cv::Mat overlayOf(const DetectedTarget& found, const TargetOptions& options);

// Reads the picture, finds the target and numbers its points; stages the overlay if one is wanted.
DetectedTarget detectInPicture(const std::filesystem::path& image, const TargetOptions& options,
                               OutputFiles& files, const Streams& streams);

}  // namespace fisheye_calibration::program
