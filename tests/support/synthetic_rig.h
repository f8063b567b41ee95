// A known camera over a known bed: the truth that a calibration has to find again.
#pragma once

#include <cstdint>
#include <opencv2/core.hpp>
#include <random>
#include <vector>

#include "fisheye_calibration.h"
#include "support/plain_solver.h"

namespace support {

// Seeded generator whose numbers are the same with every standard library.
class Random {
 public:
  explicit Random(std::uint64_t seed) : engine_(seed) {}

  double uniform(double low, double high);
  double normal(double sigma);  // mean 0

 private:
  std::mt19937_64 engine_;  // its sequence is fixed by the language, its distributions' are not
};

struct RigCamera {
  cv::Size imageSize{1280, 960};
  double fx = 410;
  double fy = 408;
  double cx = 645;
  double cy = 474;
  double skew = 0;
  double k0 = 0.02;
  double k1 = -0.03;
};

// Rows of points `spacing` apart, the first at (left, top), all at Z = 0.
struct Bed {
  int columns = 9;
  int rows = 7;
  double spacing = 40;  // world units
  double left = 40;
  double top = 40;

  cv::Point3d centre() const;
  std::vector<cv::Point3d> points() const;  // row by row
};

struct RigPose {
  cv::Vec3d rotation;     // rotation vector, world to camera
  cv::Vec3d translation;  // world units
};

// The camera looks at the bed's centre from `distance`, off the axis by (offsetX, offsetY) world
// units, tilted about x, then about y, then turned about z (radians).
RigPose poseOver(const Bed& bed, double distance, double tiltX, double tiltY, double turn,
                 double offsetX = 0, double offsetY = 0);

struct RigView {
  RigPose pose;
  std::vector<cv::Point3d> objectPoints;
  std::vector<cv::Point2d> imagePoints;

  plain::View plainView() const;
  std::vector<cv::Point3f> objectPoints32() const;
  std::vector<cv::Point2f> imagePoints32() const;
};

// The camera's view of the bed, with normal noise of `sigma` pixels on each coordinate.
RigView seen(const RigCamera& camera, const Bed& bed, const RigPose& pose, double sigma = 0,
             std::uint64_t seed = 1);

// The coordinates rounded to 32-bit float.
RigView rounded(RigView view);

// The records that a host would pass, with ids from 1.
std::vector<CalibrationPoint> calibrationPoints(const RigView& view);

struct Rig {
  RigCamera camera;
  Bed bed;
  std::vector<RigView> views;

  std::vector<plain::View> plainViews() const;
};

// A random camera with `viewCount` well-spread tilted views, every point inside the circle of
// radius 0.95 max(width, height)/2 around the image's centre.
Rig randomRig(std::uint64_t seed, int viewCount, double sigma = 0);

plain::Intrinsics plainIntrinsics(const RigCamera& camera);  // all but skew estimated
plain::Pose plainPose(const RigPose& pose);

}  // namespace support
