// The options of `simulate`, and its kinds of work.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "commands/command.h"
#include "commands/target_options.h"

namespace fisheye_calibration::program {

// As given on the command line; empty if not given.
struct SimulateOptions {
  std::filesystem::path camera;
  bool force = false;
  std::string size;
  std::filesystem::path bedPicture;
  std::string bed;  // the area
  TargetOptions target;
  std::string height;
  std::string noise;
  std::string blur;
  std::string vignetting;
  std::string gradient;
  std::string seed = "1";
  std::filesystem::path output;
  std::filesystem::path truth;

  std::filesystem::path machine;
  std::filesystem::path frames;
  std::vector<std::string> scenes;
  std::string serve;
  std::string rate = "15";

  std::filesystem::path compare;
  std::filesystem::path truthCamera;
  std::string tolerance = "0.5";
};

// One frame of a camera whose parameter file is given.
int simulateFrame(const SimulateOptions& options, const Streams& streams);

// The frames of a machine, as files or served.
int simulateMachine(const SimulateOptions& options, const Streams& streams);

// How far one camera is off another, the true one.
int compareWithTruth(const SimulateOptions& options, const Streams& streams);

std::uint64_t seedOf(const SimulateOptions& options);

}  // namespace fisheye_calibration::program
