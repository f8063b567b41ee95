#include "scenes.h"

#include <algorithm>
#include <cmath>

namespace bench {
namespace {

constexpr double kDegree = CV_PI / 180;

void fillWithNoise(Bytes& bytes) {
  cv::RNG random(1);
  random.fill(cv::Mat(1, static_cast<int>(bytes.size()), CV_8UC1, bytes.data()), cv::RNG::UNIFORM,
              0, 256);
}

NamedScene placed(const std::string& name, const Placement& placement) {
  return {name, [placement](const cv::Size& size, int bitCount) {
            Scene scene = usualScene(size, bitCount);
            place(scene, placement);
            return scene;
          }};
}

NamedScene withRecord(const std::string& name,
                      const std::function<void(FishEyeCalibrationParam&, const cv::Size&)>& set) {
  return {name, [set](const cv::Size& size, int bitCount) {
            Scene scene = usualScene(size, bitCount);
            set(scene.param, size);
            return scene;
          }};
}

// As the cameras of a pair are shown before they are joined: twice the size, with the same record.
Scene doubledView(const cv::Size& size, int bitCount) {
  Scene scene = usualScene(size, bitCount);
  scene.viewSize = {2 * size.width, 2 * size.height};
  return scene;
}

// One spot, seen in the last rows of the corrected image: that the image is not black shows late.
Scene nearlyBlack(const cv::Size& size, int bitCount) {
  Scene scene = usualScene(size, bitCount);
  std::fill(scene.frame.begin(), scene.frame.end(), static_cast<unsigned char>(0));
  constexpr float kRowsFromBottom = 4;
  const float Y = (static_cast<float>(size.height) / 2 - kRowsFromBottom) / scene.param.fy;
  float u = 0;
  float v = 0;
  WorldToRawImagePoint(0, Y, 1, scene.param, u, v);
  const std::size_t pixel = static_cast<std::size_t>(size.height - 1 - cvRound(v)) *
                                static_cast<std::size_t>(size.width) +
                            static_cast<std::size_t>(cvRound(u));
  std::fill_n(scene.frame.begin() + static_cast<std::ptrdiff_t>(pixel * scene.bytesPerPixel()),
              scene.bytesPerPixel(), static_cast<unsigned char>(255));
  return scene;
}

std::size_t pixelsOf(const cv::Size& size) {
  return static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height);
}

}  // namespace

std::string textOf(const cv::Size& size) {
  return std::to_string(size.width) + " x " + std::to_string(size.height);
}

std::string textOf(const cv::Size& size, int bitCount) {
  return textOf(size) + ", " + std::to_string(bitCount) + " bits";
}

std::size_t Scene::framePixels() const { return pixelsOf(frameSize); }

std::size_t Scene::viewPixels() const { return pixelsOf(viewSize); }

cv::Mat Scene::K() const {
  return (cv::Mat_<double>(3, 3) << param.fx, param.skewness, param.u0, 0, param.fy, param.v0, 0, 0,
          1);
}

cv::Mat Scene::D() const { return (cv::Mat_<double>(2, 1) << param.k0, param.k1); }

cv::Mat Scene::H() const {
  return (cv::Mat_<double>(3, 3) << param.p1, param.p2, param.p3, param.p4, param.p5, param.p6,
          param.p7, param.p8, param.p9);
}

void place(Scene& scene, const Placement& placement) {
  const double cx = scene.viewSize.width * 0.5;
  const double cy = scene.viewSize.height * 0.5;
  const double c = placement.scale * std::cos(placement.turn);
  const double s = placement.scale * std::sin(placement.turn);
  const cv::Matx33d toCentre(1, 0, -cx, 0, 1, -cy, 0, 0, 1);
  const cv::Matx33d back(1, 0, cx, 0, 1, cy, 0, 0, 1);
  const cv::Matx33d H =
      back * cv::Matx33d(c, -s, 0, s, c, 0, placement.tilt / cx, placement.tilt / (2 * cy), 1) *
      toCentre;
  FishEyeCalibrationParam& param = scene.param;
  double* const p[] = {&param.p1, &param.p2, &param.p3, &param.p4, &param.p5,
                       &param.p6, &param.p7, &param.p8, &param.p9};
  for (int i = 0; i < 9; ++i) *p[i] = H.val[i];
}

Scene usualScene(const cv::Size& size, int bitCount) { return usualScene(size, size, bitCount); }

Scene usualScene(const cv::Size& frameSize, const cv::Size& viewSize, int bitCount) {
  Scene scene;
  scene.frameSize = frameSize;
  scene.viewSize = viewSize;
  scene.bitCount = bitCount;
  FishEyeCalibrationParam& param = scene.param;
  param.fx = param.fy = static_cast<float>(frameSize.width / CV_PI);
  param.u0 = static_cast<float>(frameSize.width * 0.503);
  param.v0 = static_cast<float>(frameSize.height * 0.495);
  param.k0 = 0.02;
  param.k1 = -0.03;
  param.ImageDx = 3.25F;
  param.ImageDy = -2.5F;
  Placement placement;
  placement.scale *= static_cast<double>(viewSize.width) / frameSize.width;
  place(scene, placement);
  scene.frame.resize(scene.framePixels() * scene.bytesPerPixel());
  fillWithNoise(scene.frame);
  return scene;
}

std::vector<NamedScene> namedScenes() {
  using Record = FishEyeCalibrationParam;
  return {
      placed("usual", {}),
      placed("tilted", {.tilt = 0.35}),
      placed("tilted strongly", {.tilt = 0.65}),
      placed("enlarged", {.scale = 4}),
      placed("reduced", {.scale = 0.3}),
      placed("turned by 45 degrees", {.turn = 45 * kDegree}),
      placed("turned by 90 degrees", {.turn = 90 * kDegree}),
      {"doubled view", doubledView},
      withRecord("lens with large coefficients",
                 [](Record& param, const cv::Size&) {
                   param.k0 = 0.8;
                   param.k1 = -0.6;
                 }),
      // Half of the corrected image is outside the frame.
      withRecord("lens at the frame's corner",
                 [](Record& param, const cv::Size& size) {
                   param.u0 = static_cast<float>(size.width * 0.2);
                   param.v0 = static_cast<float>(size.height * 0.2);
                 }),
      withRecord("skewed", [](Record& param, const cv::Size&) { param.skewness = 20; }),
      {"nearly black", nearlyBlack},
      // Every position within 5e-8 of the middle between two steps of 1/32 pixel.
      withRecord("positions at ties",
                 [](Record& param, const cv::Size& size) {
                   constexpr float kHalfStep = 1.0F / 64;
                   param.fx = param.fy = 1e-9F;
                   param.u0 = static_cast<float>(size.width / 2) + kHalfStep;
                   param.v0 = static_cast<float>(size.height / 2) + kHalfStep;
                 }),
      // Positions far beyond 32 bits except near the centre: no approximation has a useful bound.
      withRecord("impossible lens",
                 [](Record& param, const cv::Size&) {
                   param.k0 = 1e9;
                   param.k1 = -1e9;
                 }),
  };
}

}  // namespace bench
