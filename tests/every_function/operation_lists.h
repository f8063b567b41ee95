// What the two lists of operations share.
#pragma once

#include <cstddef>
#include <vector>

#include "every_function/operations.h"

namespace every_function {

constexpr int kWidth = 640;  // of the calibrated camera's frames
constexpr int kHeight = 480;
constexpr int kViewWidth = 36;
constexpr int kViewHeight = 28;
constexpr int kCanvasWidth = 100;
constexpr int kCanvasHeight = 60;
constexpr int kBits = 24;

using Points = std::vector<CalibrationPoint>;

// The records of the C interface are those of the C++ one.
inline const fcal_camera* cameraOf(const FishEyeCalibrationParam& camera) {
  static_assert(sizeof(fcal_camera) == sizeof(FishEyeCalibrationParam));
  return reinterpret_cast<const fcal_camera*>(&camera);
}

inline fcal_camera* cameraOf(FishEyeCalibrationParam& camera) {
  return reinterpret_cast<fcal_camera*>(&camera);
}

inline const fcal_point* pointsOf(const Points& points) {
  static_assert(sizeof(fcal_point) == sizeof(CalibrationPoint));
  return reinterpret_cast<const fcal_point*>(points.data());
}

inline fcal_point* pointsOf(Points& points) { return reinterpret_cast<fcal_point*>(points.data()); }

inline int countOf(const Points& points) { return static_cast<int>(points.size()); }

// The interfaces take what they only read as changeable.
inline unsigned char* readable(const std::vector<unsigned char>& bytes) {
  return const_cast<unsigned char*>(bytes.data());
}

std::vector<Operation> operationsOfCxx();
std::vector<Operation> operationsOfC();

}  // namespace every_function
