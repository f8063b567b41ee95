// Checks that a call raises one particular error of the image library.
#pragma once

#include <gtest/gtest.h>

#include <opencv2/core.hpp>
#include <string>

namespace support {

// "projectPoints" and "internal::projectPoints" both name internal::projectPoints.
inline bool namesFunction(const std::string& reported, const std::string& name) {
  const size_t tail = reported.rfind("::");
  return (tail == std::string::npos ? reported : reported.substr(tail + 2)) == name;
}

// Success if `call` raises cv::Exception with this code, exactly this text and this function.
template <class Call>
::testing::AssertionResult raises(int code, const std::string& text, const std::string& function,
                                  const Call& call) {
  try {
    call();
  } catch (const cv::Exception& error) {
    if (error.code == code && error.err == text && namesFunction(error.func, function)) {
      return ::testing::AssertionSuccess();
    }
    return ::testing::AssertionFailure()
           << "raised " << error.code << " \"" << error.err << "\" in " << error.func
           << ", expected " << code << " \"" << text << "\" in " << function;
  }
  return ::testing::AssertionFailure() << "raised nothing, expected \"" << text << "\"";
}

// The same for a failed condition (code -215).
template <class Call>
::testing::AssertionResult refuses(const std::string& text, const std::string& function,
                                   const Call& call) {
  return raises(cv::Error::StsAssert, text, function, call);
}

// The outcome of a call with hostile arguments: the text of its result or of its error.
template <class Call>
std::string outcomeOf(const Call& call) {
  try {
    return call();
  } catch (const cv::Exception& error) {
    return "raised " + std::to_string(error.code) + " " + error.err;
  }
}

// The bytes of a matrix: equal for equal results, also where these hold NaN.
inline std::string bytesOf(const cv::Mat& matrix) {
  const cv::Mat whole = matrix.clone();
  std::string bytes = std::to_string(whole.rows) + "x" + std::to_string(whole.cols) + "," +
                      std::to_string(whole.type()) + ":";
  return bytes.append(reinterpret_cast<const char*>(whole.data), whole.total() * whole.elemSize());
}

}  // namespace support
