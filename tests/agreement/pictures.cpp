#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "agreement/computations.h"
#include "fisheye/fisheye.h"
#include "stitching/rigs.h"
#include "support/synthetic_rig.h"

using namespace fisheye_calibration;

namespace agreement {
namespace {

using support::Random;
using Bytes = std::vector<unsigned char>;

struct Size {
  int width;
  int height;
};

// Odd, even, long and flat ones; rows of all lengths modulo the vectors' lengths.
constexpr Size kSizes[] = {{640, 480}, {641, 479}, {1283, 97}, {66, 701}, {1280, 960}, {331, 330}};

// A lens of about 180 degrees, its view tilted a little and moved.
FishEyeCalibrationParam randomLens(Random& random, Size size) {
  FishEyeCalibrationParam p{};
  const double focal = size.width * random.uniform(0.25, 0.4);
  p.fx = static_cast<float>(focal);
  p.fy = static_cast<float>(focal * random.uniform(0.98, 1.02));
  p.u0 = static_cast<float>(size.width * random.uniform(0.48, 0.52));
  p.v0 = static_cast<float>(size.height * random.uniform(0.48, 0.52));
  p.k0 = random.uniform(-0.03, 0.03);
  p.k1 = random.uniform(-0.05, 0.02);
  p.p1 = random.uniform(0.5, 1.3);
  p.p2 = random.uniform(-0.1, 0.1);
  p.p3 = random.uniform(-20, 20);
  p.p4 = random.uniform(-0.1, 0.1);
  p.p5 = random.uniform(0.5, 1.3);
  p.p6 = random.uniform(-20, 20);
  p.p7 = random.uniform(-1, 1) * 1e-4;
  p.p8 = random.uniform(-1, 1) * 1e-4;
  p.p9 = 1;
  p.Pixel = static_cast<float>(random.uniform(0.2, 0.3));
  p.ImageDx = static_cast<float>(random.uniform(-9, 9));
  p.ImageDy = static_cast<float>(random.uniform(-9, 9));
  return p;
}

Bytes randomPixels(Random& random, Size size, int bits) {
  Bytes pixels(static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height) *
               static_cast<std::size_t>(bits / 8));
  for (unsigned char& byte : pixels) byte = static_cast<unsigned char>(rigs::whole(random, 0, 255));
  return pixels;
}

void addMat(Results& results, const std::string& name, const cv::Mat& mat) {
  results.addExact(name, mat.data, mat.total() * mat.elemSize());
}

}  // namespace

void addMaps(Results& results) {
  Random random(101);
  for (int i = 0; i < 24; ++i) {
    const Size size = kSizes[i % 6];
    const FishEyeCalibrationParam p = randomLens(random, size);
    const cv::Matx33d K(p.fx, 0, p.u0, 0, p.fy, p.v0, 0, 0, 1);
    const double zoom = random.uniform(0.3, 1);
    const cv::Matx33d P(p.fx * zoom, 0, 0, 0, p.fy * zoom, 0, 0, 0, 1);
    // In braces: compilers evaluate the arguments of calls in different orders.
    const cv::Vec3d turn{random.uniform(-0.3, 0.3), random.uniform(-0.3, 0.3),
                         random.uniform(-3, 3)};
    const cv::Matx33d straight = cv::Matx33d::eye();
    const bool turned = i % 2 != 0;
    cv::Mat whole;
    cv::Mat fraction;
    fisheye::initUndistortRectifyMap(K, cv::Vec2d(p.k0, p.k1),
                                     turned ? cv::Mat(turn) : cv::Mat(straight), P,
                                     {size.width, size.height}, CV_16SC2, whole, fraction);
    const std::string name = "map." + std::to_string(i);
    addMat(results, name + ".whole", whole);
    addMat(results, name + ".fraction", fraction);
  }
}

void addPictures(Results& results) {
  Random random(102);
  for (int i = 0; i < 36; ++i) {
    const Size size = kSizes[i % 6];
    const Size view = kSizes[(i + i / 6) % 6];
    const int bits = i % 3 == 0 ? 8 : i % 3 == 1 ? 24 : 32;
    const FishEyeCalibrationParam lens = randomLens(random, size);
    Bytes frame = randomPixels(random, size, bits);
    Bytes picture(static_cast<std::size_t>(view.width) * static_cast<std::size_t>(view.height) *
                  static_cast<std::size_t>(bits / 8));
    Bytes mask(static_cast<std::size_t>(view.width) * static_cast<std::size_t>(view.height));
    const bool shown = SingleCamCorrected(frame.data(), size.width, size.height, bits, lens,
                                          picture.data(), view.width, view.height, mask.data());
    const std::string name = "picture." + std::to_string(i);
    results.addExact(name + ".result", &shown, sizeof shown);
    results.addExact(name + ".pixels", picture.data(), picture.size());
    results.addExact(name + ".mask", mask.data(), mask.size());
  }
}

void addStitchedPictures(Results& results) {
  Random random(103);
  for (int i = 0; i < 120; ++i) {
    const int bits = i % 3 == 0 ? 8 : i % 3 == 1 ? 24 : 32;
    rigs::Rig rig = rigs::randomRig(random, bits);
    if (i % 8 == 0) {  // frames of a size that cameras have
      const Size size = kSizes[i / 8 % 2];
      for (plain::StitchCamera* camera : {&rig.first, &rig.second}) {
        camera->width = size.width;
        camera->height = size.height;
        camera->param = randomLens(random, size);
        camera->image = randomPixels(random, size, bits);
      }
      rig.second.param.Pixel = rig.first.param.Pixel;
      rig.second.param.DatumPtXw = 100;
    }
    const rigs::Size canvas = rigs::sizeOf(rig);
    const std::string name = "stitched." + std::to_string(i);
    const int numbers[] = {canvas.result ? 1 : 0, canvas.width, canvas.height, canvas.bits};
    results.addExact(name + ".size", numbers, sizeof(numbers));
    const int width = std::min<int>(canvas.width, 4096);
    const int height = std::min<int>(canvas.height, 2048);
    const rigs::Stitched stitched = rigs::stitch(rig, width, height, bits, 3);
    results.addExact(name + ".pixels", stitched.canvas.data(), stitched.canvas.size());
    addRecord(results, name + ".record", stitched.dual);
  }
}

}  // namespace agreement
