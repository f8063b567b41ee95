// The records of the C interface are those of fisheye_calibration.h under other names.
#pragma once

#include <bit>
#include <cstring>
#include <span>
#include <vector>

#include "fisheye_calibration.h"
#include "fisheye_calibration_c.h"

namespace fisheye_calibration::c_api {

inline FishEyeCalibrationParam recordOf(const fcal_camera& camera) {
  return std::bit_cast<FishEyeCalibrationParam>(camera);
}

inline DualFishEyeCalibrationParam recordOf(const fcal_dual& dual) {
  return std::bit_cast<DualFishEyeCalibrationParam>(dual);
}

inline void store(const FishEyeCalibrationParam& record, fcal_camera& camera) {
  camera = std::bit_cast<fcal_camera>(record);
}

inline void store(const DualFishEyeCalibrationParam& record, fcal_dual& dual) {
  dual = std::bit_cast<fcal_dual>(record);
}

inline std::vector<CalibrationPoint> recordsOf(std::span<const fcal_point> points) {
  std::vector<CalibrationPoint> records(points.size());
  if (!points.empty()) {
    std::memcpy(records.data(), points.data(), points.size_bytes());
  }
  return records;
}

// As many points as records.
inline void store(const std::vector<CalibrationPoint>& records, std::span<fcal_point> points) {
  if (!records.empty()) {
    std::memcpy(points.data(), records.data(), records.size() * sizeof(CalibrationPoint));
  }
}

}  // namespace fisheye_calibration::c_api
