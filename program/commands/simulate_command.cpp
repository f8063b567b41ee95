#include "commands/simulate_command.h"

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>

#include "base/failure.h"
#include "base/text.h"
#include "commands/declared_options.h"
#include "commands/simulate_options.h"

namespace fisheye_calibration::program {
namespace {

enum class Work { kFrame, kMachine, kComparison };

bool fits(const std::string& option, Work work) {
  const auto isOneOf = [&](std::initializer_list<const char*> options) {
    return std::find(options.begin(), options.end(), option) != options.end();
  };
  if (isOneOf({"--quiet", "--verbose"})) {
    return true;
  }
  if (isOneOf({"--machine", "--frames", "--scene", "--serve", "--rate"})) {
    return work == Work::kMachine;
  }
  if (isOneOf({"--compare", "--truth-camera", "--tolerance"})) {
    return work == Work::kComparison;
  }
  // What is left is for frames; some of it is for others, too.
  return work == Work::kFrame || (work == Work::kMachine && option == "--seed") ||
         (work == Work::kComparison && isOneOf({"--bed", "--force"}));
}

void refuseOthers(const CLI::App& command, Work work) {
  for (const std::string& option : givenOptions(command)) {
    if (!fits(option, work)) {
      std::string reason = ": does not go with ";
      reason += work == Work::kFrame ? "-o" : work == Work::kMachine ? "--machine" : "--compare";
      failBadInput(option + reason);
    }
  }
}

int run(const SimulateOptions& options, const CLI::App& command, const Streams& streams) {
  const int kinds = (options.output.empty() ? 0 : 1) + (options.machine.empty() ? 0 : 1) +
                    (options.compare.empty() ? 0 : 1);
  if (kinds != 1) {
    failBadInput(
        "simulate: give --camera and -o for a frame, --machine with --frames or --serve for a "
        "machine, or --compare with --truth-camera");
  }
  if (!options.machine.empty()) {
    refuseOthers(command, Work::kMachine);
    return simulateMachine(options, streams);
  }
  if (!options.compare.empty()) {
    refuseOthers(command, Work::kComparison);
    return compareWithTruth(options, streams);
  }
  refuseOthers(command, Work::kFrame);
  return simulateFrame(options, streams);
}

void addFrameOptions(CLI::App& command, SimulateOptions& options) {
  addPath(command, "--camera", options.camera, "the camera's parameter file").typeName("INI");
  addOption(command, "--size", options.size,
            "size of the raw frame (default: the one that the camera's file notes)")
      .typeName("WxH");
  addPath(command, "--bed-picture", options.bedPicture, "what lies on the bed").typeName("PICTURE");
  addOption(command, "--bed", options.bed,
            "the rectangle of the bed that it covers: its corner with the least X and Y, and its "
            "size")
      .typeName("X,Y,WxH");
  addPath(command, "-o,--output", options.output, "the frame").typeName("PICTURE");
  addPath(command, "--truth", options.truth,
          "write where the camera sees the target's points: PointId,Xw,Yw,ImagePtX,ImagePtY")
      .typeName("CSV");
  addOption(command, "--height", options.height,
            "how far what lies on the bed is above it, towards the camera")
      .typeName("MM");
  addOption(command, "--noise", options.noise, "standard deviation, grey levels").typeName("SIGMA");
  addOption(command, "--blur", options.blur, "standard deviation, pixels").typeName("SIGMA");
  addOption(command, "--vignetting", options.vignetting,
            "share of the light that is lost in the corners, 0 to 1")
      .typeName("SHARE");
  addOption(command, "--gradient", options.gradient,
            "share of the light that is lost from left to right, 0 to 1")
      .typeName("SHARE");
}

void addMachineOptions(CLI::App& command, SimulateOptions& options) {
  addPath(command, "--machine", options.machine, "the description of a machine").typeName("JSON");
  addPath(command, "--frames", options.frames,
          "folder for each camera's frame and points of each scene, and its parameter file")
      .typeName("FOLDER");
  addOption(command, "--scene", options.scenes, "only this scene; may be given several times")
      .typeName("NAME")
      .oneValueEachTime();
  addOption(command, "--serve", options.serve,
            "serve the cameras as streams at this address, such as 127.0.0.1:8738; port 0 takes a "
            "free one")
      .typeName("[ADDRESS:PORT]")
      .orWithoutValue("127.0.0.1:8738");
  addOption(command, "--rate", options.rate, "frames per second with --serve")
      .typeName("N")
      .showDefault();
  addOption(command, "--seed", options.seed,
            "number that decides the noise and how the machine's cameras differ from their "
            "description")
      .typeName("N")
      .showDefault();
}

}  // namespace

std::uint64_t seedOf(const SimulateOptions& options) {
  const std::optional<int> seed = parseInteger(options.seed);
  if (!seed || *seed < 0) {
    failBadInput("--seed: give a whole number from 0, not " + inQuotes(options.seed));
  }
  return static_cast<std::uint64_t>(*seed);
}

Command addSimulateCommand(CLI::App& app) {
  const auto options = std::make_shared<SimulateOptions>();
  CLI::App* command = addCommand(app, "simulate", "Draw what known cameras see of a bed");
  addFrameOptions(*command, *options);
  addTargetKindOptions(*command, options->target);
  addMachineOptions(*command, *options);
  addPath(*command, "--compare", options->compare, "print how far this camera is off the true one")
      .typeName("INI");
  addPath(*command, "--truth-camera", options->truthCamera, "the true camera for --compare")
      .typeName("INI");
  addOption(*command, "--tolerance", options->tolerance,
            "with --compare, fail if a point of the bed is farther off than this")
      .typeName("MM")
      .showDefault();
  addForce(*command, options->force);
  setFooter(
      *command,
      "Examples:\n"
      "  fisheye-calibration simulate --camera camera.ini --bed-picture bed.png "
      "--bed 0,0,600x400 -o raw.png\n"
      "  fisheye-calibration simulate --camera camera.ini --charuco 14x9 --spacing 40 -o raw.png "
      "--truth points.csv\n"
      "  fisheye-calibration simulate --machine one.json --frames frames --seed 7\n"
      "  fisheye-calibration simulate --machine one.json --serve\n"
      "  fisheye-calibration simulate --compare camera.ini --truth-camera frames/camera1.ini");
  return {command,
          [options, command](const Streams& streams) { return run(*options, *command, streams); }};
}

}  // namespace fisheye_calibration::program
