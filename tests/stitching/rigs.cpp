#include "stitching/rigs.h"

#include <cmath>
#include <cstring>

namespace rigs {
namespace {

using support::Random;

std::size_t bytesOf(int width, int height, int bits) {
  if (width <= 0 || height <= 0 || bits <= 0) return 0;
  return static_cast<std::size_t>(std::int64_t{width} * height * bits / 8);
}

unsigned char* dataOf(std::vector<unsigned char>& bytes) {
  return bytes.empty() ? nullptr : bytes.data();
}

FishEyeCalibrationParam randomParam(Random& random, int width, int height) {
  FishEyeCalibrationParam p{};
  const double focal = width * random.uniform(0.4, 1.2);
  p.fx = static_cast<float>(focal);
  p.fy = static_cast<float>(focal * random.uniform(0.9, 1.1));
  p.u0 = static_cast<float>(width * random.uniform(0.4, 0.6));
  p.v0 = static_cast<float>(height * random.uniform(0.4, 0.6));
  p.k0 = random.uniform(-0.05, 0.05);
  p.k1 = random.uniform(-0.05, 0.05);
  p.p1 = random.uniform(0.8, 1.3);
  p.p2 = random.uniform(-0.2, 0.2);
  p.p4 = random.uniform(-0.2, 0.2);
  p.p5 = random.uniform(0.8, 1.3);
  p.p7 = random.uniform(-1, 1) * 1e-3;
  p.p8 = random.uniform(-1, 1) * 1e-3;
  p.p9 = 1;
  p.ImageDx = static_cast<float>(width * random.uniform(-0.3, 0.3));
  p.ImageDy = static_cast<float>(height * random.uniform(-0.3, 0.3));
  p.Pixel = static_cast<float>(random.uniform(0.2, 2));
  p.DatumPtXw = static_cast<float>(random.uniform(0, 60));
  p.DatumPtYw = static_cast<float>(random.uniform(0, 40));
  return p;
}

plain::StitchCamera randomCamera(Random& random, int width, int height, int bits) {
  plain::StitchCamera camera;
  camera.width = width;
  camera.height = height;
  camera.bits = bits;
  camera.image.resize(bytesOf(width, height, bits));
  for (unsigned char& byte : camera.image) byte = static_cast<unsigned char>(whole(random, 0, 255));
  camera.param = randomParam(random, width, height);
  return camera;
}

}  // namespace

int whole(Random& random, int low, int high) {
  return low + static_cast<int>(random.uniform(0, 1) * (high - low + 1));
}

plain::StitchCamera flatCamera(int width, int height, int bits, unsigned char value) {
  plain::StitchCamera camera;
  camera.width = width;
  camera.height = height;
  camera.bits = bits;
  camera.image.assign(bytesOf(width, height, bits), value);
  FishEyeCalibrationParam& p = camera.param;
  p.fx = p.fy = 1e6F;
  p.u0 = static_cast<float>(width) / 2;
  p.v0 = static_cast<float>(height) / 2;
  p.p1 = p.p5 = p.p9 = 1;
  p.Pixel = 1;
  return camera;
}

std::vector<CalibrationPoint> corners(float left, float top, float right, float bottom) {
  std::vector<CalibrationPoint> points(4);
  for (int i = 0; i < 4; ++i) {
    CalibrationPoint& point = points[static_cast<std::size_t>(i)];
    point.PointId = i + 1;
    point.Xw = i % 2 == 0 ? left : right;
    point.Yw = i / 2 == 0 ? top : bottom;
  }
  return points;
}

Rig randomRig(Random& random, int bits) {
  const int width = whole(random, 4, 40);
  const int height = whole(random, 4, 30);
  const bool equal = whole(random, 0, 1) == 0;
  Rig rig;
  rig.first = randomCamera(random, width, height, bits);
  // Not as arguments of the call: compilers evaluate these in different orders.
  const int secondHeight = equal ? height : whole(random, 4, 30);
  const int secondWidth = equal ? width : whole(random, 4, 40);
  rig.second = randomCamera(random, secondWidth, secondHeight, bits);
  if (whole(random, 0, 3) != 0) {  // most rigs have cameras of one scale side by side
    rig.second.param.Pixel = rig.first.param.Pixel;
    const auto step = static_cast<float>(random.uniform(-0.5, 2.5) * width);
    rig.second.param.DatumPtXw = rig.first.param.DatumPtXw + step * rig.first.param.Pixel;
    rig.second.param.DatumPtYw =
        rig.first.param.DatumPtYw +
        static_cast<float>(random.uniform(-0.5, 0.5) * height) * rig.first.param.Pixel;
  }
  const double jitter = whole(random, 0, 1) * 4.0;  // makes the transform a perspective one
  const int shared = whole(random, 4, 12);
  for (int id = 1; id <= shared; ++id) {
    CalibrationPoint point{};
    point.PointId = id;
    point.Xw = static_cast<float>(random.uniform(0, 100));
    point.Yw = static_cast<float>(random.uniform(0, 80));
    rig.first.points.push_back(point);
    point.Xw += static_cast<float>(random.uniform(-jitter, jitter));
    point.Yw += static_cast<float>(random.uniform(-jitter, jitter));
    rig.second.points.push_back(point);
  }
  return rig;
}

Rig turned(Rig rig, double degrees) {
  cv::Point2d centre;
  for (const CalibrationPoint& point : rig.second.points) {
    centre += cv::Point2d(point.Xw, point.Yw) / static_cast<double>(rig.second.points.size());
  }
  const double angle = degrees * CV_PI / 180;
  for (CalibrationPoint& point : rig.second.points) {
    const cv::Point2d p = cv::Point2d(point.Xw, point.Yw) - centre;
    point.Xw = static_cast<float>(centre.x + std::cos(angle) * p.x - std::sin(angle) * p.y);
    point.Yw = static_cast<float>(centre.y + std::sin(angle) * p.x + std::cos(angle) * p.y);
  }
  return rig;
}

Stitched stitch(const Rig& rig, int width, int height, int bits, unsigned char fill) {
  Rig host = rig;  // the interface takes what it does not change as changeable
  Stitched out;
  out.canvas.assign(bytesOf(width, height, bits), fill);
  out.result = FishEyeImageStitching(
      dataOf(host.first.image), host.first.width, host.first.height, host.first.bits,
      host.first.param, host.first.points, dataOf(host.second.image), host.second.width,
      host.second.height, host.second.bits, host.second.param, host.second.points,
      dataOf(out.canvas), width, height, bits, out.dual);
  return out;
}

Stitched stitchPlainly(const Rig& rig, int width, int height, int bits, unsigned char fill) {
  Stitched out;
  out.result = true;
  out.canvas.assign(bytesOf(width, height, bits), fill);
  plain::fishEyeImageStitching(rig.first, rig.second, out.canvas.data(), width, height, bits,
                               out.dual);
  return out;
}

Size sizeOf(const Rig& rig) {
  Rig host = rig;
  Size size;
  size.result = ComputeStitchedImageSize(
      dataOf(host.first.image), host.first.width, host.first.height, host.first.bits,
      host.first.param, host.first.points, dataOf(host.second.image), host.second.width,
      host.second.height, host.second.bits, host.second.param, host.second.points, size.width,
      size.height, size.bits);
  return size;
}

bool same(const DualFishEyeCalibrationParam& a, const DualFishEyeCalibrationParam& b) {
  static_assert(sizeof a == 28, "no padding");
  return std::memcmp(&a, &b, sizeof a) == 0;
}

}  // namespace rigs
