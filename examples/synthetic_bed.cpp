#include "synthetic_bed.h"

#include <cmath>
#include <cstdio>
#include <fstream>
#include <iomanip>
#include <random>

namespace {

// How far the result may be off at the worst place on the bed, pixels.
constexpr double kTolerance = 0.5;

// Standard normal numbers that are the same with every standard library: the language fixes the
// sequences of its engines, but not those of its distributions. Sum of twelve uniform numbers minus
// six.
class Noise {
 public:
  explicit Noise(unsigned seed) : engine_(seed) {}

  double next() {
    double sum = -6;
    for (int i = 0; i < 12; ++i) {
      sum += static_cast<double>(engine_()) / 4294967296.0;
    }
    return sum;
  }

 private:
  std::mt19937 engine_;
};

struct Vector {
  double x, y, z;
};

Rotation rotationOf(const FishEyeCalibrationParam& camera) {
  return {camera.Rx, camera.Ry, camera.Rz};
}

// v turned by the negative rotation vector, from the camera's frame to the bed's: Rodrigues'
// formula.
Vector toBed(const Rotation& r, const Vector& v) {
  const double angle = std::sqrt(static_cast<double>(r.Rx * r.Rx + r.Ry * r.Ry + r.Rz * r.Rz));
  const Vector a = {-r.Rx / angle, -r.Ry / angle, -r.Rz / angle};
  const double c = std::cos(angle);
  const double s = std::sin(angle);
  const double along = (1 - c) * (a.x * v.x + a.y * v.y + a.z * v.z);
  return {c * v.x + s * (a.y * v.z - a.z * v.y) + along * a.x,
          c * v.y + s * (a.z * v.x - a.x * v.z) + along * a.y,
          c * v.z + s * (a.x * v.y - a.y * v.x) + along * a.z};
}

struct Pixel {
  float x = 0;
  float y = 0;
};

Pixel seenAt(const FishEyeCalibrationParam& camera, float Xw, float Yw) {
  Pixel pixel;
  WorldToRawImagePoint(Xw, Yw, 0, camera, pixel.x, pixel.y);
  return pixel;
}

bool withinReach(const KnownCamera& camera, const Pixel& at) {
  const double x = static_cast<double>(at.x);
  const double y = static_cast<double>(at.y);
  return x >= 0 && y >= 0 && x <= camera.width - 1 && y <= camera.height - 1 &&
         std::hypot(x - camera.width * 0.5, y - camera.height * 0.5) <= camera.reach;
}

// What the camera sees at a place in its image.
double brightness(const FishEyeCalibrationParam& camera, const Bed& bed, double column,
                  double row) {
  const double x = (column - static_cast<double>(camera.u0)) / static_cast<double>(camera.fx);
  const double y = (row - static_cast<double>(camera.v0)) / static_cast<double>(camera.fy);
  const double thetaD = std::hypot(x, y);
  double theta = thetaD;  // of thetaD = theta + k0 theta^2 + k1 theta^3, by Newton's method
  for (int i = 0; i < 6; ++i) {
    theta -= (theta + theta * theta * (camera.k0 + camera.k1 * theta) - thetaD) /
             (1 + theta * (2 * camera.k0 + 3 * camera.k1 * theta));
  }
  const double side = thetaD > 0 ? std::sin(theta) / thetaD : 1;
  const Rotation rotation = rotationOf(camera);
  const Vector ray = toBed(rotation, {x * side, y * side, std::cos(theta)});
  const Vector centre = toBed(rotation, {-camera.Tx, -camera.Ty, -camera.Tz});
  const double length = -centre.z / ray.z;
  const double tileX = std::floor((centre.x + length * ray.x) / static_cast<double>(bed.spacing));
  const double tileY = std::floor((centre.y + length * ray.y) / static_cast<double>(bed.spacing));
  if (!(length > 0 && tileX >= 0 && tileX < bed.columns - 1 && tileY >= 0 &&
        tileY < bed.rows - 1)) {
    return 96;
  }
  return std::fmod(tileX + tileY, 2) == 0 ? 235 : 30;
}

// The mean over the pixel, from four places in it.
unsigned char pixelBrightness(const FishEyeCalibrationParam& camera, const Bed& bed, int column,
                              int row) {
  double sum = 0;
  for (const double dx : {-0.25, 0.25}) {
    for (const double dy : {-0.25, 0.25}) {
      sum += brightness(camera, bed, column + dx, row + dy);
    }
  }
  return static_cast<unsigned char>(sum / 4);
}

// How far apart two cameras put a point of the bed, at the worst place that the first one can
// measure, pixels.
double largestDifference(const KnownCamera& camera, const FishEyeCalibrationParam& other,
                         const Bed& bed) {
  double largest = 0;
  for (float Yw = 0; Yw <= static_cast<float>(bed.rows - 1) * bed.spacing; Yw += 5) {
    for (float Xw = 0; Xw <= static_cast<float>(bed.columns - 1) * bed.spacing; Xw += 5) {
      const Pixel a = seenAt(camera.param, Xw, Yw);
      if (!withinReach(camera, a)) {
        continue;
      }
      const Pixel b = seenAt(other, Xw, Yw);
      const double distance =
          std::hypot(static_cast<double>(a.x - b.x), static_cast<double>(a.y - b.y));
      if (!(distance <= largest)) {
        largest = distance;  // keeps what is not a number
      }
      if (std::isnan(largest)) {
        return largest;
      }
    }
  }
  return largest;
}

void printRow(const char* name, double expected, double actual, int decimals, const char* unit) {
  std::printf("  %-4s %14.*f %14.*f %14.*f  %s\n", name, decimals, expected, decimals, actual,
              decimals, actual - expected, unit);
}

void printComparison(const FishEyeCalibrationParam& a, const FishEyeCalibrationParam& b) {
  std::printf("  %-4s %14s %14s %14s\n", "", "truth", "result", "difference");
  const struct {
    const char* name;
    float FishEyeCalibrationParam::*field;
    int decimals;
    const char* unit;
  } fields[] = {{"fx", &FishEyeCalibrationParam::fx, 3, "px"},
                {"fy", &FishEyeCalibrationParam::fy, 3, "px"},
                {"u0", &FishEyeCalibrationParam::u0, 3, "px"},
                {"v0", &FishEyeCalibrationParam::v0, 3, "px"},
                {"Rx", &FishEyeCalibrationParam::Rx, 6, "rad"},
                {"Ry", &FishEyeCalibrationParam::Ry, 6, "rad"},
                {"Rz", &FishEyeCalibrationParam::Rz, 6, "rad"},
                {"Tx", &FishEyeCalibrationParam::Tx, 3, "mm"},
                {"Ty", &FishEyeCalibrationParam::Ty, 3, "mm"},
                {"Tz", &FishEyeCalibrationParam::Tz, 3, "mm"}};
  for (const auto& [name, field, decimals, unit] : fields) {
    printRow(name, static_cast<double>(a.*field), static_cast<double>(b.*field), decimals, unit);
  }
  printRow("k0", a.k0, b.k0, 6, "");
  printRow("k1", a.k1, b.k1, 6, "");
}

}  // namespace

