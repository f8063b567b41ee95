// A simulated machine's cameras as streams over HTTP:
//   GET  /1.mjpg, /2.mjpg   the cameras' frames, multipart/x-mixed-replace
//   GET  /1.jpg, /2.jpg     a frame
//   GET  /scene             {"on": true, "scene": "board", "scenes": ["empty", "board"]}
//   POST /scene/NAME        changes what lies on the bed; answered when the frames show it
//   POST /off, /on          unplugs the cameras: streams end and are refused with 503
#pragma once

#include <memory>
#include <string>

#include "simulation/simulated_machine.h"

namespace fisheye_calibration::program {

class MachineServer {
 public:
  // Shows the machine's first scene.
  MachineServer(const SimulatedMachine& machine, double framesPerSecond);
  MachineServer(const MachineServer&) = delete;
  MachineServer& operator=(const MachineServer&) = delete;
  ~MachineServer();

  // Takes the address; port 0 takes a free one. Returns the port, or 0 if the address cannot be
  // had.
  int bind(const std::string& host, int port);

  // Answers requests until stop() is called from another thread. False if that fails.
  bool run();
  void stop();

 private:
  class Implementation;
  std::unique_ptr<Implementation> implementation_;
};

}  // namespace fisheye_calibration::program
