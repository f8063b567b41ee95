// simulate: the frames of a machine, as files or served.
#include <algorithm>
#include <optional>
#include <ostream>
#include <string>
#include <system_error>
#include <vector>

#include "base/failure.h"
#include "base/file_path.h"
#include "base/text.h"
#include "commands/machine_file.h"
#include "commands/option_values.h"
#include "commands/simulate_options.h"
#include "files/camera_file.h"
#include "files/output_files.h"
#include "files/picture_file.h"
#include "files/points_csv.h"
#include "simulation/machine_server.h"
#include "simulation/simulated_machine.h"

namespace fisheye_calibration::program {
namespace fs = std::filesystem;
namespace {

bool isWanted(const SimulateOptions& options, const Scene& scene) {
  return options.scenes.empty() || std::find(options.scenes.begin(), options.scenes.end(),
                                             scene.name) != options.scenes.end();
}

void checkScenes(const SimulateOptions& options, const SimulatedMachine& machine) {
  std::vector<std::string> names;
  for (const Scene& scene : machine.scenes()) {
    names.push_back(scene.name);
  }
  for (const std::string& wanted : options.scenes) {
    if (std::find(names.begin(), names.end(), wanted) == names.end()) {
      failBadInput("--scene: there is no " + inQuotes(wanted) + ", there are " +
                   joined(names, ", "));
    }
  }
}

void makeFolder(const fs::path& folder) {
  std::error_code error;
  fs::create_directory(folder, error);
  if (!fs::is_directory(folder, error)) {
    failBadInput("--frames: " + nameOf(folder) + " cannot be made");
  }
}

int writeFrames(const SimulateOptions& options, const SimulatedMachine& machine,
                const Streams& streams) {
  makeFolder(options.frames);
  int frames = 0;
  for (std::size_t camera = 0; camera < machine.cameraCount(); ++camera) {
    const std::string name = "camera" + std::to_string(camera + 1);
    const TrueCamera& truth = machine.camera(camera);
    OutputFiles record;
    stageCamera(record, options.frames / (name + ".ini"), truth.param,
                {.image = truth.image, .corrected = truth.corrected});
    record.commit();
    for (const Scene& scene : machine.scenes()) {
      if (!isWanted(options, scene)) {
        continue;
      }
      const std::string stem = name + "-" + scene.name;
      streams.progress << stem << " ..." << std::endl;
      OutputFiles files;
      stagePicture(files, options.frames / (stem + ".png"),
                   machine.noise(scene, camera).added(machine.cleanFrame(scene, camera), 0));
      const std::vector<CalibrationPoint> points = machine.truePoints(scene, camera);
      if (!points.empty()) {
        files.stage(options.frames / (stem + ".csv"), formatPoints(points));
      }
      files.commit();
      ++frames;
    }
  }
  streams.out << frames << " frames of " << machine.cameraCount()
              << (machine.cameraCount() == 1 ? " camera" : " cameras") << " written to "
              << nameOf(options.frames) << "\n";
  return kExitOk;
}

struct Address {
  std::string host;
  int port = 0;
};

Address addressOf(const std::string& text) {
  const std::size_t colon = text.rfind(':');
  if (colon != std::string::npos && colon > 0) {
    const std::optional<int> port = parseInteger(text.substr(colon + 1));
    if (port && *port >= 0 && *port <= 65535) {
      return {.host = text.substr(0, colon), .port = *port};
    }
  }
  failBadInput("--serve: give an address as HOST:PORT, not " + inQuotes(text));
}

double rateOf(const SimulateOptions& options) {
  const double rate = parsePositiveNumber("--rate", options.rate);
  if (rate < 0.1 || rate > 120) {
    failBadInput("--rate: give a number from 0.1 to 120");
  }
  return rate;
}

int serve(const SimulateOptions& options, const SimulatedMachine& machine, const Streams& streams) {
  const Address address = addressOf(options.serve);
  MachineServer server(machine, rateOf(options));
  const int port = server.bind(address.host, address.port);
  if (port == 0) {
    failJob("--serve: the address " + inQuotes(options.serve) + " cannot be had");
  }
  const std::string base = "http://" + address.host + ":" + std::to_string(port) + "/";
  for (std::size_t camera = 0; camera < machine.cameraCount(); ++camera) {
    streams.out << "camera " << camera + 1 << ": " << base << camera + 1 << ".mjpg\n";
  }
  streams.out << "scene: GET " << base << "scene, POST " << base << "scene/NAME" << std::endl;
  return server.run() ? kExitOk : kExitJobFailed;
}

}  // namespace

int simulateMachine(const SimulateOptions& options, const Streams& streams) {
  if (options.frames.empty() == options.serve.empty()) {
    failBadInput("--machine: give either --frames or --serve");
  }
  const SimulatedMachine machine(readMachine(options.machine, streams.messages), seedOf(options));
  checkScenes(options, machine);
  return options.serve.empty() ? writeFrames(options, machine, streams)
                               : serve(options, machine, streams);
}

}  // namespace fisheye_calibration::program
