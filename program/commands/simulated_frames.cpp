// simulate: the frames of a machine, as files or served.
#include <algorithm>
#include <ostream>
#include <string>
#include <system_error>
#include <utility>
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
#include "http/listen_address.h"
#include "simulation/machine_server.h"
#include "simulation/simulated_machine.h"

namespace fisheye_calibration::program {
namespace fs = std::filesystem;
namespace {

// Leaves only the scenes that the user has named, if any.
void chooseScenes(const SimulateOptions& options, Machine& machine) {
  std::vector<std::string> names;
  for (const Scene& scene : machine.scenes) {
    names.push_back(scene.name);
  }
  const std::vector<std::string>& wanted = options.scenes;
  for (const std::string& name : wanted) {
    if (std::find(names.begin(), names.end(), name) == names.end()) {
      failBadInput("--scene: there is no " + inQuotes(name) + ", there are " + joined(names, ", "));
    }
  }
  if (!wanted.empty()) {
    std::erase_if(machine.scenes, [&](const Scene& scene) {
      return std::find(wanted.begin(), wanted.end(), scene.name) == wanted.end();
    });
  }
}

void checkCameras(const SimulateOptions& options, const SimulatedMachine& machine) {
  for (std::size_t camera = 0; camera < machine.cameraCount(); ++camera) {
    if (!machine.seesBed(camera)) {
      failBadInput(nameOf(options.machine) + ": cameras[" + std::to_string(camera) +
                   "] sees nothing of the bed");
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

double rateOf(const SimulateOptions& options) {
  const double rate = parsePositiveNumber("--rate", options.rate);
  if (rate < 0.1 || rate > 120) {
    failBadInput("--rate: give a number from 0.1 to 120");
  }
  return rate;
}

int serve(const SimulateOptions& options, const SimulatedMachine& machine, const Streams& streams) {
  const ListenAddress address = parseListenAddress("--serve", options.serve);
  MachineServer server(machine, rateOf(options));
  const int port = server.bind(address.host, address.port);
  if (port == 0) {
    failJob("--serve: the address " + inQuotes(options.serve) + " cannot be had");
  }
  const std::string base = "http://" + authority(address.host, port) + "/";
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
  Machine description = readMachine(options.machine, streams.messages);
  chooseScenes(options, description);
  const SimulatedMachine machine(std::move(description), seedOf(options));
  checkCameras(options, machine);
  return options.serve.empty() ? writeFrames(options, machine, streams)
                               : serve(options, machine, streams);
}

}  // namespace fisheye_calibration::program
