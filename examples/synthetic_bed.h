// Cameras over a tiled bed whose parameters are known exactly: the points that they see, their
// pictures, and how far a calibration is off the truth.
#pragma once

#include <fisheye_calibration.h>

#include <string>

// Tiled like a chessboard. The target's points are the corners of the tiles; the first lies at the
// world's origin.
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

// Standard deviation of the measured points in x and in y, pixels.
constexpr double kNoise = 0.1;

// A rotation vector, radians.
struct Rotation {
  float Rx;
  float Ry;
  float Rz;
};

// The camera with its lens at (Xw, Yw), `height` above the bed, turned by `rotation` from looking
// straight down.
FishEyeCalibrationParam mounted(FishEyeCalibrationParam camera, double Xw, double Yw, double height,
                                const Rotation& rotation);

// Writes the points within the camera's reach, measured with noise; PointId counts row by row over
// the whole bed. False if the file cannot be written.
bool writePoints(const std::string& path, const KnownCamera& camera, const Bed& bed);

// Writes the camera's picture as PGM: the tiles, black and white, in a grey room.
bool writeFrame(const std::string& path, const KnownCamera& camera, const Bed& bed);

// Prints truth and result side by side. False if they put a point that the camera can measure too
// far apart.
bool compare(const std::string& iniPath, const KnownCamera& camera, const Bed& bed);
