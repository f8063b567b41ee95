// Numbered square markers (ArUco), by the image library. Its module for them is optional.
#pragma once

#include <array>
#include <opencv2/core.hpp>
#include <vector>

namespace fisheye_calibration::program {

constexpr int kLargestMarkerCount = 1000;

// False if the program was built without the module; then the functions below must not be called.
bool markersAvailable();

struct Marker {
  int id = 0;
  std::array<cv::Point2f, 4> corners;  // clockwise from the marker's own top left
};

// Markers of `bits` x `bits` (4 to 7) modules from the smallest dictionary that has `count` of
// them. Numbers from `count` on can occur.
std::vector<Marker> findMarkers(const cv::Mat& grey, int bits, int count);

// One pixel for each module, 0 or 255, with the marker's black border: `bits` + 2 on each side.
cv::Mat markerPattern(int bits, int id);

}  // namespace fisheye_calibration::program
