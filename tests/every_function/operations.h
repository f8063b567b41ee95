// Every function of the C++ and of the C interface, called once on a small scene: what is tried on
// all of them goes over this list.
#pragma once

#include <string>
#include <vector>

#include "fisheye_calibration.h"
#include "fisheye_calibration_c.h"
#include "stitching/rigs.h"

namespace every_function {

// What the calls read. Many may read it at once.
struct Inputs {
  Inputs();

  std::vector<CalibrationPoint> points;  // of one view
  std::vector<CalibrationPoint> tilted;  // the same target seen again
  FishEyeCalibrationParam camera{};      // calibrated with them
  DualFishEyeCalibrationParam dual{};
  rigs::Rig rig;  // two cameras with frames of 24 bits
  fcal_solution solution{};
};

// What a call may write.
struct Outputs {
  bool result = false;
  fcal_status status = -1;
  std::vector<CalibrationPoint> points;
  std::vector<CalibrationPoint> others;
  std::vector<unsigned char> pixels;
  std::vector<unsigned char> mask;
  FishEyeCalibrationParam camera{};
  DualFishEyeCalibrationParam dual{};
  std::vector<double> numbers;
  std::vector<float> coordinates;
  ImageLong width = -7;
  ImageLong height = -7;
  int count = -7;
  std::vector<fcal_solution> solutions;
  fcal_views_result views{};
};

// Of the kind and size that every operation can be called with.
Outputs freshOutputs(const Inputs& inputs);

// All of it that has a meaning, byte by byte; without the result and the status.
std::string bytesOf(const Outputs& outputs);
std::string bytesOf(const Inputs& inputs);

struct Operation {
  std::string name;
  void (*call)(const Inputs& inputs, Outputs& outputs);
  bool isC = false;
};

// Without those of files and windows.
const std::vector<Operation>& operations();

}  // namespace every_function
