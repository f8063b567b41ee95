// A camera that is known exactly, over a bed: writes the points that it sees, and compares what a
// calibration made of them with the truth.
//   synthetic-camera points POINTS.csv     the points, with noise
//   synthetic-camera frame PICTURE.pgm     its picture of the bed, tiled like a chessboard
//   synthetic-camera size                  its image size, WIDTHxHEIGHT
//   synthetic-camera compare CAMERA.ini    truth beside result; exit code 1 if they are far apart
#include <fisheye_calibration.h>

#include <cmath>
#include <cstdio>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr int imageWidth = 1920;
constexpr int imageHeight = 1080;

// The target: rows of points on the bed, mm.
constexpr int columns = 13;
constexpr int rows = 9;
constexpr float spacing = 50;

// How badly the points are measured: standard deviation in x and in y, pixels.
constexpr double noise = 0.1;

// The result may be off by so much at the worst place of the bed, pixels.
constexpr double tolerance = 0.5;

// Mounted 161 mm over a 600 mm x 400 mm bed, off its middle by 114 mm and tilted back by 17
// degrees.
FishEyeCalibrationParam truth() {
  FishEyeCalibrationParam camera = FishEyeCalibrationParam();
  camera.u0 = 968.5f;
  camera.v0 = 533.25f;
  camera.fx = 640.0f;
  camera.fy = 638.0f;
  camera.k0 = 0.015;
  camera.k1 = -0.06;
  camera.Rx = -0.3f;
  camera.Ry = 0.05f;
  camera.Rz = 0.02f;
  camera.Tx = -300.0f;
  camera.Ty = -255.0f;
  camera.Tz = 262.0f;
  return camera;
}

// Standard normal numbers that are the same with every standard library: its engines' sequences are
// fixed by the language, its distributions' are not. Sum of twelve uniform numbers minus six.
class Noise {
 public:
  double next() {
    double sum = -6;
    for (int i = 0; i < 12; ++i) sum += static_cast<double>(engine_()) / 4294967296.0;
    return sum;
  }

 private:
  std::mt19937 engine_{20240229};
};

bool writePoints(const std::string& path) {
  std::ofstream file(path);
  file << "PointId,Xw,Yw,ImagePtX,ImagePtY\n" << std::fixed << std::setprecision(4);
  Noise random;
  for (int row = 0; row < rows; ++row) {
    for (int column = 0; column < columns; ++column) {
      const float Xw = static_cast<float>(column) * spacing;
      const float Yw = static_cast<float>(row) * spacing;
      float x = 0;
      float y = 0;
      WorldToRawImagePoint(Xw, Yw, 0, truth(), x, y);
      const double measuredX = static_cast<double>(x) + noise * random.next();
      const double measuredY = static_cast<double>(y) + noise * random.next();
      file << row * columns + column + 1 << "," << Xw << "," << Yw << "," << measuredX << ","
           << measuredY << "\n";
    }
  }
  file.flush();
  return file.good();
}

struct Vector {
  double x, y, z;
};

// v turned by the rotation vector -(Rx, Ry, Rz), from the camera's frame to the bed's: Rodrigues'
// formula.
Vector toBed(const FishEyeCalibrationParam& camera, const Vector& v) {
  const double angle = std::sqrt(
      static_cast<double>(camera.Rx * camera.Rx + camera.Ry * camera.Ry + camera.Rz * camera.Rz));
  const Vector a = {-camera.Rx / angle, -camera.Ry / angle, -camera.Rz / angle};
  const double c = std::cos(angle);
  const double s = std::sin(angle);
  const double along = (1 - c) * (a.x * v.x + a.y * v.y + a.z * v.z);
  return {c * v.x + s * (a.y * v.z - a.z * v.y) + along * a.x,
          c * v.y + s * (a.z * v.x - a.x * v.z) + along * a.y,
          c * v.z + s * (a.x * v.y - a.y * v.x) + along * a.z};
}

