// Two cameras over one bed: the input of a stitch, and the geometry that the library stitches by.
#pragma once

#include <array>
#include <cstddef>
#include <opencv2/core.hpp>
#include <optional>
#include <string>
#include <vector>

#include "base/frame_buffer.h"
#include "base/size.h"
#include "fisheye_calibration.h"

namespace fisheye_calibration::program {

struct StitchCamera {
  std::string cameraName;  // names of the files, for messages
  std::string pointsName;
  FrameBuffer frame;
  FishEyeCalibrationParam param{};
  std::optional<Size> corrected;  // of the view, if the camera's file notes it
  std::vector<CalibrationPoint> points;

  // The views that are stitched have twice the frame's size.
  Size viewSize() const { return {2 * frame.size.width, 2 * frame.size.height}; }
};

struct StitchPair {
  StitchCamera left;   // the first camera, whose view gives the canvas its scale
  StitchCamera right;  // the second, aligned to it
};

struct SharedPoints {
  std::vector<CalibrationPoint> left;  // element i of both is the same point of the target
  std::vector<CalibrationPoint> right;

  bool paired() const { return left.size() == right.size(); }
};

// As the library pairs them, with the range of ids that its stitching uses.
SharedPoints sharedPoints(const StitchPair& pair);

// The shared points that the library aligns the views by: those nearest to the corners of the box
// around the left camera's shared points. At least one point must be shared.
std::array<std::size_t, 4> cornerPoints(const SharedPoints& shared);

// Left view -> right view, picture positions, through the four corner points. Like the library, it
// centres the right camera's points on the left view's size.
cv::Matx33d viewTransform(const StitchPair& pair, const SharedPoints& shared);

cv::Point2d applied(const cv::Matx33d& transform, cv::Point2d point);

}  // namespace fisheye_calibration::program
