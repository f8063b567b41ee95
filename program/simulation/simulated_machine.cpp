#include "simulation/simulated_machine.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace fisheye_calibration::program {

SimulatedMachine::SimulatedMachine(Machine machine, std::uint64_t seed)
    : machine_(std::move(machine)), seed_(seed) {
  RandomNumbers random(seed);
  for (const NominalCamera& nominal : machine_.cameras) {
    cameras_.push_back(trueCamera(varied(nominal, machine_.variation, random), machine_.bed));
    rays_.emplace_back(cameras_.back().param, cameras_.back().image);
  }
}

bool SimulatedMachine::seesBed(std::size_t camera) const {
  return program::seesBed(cameras_[camera], machine_.bed);
}

cv::Mat SimulatedMachine::cleanFrame(const Scene& scene, std::size_t camera) const {
  const TrueCamera& seeing = cameras_[camera];
  std::vector<SeenPicture> pictures;
  for (const SceneItem& item : scene.items) {
    pictures.push_back({seenFromPlane(seeing.param, item.pose), item.picture});
  }
  pictures.push_back({seeing.param, machine_.bedPicture});
  return withLight(rawFrame(rays_[camera], pictures, machine_.background), scene.effects);
}

SensorNoise SimulatedMachine::noise(const Scene& scene, std::size_t camera) const {
  return {scene.effects.noise, seed_ * 16 + camera};
}

std::vector<CalibrationPoint> SimulatedMachine::truePoints(const Scene& scene,
                                                           std::size_t camera) const {
  const TrueCamera& seeing = cameras_[camera];
  std::vector<CalibrationPoint> points;
  for (const SceneItem& item : scene.items) {
    const auto seen = seenPoints(seenFromPlane(seeing.param, item.pose), item.points, seeing.image);
    points.insert(points.end(), seen.begin(), seen.end());
  }
  return points;
}

PlacedPicture slattedBed(const cv::Rect2d& bed) {
  constexpr double kPixelsPerUnit = 2;
  constexpr double kMostPixels = 8000;  // a side
  constexpr double kPitch = 10;
  constexpr double kGap = 1.5;
  const double scale = std::min(kPixelsPerUnit, kMostPixels / std::max(bed.width, bed.height));
  const cv::Size size(std::max(1, static_cast<int>(std::lround(bed.width * scale))),
                      std::max(1, static_cast<int>(std::lround(bed.height * scale))));
  cv::Mat picture(size, CV_8U, cv::Scalar(150));
  for (int x = 0; x < size.width; ++x) {
    if (std::fmod(x / scale, kPitch) < kGap) {
      picture.col(x).setTo(132);
    }
  }
  return {picture, bed};
}

}  // namespace fisheye_calibration::program