FishEyeCalibrationParam mounted(FishEyeCalibrationParam camera, double Xw, double Yw, double height,
                                const Rotation& rotation) {
  // T = -R C with the lens at C = (Xw, Yw, -height); R turns by +(Rx, Ry, Rz).
  const Vector T = toBed({-rotation.Rx, -rotation.Ry, -rotation.Rz}, {-Xw, -Yw, height});
  camera.Rx = rotation.Rx;
  camera.Ry = rotation.Ry;
  camera.Rz = rotation.Rz;
  camera.Tx = static_cast<float>(T.x);
  camera.Ty = static_cast<float>(T.y);
  camera.Tz = static_cast<float>(T.z);
  return camera;
}

bool writePoints(const std::string& path, const KnownCamera& camera, const Bed& bed) {
  std::ofstream file(path);
  file << "PointId,Xw,Yw,ImagePtX,ImagePtY\n" << std::fixed << std::setprecision(4);
  Noise random(camera.seed);
  for (int row = 0; row < bed.rows; ++row) {
    for (int column = 0; column < bed.columns; ++column) {
      const float Xw = static_cast<float>(column) * bed.spacing;
      const float Yw = static_cast<float>(row) * bed.spacing;
      const Pixel at = seenAt(camera.param, Xw, Yw);
      if (!withinReach(camera, at)) {
        continue;
      }
      const double measuredX = static_cast<double>(at.x) + kNoise * random.next();
      const double measuredY = static_cast<double>(at.y) + kNoise * random.next();
      file << row * bed.columns + column + 1 << "," << Xw << "," << Yw << "," << measuredX << ","
           << measuredY << "\n";
    }
  }
  file.flush();
  return file.good();
}

bool writeFrame(const std::string& path, const KnownCamera& camera, const Bed& bed) {
  std::ofstream file(path, std::ios::binary);
  file << "P5\n" << camera.width << " " << camera.height << "\n255\n";
  for (int row = 0; row < camera.height; ++row) {
    for (int column = 0; column < camera.width; ++column) {
      file.put(static_cast<char>(pixelBrightness(camera.param, bed, column, row)));
    }
  }
  file.flush();
  return file.good();
}

bool compare(const std::string& iniPath, const KnownCamera& camera, const Bed& bed) {
  FishEyeCalibrationParam result = FishEyeCalibrationParam();
  LoadCalibrationParam(iniPath.c_str(), result);
  printComparison(camera.param, result);
  const double difference = largestDifference(camera, result, bed);
  std::printf("Largest difference between truth and result on the bed: %.3f px\n", difference);
  if (difference <= kTolerance) {
    return true;
  }
  std::fprintf(stderr, "%s: more than %.3f px from the truth\n", iniPath.c_str(), kTolerance);
  return false;
}
