// A machine with one or several cameras over a bed, on which different things lie.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "simulation/frame_effects.h"
#include "simulation/raw_frame.h"
#include "simulation/simulated_camera.h"

namespace fisheye_calibration::program {

// What lies on the bed, in coordinates of its own plane, which are the bed's where it lies flat.
struct SceneItem {
  PlacedPicture picture;
  PlanePose pose;
  std::vector<CalibrationPoint> points;  // that the picture shows; without positions in the image
};

struct Scene {
  std::string name;
  std::vector<SceneItem> items;  // earlier ones cover later ones
  FrameEffects effects;
};

struct Machine {
  cv::Rect2d bed;  // world units
  PlacedPicture bedPicture;
  int background = 0;  // grey level beside the bed
  std::vector<NominalCamera> cameras;
  CameraVariation variation;
  std::vector<Scene> scenes;
};

class SimulatedMachine {
 public:
  // The cameras, and the noise of their frames, follow from the seed alone.
  SimulatedMachine(Machine machine, std::uint64_t seed);

  std::size_t cameraCount() const { return cameras_.size(); }
  const TrueCamera& camera(std::size_t camera) const { return cameras_[camera]; }
  bool seesBed(std::size_t camera) const;  // some part of it
  const std::vector<Scene>& scenes() const { return machine_.scenes; }

  // The frame without noise.
  cv::Mat cleanFrame(const Scene& scene, std::size_t camera) const;

  // The noise of a camera's frames of a scene.
  SensorNoise noise(const Scene& scene, std::size_t camera) const;

  // Where the camera sees the scene's points.
  std::vector<CalibrationPoint> truePoints(const Scene& scene, std::size_t camera) const;

 private:
  Machine machine_;
  std::uint64_t seed_;
  std::vector<TrueCamera> cameras_;
  std::vector<CornerRays> rays_;  // of the cameras
};

// A bed of slats: lines of a slightly darker grey every 10 units.
PlacedPicture slattedBed(const cv::Rect2d& bed);

}  // namespace fisheye_calibration::program