// What the camera sees at a pixel: the bed's tiles, black and white, in a grey room.
unsigned char brightness(const FishEyeCalibrationParam& camera, int column, int row) {
  const double x = (column - static_cast<double>(camera.u0)) / static_cast<double>(camera.fx);
  const double y = (row - static_cast<double>(camera.v0)) / static_cast<double>(camera.fy);
  const double thetaD = std::hypot(x, y);
  double theta = thetaD;  // of thetaD = theta + k0 theta^2 + k1 theta^3, by Newton's method
  for (int i = 0; i < 10; ++i) {
    theta -= (theta + theta * theta * (camera.k0 + camera.k1 * theta) - thetaD) /
             (1 + theta * (2 * camera.k0 + 3 * camera.k1 * theta));
  }
  const double side = thetaD > 0 ? std::sin(theta) / thetaD : 1;
  const Vector ray = toBed(camera, {x * side, y * side, std::cos(theta)});
  const Vector centre = toBed(camera, {-camera.Tx, -camera.Ty, -camera.Tz});
  const double length = -centre.z / ray.z;
  const double tileX = std::floor((centre.x + length * ray.x) / static_cast<double>(spacing));
  const double tileY = std::floor((centre.y + length * ray.y) / static_cast<double>(spacing));
  if (!(length > 0 && tileX >= 0 && tileX < columns - 1 && tileY >= 0 && tileY < rows - 1)) {
    return 96;
  }
  return std::fmod(tileX + tileY, 2) == 0 ? 235 : 30;
}

bool writeFrame(const std::string& path) {
  std::ofstream file(path, std::ios::binary);
  file << "P5\n" << imageWidth << " " << imageHeight << "\n255\n";
  for (int row = 0; row < imageHeight; ++row) {
    for (int column = 0; column < imageWidth; ++column) {
      file.put(static_cast<char>(brightness(truth(), column, row)));
    }
  }
  file.flush();
  return file.good();
}

// How far the two cameras put a point of the bed apart, at the worst place: pixels.
double largestDifference(const FishEyeCalibrationParam& a, const FishEyeCalibrationParam& b) {
  double largest = 0;
  for (float Yw = 0; Yw <= static_cast<float>(rows - 1) * spacing; Yw += 5) {
    for (float Xw = 0; Xw <= static_cast<float>(columns - 1) * spacing; Xw += 5) {
      float xa = 0;
      float ya = 0;
      float xb = 0;
      float yb = 0;
      WorldToRawImagePoint(Xw, Yw, 0, a, xa, ya);
      WorldToRawImagePoint(Xw, Yw, 0, b, xb, yb);
      const double distance =
          std::hypot(static_cast<double>(xa - xb), static_cast<double>(ya - yb));
      if (!(distance <= largest)) largest = distance;  // what is not a number is kept
      if (std::isnan(largest)) return largest;
    }
  }
  return largest;
}

void printRow(const char* name, double expected, double actual, int decimals, const char* unit) {
  std::printf("  %-4s %14.*f %14.*f %14.*f  %s\n", name, decimals, expected, decimals, actual,
              decimals, actual - expected, unit);
}

bool compare(const std::string& path) {
  const FishEyeCalibrationParam a = truth();
  FishEyeCalibrationParam b = FishEyeCalibrationParam();
  LoadCalibrationParam(path.c_str(), b);
  std::printf("Synthetic camera, %d points, noise %.2f px in x and y\n", columns * rows, noise);
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
  const double difference = largestDifference(a, b);
  std::printf("Largest difference between the two cameras on the bed: %.3f px\n", difference);
  if (difference <= tolerance) return true;
  std::fprintf(stderr, "synthetic-camera: more than %.3f px from the truth\n", tolerance);
  return false;
}

}  // namespace

int main(int argumentCount, char** arguments) {
  const std::vector<std::string> words(arguments + 1, arguments + argumentCount);
  if (words.size() == 2 && (words[0] == "points" || words[0] == "frame")) {
    if (words[0] == "points" ? writePoints(words[1]) : writeFrame(words[1])) return 0;
    std::cerr << "synthetic-camera: cannot write " << words[1] << "\n";
    return 1;
  }
  if (words.size() == 1 && words[0] == "size") {
    std::cout << imageWidth << "x" << imageHeight << "\n";
    return 0;
  }
  if (words.size() == 2 && words[0] == "compare") return compare(words[1]) ? 0 : 1;
  std::cerr << "usage: synthetic-camera points CSV | frame PGM | size | compare INI\n";
  return 2;
}
