// The records of both interfaces for the same call.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <type_traits>
#include <vector>

#include "fisheye_calibration.h"
#include "fisheye_calibration_c.h"

namespace c_api_tests {

template <class To, class From>
To sameBytes(const From& from) {
  static_assert(sizeof(To) == sizeof(From) && std::is_trivially_copyable_v<From>);
  To to;
  std::memcpy(&to, &from, sizeof to);
  return to;
}

inline fcal_camera cameraOf(const FishEyeCalibrationParam& param) {
  return sameBytes<fcal_camera>(param);
}

inline std::vector<fcal_point> pointsOf(const std::vector<CalibrationPoint>& points) {
  std::vector<fcal_point> same;
  for (const CalibrationPoint& point : points) {
    same.push_back(sameBytes<fcal_point>(point));
  }
  return same;
}

inline int countOf(const std::vector<fcal_point>& points) {
  return static_cast<int>(points.size());
}

template <class A, class B>
testing::AssertionResult equalBytes(const A& a, const B& b) {
  static_assert(sizeof(A) == sizeof(B));
  if (std::memcmp(&a, &b, sizeof a) == 0) {
    return testing::AssertionSuccess();
  }
  return testing::AssertionFailure() << "the records differ";
}

inline testing::AssertionResult equalBytes(const std::vector<fcal_point>& a,
                                           const std::vector<CalibrationPoint>& b) {
  if (a.size() == b.size() &&
      (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(fcal_point)) == 0)) {
    return testing::AssertionSuccess();
  }
  return testing::AssertionFailure() << "the points differ";
}

// FCAL_OK and no error text.
inline testing::AssertionResult succeeds(fcal_status status) {
  if (status == FCAL_OK && std::strlen(fcal_last_error()) == 0) {
    return testing::AssertionSuccess();
  }
  return testing::AssertionFailure() << "status " << status << ": " << fcal_last_error();
}

// This status with exactly this text.
inline testing::AssertionResult fails(fcal_status status, fcal_status expected,
                                      const std::string& text) {
  if (status == expected && fcal_last_error() == text) {
    return testing::AssertionSuccess();
  }
  return testing::AssertionFailure() << "status " << status << ": " << fcal_last_error();
}

inline testing::AssertionResult refuses(fcal_status status, const std::string& text) {
  return fails(status, FCAL_BAD_ARGUMENT, text);
}

}  // namespace c_api_tests
