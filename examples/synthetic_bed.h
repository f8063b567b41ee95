// Cameras that are known exactly over a tiled bed: the points that they see, their pictures, and
// how far a calibration ended up from the truth.
#pragma once

#include <fisheye_calibration.h>

#include <string>

// Tiles like a chessboard; the target's points are the tiles' corners, from the world's origin on.
struct Bed {
  int columns;  // of points
  int rows;
  float spacing;  // mm
};

struct KnownCamera {
  FishEyeCalibrationParam param;  // lens and pose; the other fields are not used
  int width;                      // of the image, pixels
  int height;
  double reach;   // points are measured up to this distance from the image's centre, pixels
  unsigned seed;  // of the measurement's noise
};

// How badly the points are measured: standard deviation in x and in y, pixels.
constexpr double kNoise = 0.1;

// Sets the pose of a camera with its lens at (Xw, Yw), `height` above the bed, turned out of the
// straight look down by the rotation vector (Rx, Ry, Rz).
void mount(FishEyeCalibrationParam& camera, double Xw, double Yw, double height, float Rx, float Ry,
           float Rz);

// The points within the camera's reach, measured with noise; PointId counts row by row over the
// whole bed. False if the file cannot be written.
bool writePoints(const std::string& path, const KnownCamera& camera, const Bed& bed);

// The camera's picture, PGM: the tiles, black and white, in a grey room.
bool writeFrame(const std::string& path, const KnownCamera& camera, const Bed& bed);

// Prints truth beside result. False if they put a point that the camera can measure too far apart.
bool compare(const std::string& iniPath, const KnownCamera& camera, const Bed& bed);
