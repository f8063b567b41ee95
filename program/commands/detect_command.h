// detect: finds the target in a picture and writes its numbered points.
#pragma once

#include <iosfwd>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "detection/target_detection.h"
#include "files/output_files.h"
#include "fisheye_calibration.h"

namespace fisheye_calibration::program {

// As given on the command line; empty where not given.
struct TargetOptions {
  std::string chessboard;  // "8x6" inner corners
  std::string circles;     // "11x4"
  bool asymmetric = false;
  std::string spacing;
  std::string origin = "0,0";
  std::string firstId = "1";
  std::string overlay;  // path

  bool anyGiven() const { return !chessboard.empty() || !circles.empty() || !spacing.empty(); }
};

struct DetectOptions {
  std::string image;
  TargetOptions target;
  std::string output;
};

struct DetectedTarget {
  cv::Mat grey;
  std::vector<CalibrationPoint> points;
  std::string summary;  // what was found and how
};

// Reads the picture, finds the target, numbers the points; stages the overlay if one is wanted.
DetectedTarget detectInPicture(const std::string& image, const TargetOptions& options,
                               OutputFiles& files, std::ostream& messages);

int runDetect(const DetectOptions& options, std::ostream& out, std::ostream& messages);

}  // namespace fisheye_calibration::program
