// The raw frame that a camera sees of pictures on planes.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "base/size.h"
#include "fisheye_calibration.h"
#include "simulation/placed_picture.h"

namespace fisheye_calibration::program {

// The rays at the corners of a camera's pixels. They take most of the time of a frame and depend on
// the lens only.
class CornerRays {
 public:
  CornerRays(const FishEyeCalibrationParam& camera, const Size& size);

  const Size& size() const { return size_; }

  // Through the corner (x - 1/2, y - 1/2); not a number where there is none.
  cv::Point2d at(int x, int y) const { return rays_(y, x); }

 private:
  Size size_;
  cv::Mat_<cv::Point2d> rays_;
};

// A picture and the camera as seen from its plane: a pose that takes points (x, y, 0) of the plane
// to the camera's frame.
struct SeenPicture {
  FishEyeCalibrationParam camera;
  PlacedPicture picture;
};

// Each pixel is the mean of what lies within its edges on the plane: of 2 x 2 to 4 x 4 samples, so
// many that they are at most one pixel of the picture apart. Where a pixel covers more than four
// pixels of the picture, the samples are of the picture halved until it covers no more, and at the
// edges of a picture they are 4 x 4. Within a pixel, positions on the plane are interpolated
// linearly between those of its corners, which are exact.
//
// Earlier pictures cover later ones; where there is none, the frame has the grey level
// `background`. It has three channels if a picture has, otherwise one.
cv::Mat rawFrame(const CornerRays& rays, const std::vector<SeenPicture>& pictures, int background);

}  // namespace fisheye_calibration::program
