#include <cstdio>
#include <cstring>

#include "host.h"

namespace host {
namespace {

std::FILE* results = nullptr;

}  // namespace

void openResults(const char* path) { results = std::fopen(path, "wb"); }

void closeResults() { std::fclose(results); }

void record(const char* name, const void* bytes, std::size_t count) {
  const std::uint64_t length = count;
  std::fwrite(name, 1, std::strlen(name) + 1, results);
  std::fwrite(&length, sizeof length, 1, results);
  std::fwrite(bytes, 1, count, results);
}

void recordText(const char* name, const char* text) { record(name, text, std::strlen(text)); }

void recordFile(const char* name, const char* path) {
  std::FILE* const file = std::fopen(path, "rb");
  if (file == nullptr) {
    recordText(name, "no file");
    return;
  }
  std::vector<unsigned char> bytes(1 << 24);
  const std::size_t count = std::fread(bytes.data(), 1, bytes.size(), file);
  std::fclose(file);
  record(name, bytes.data(), count);
  std::remove(path);
}

void recordDigest(const char* name, const char* path) {
  std::FILE* const file = std::fopen(path, "rb");
  std::uint64_t digest = 14695981039346656037u;  // FNV-1a
  std::uint64_t length = 0;
  std::vector<unsigned char> bytes(1 << 16);
  while (file != nullptr) {
    const std::size_t count = std::fread(bytes.data(), 1, bytes.size(), file);
    if (count == 0) {
      std::fclose(file);
      std::remove(path);
      break;
    }
    for (std::size_t i = 0; i < count; ++i) digest = (digest ^ bytes[i]) * 1099511628211u;
    length += count;
  }
  recordValue(name, length);
  recordValue(name, digest);
}

FishEyeCalibrationParam sampleCamera() {
  FishEyeCalibrationParam camera = FishEyeCalibrationParam();
  camera.u0 = 322.5f;
  camera.v0 = 238.25f;
  camera.fx = 213.0f;
  camera.fy = 212.5f;
  camera.k0 = 0.015;
  camera.k1 = -0.06;
  camera.Rx = -0.3f;
  camera.Tx = -300.0f;
  camera.Ty = -255.0f;
  camera.Tz = 262.0f;
  return camera;
}

Points targetPoints(int columns, int rows) {
  Numbers numbers(5);
  const FishEyeCalibrationParam camera = sampleCamera();
  Points points;
  for (int i = 0; i < columns * rows; ++i) {
    CalibrationPoint point = CalibrationPoint();
    point.PointId = i + 1;
    point.Reserved1 = -7;
    point.Xw = 600.0f * static_cast<float>(i % columns) / static_cast<float>(columns - 1);
    point.Yw = 400.0f * static_cast<float>(i / columns) / static_cast<float>(rows - 1);
    WorldToRawImagePoint(point.Xw, point.Yw, 0, camera, point.ImagePtX, point.ImagePtY);
    point.ImagePtX += numbers.between(-0.2f, 0.2f);
    point.ImagePtY += numbers.between(-0.2f, 0.2f);
    points.push_back(point);
  }
  return points;
}

}  // namespace host
