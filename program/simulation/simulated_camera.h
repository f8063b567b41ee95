// Cameras whose lens and place are known exactly.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "base/size.h"
#include "fisheye_calibration.h"
#include "simulation/random_numbers.h"

namespace fisheye_calibration::program {

// What a maker says of a camera over a bed; X runs right and Y down in its picture.
struct NominalCamera {
  Size size;
  double fx = 0;
  double fy = 0;
  cv::Point2d centre;  // the principal point, pixels
  double k0 = 0;
  double k1 = 0;
  cv::Point2d over;   // of the bed, world units
  double height = 0;  // of the lens above it
  cv::Vec3d tilt;     // rotation vector, degrees, from looking straight down
};

// By how much a camera differs at most from the nominal one, to either side.
struct CameraVariation {
  double focalLength = 0;  // share of it
  double centre = 0;       // pixels
  double k = 0;            // of k0 and k1
  double place = 0;        // world units, in each direction
  double tilt = 0;         // degrees, about each axis
};

NominalCamera varied(const NominalCamera& camera, const CameraVariation& by, RandomNumbers& random);

// Lens and pose, and a second correction by which a picture of the size `corrected` shows the bed.
struct TrueCamera {
  FishEyeCalibrationParam param{};
  Size image;
  Size corrected;
};
TrueCamera trueCamera(const NominalCamera& camera, const cv::Rect2d& bed);

// Whether some part of the bed is in the camera's picture.
bool seesBed(const TrueCamera& camera, const cv::Rect2d& bed);

// How far the lens is off the plane of the bed.
double distanceFromBed(const FishEyeCalibrationParam& camera);

// Where a plane lies: turned by `tilt` (a rotation vector, degrees) about the point `centre` of it,
// and moved in X, in Y and towards the camera.
struct PlanePose {
  cv::Point2d centre;
  cv::Vec3d tilt;
  cv::Point2d move;
  double height = 0;
};

// The camera as seen from the plane: a record whose bed is the plane. Both sides of the bed on
// which a camera can be are allowed for. Values are rounded to the record's 32 bits.
FishEyeCalibrationParam seenFromPlane(const FishEyeCalibrationParam& camera,
                                      const PlanePose& plane);

// The points with the positions at which the camera sees them; those outside its picture are left
// out. Xw and Yw are in the plane.
std::vector<CalibrationPoint> seenPoints(const FishEyeCalibrationParam& camera,
                                         const std::vector<CalibrationPoint>& points,
                                         const Size& image);

}  // namespace fisheye_calibration::program
