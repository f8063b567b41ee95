// Runs the perspective aid in the current directory and compares what it wrote. On Linux the script
// window_check.sh gives it a display and presses the key; on Windows a second thread presses it,
// and the files are on the real drive D:.
//   window_check identity | general     exit code 0 if the picture is correct
//   window_check hostile                exit code 0 if no input crashed the process
//   window_check no-display             exit code 0 if the exception names what is missing
//   window_check close WINDOW           (on Linux) closes a window of another process
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <limits>
#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <string>
#include <vector>

#include "fisheye_calibration.h"
#if defined(_WIN32)
#include "registration/window_user_windows.h"
#elif defined(__linux__)
#include "registration/window_closer_linux.h"
#endif

namespace {

constexpr int resultSize = 5184;
constexpr const char* inputPicture = "D:/CorrectedImage.bmp";
constexpr const char* resultPicture = "D:/CorrectedImage2.bmp";

CalibrationPoint pair(float x, float y, float Xw, float Yw) {
  CalibrationPoint point{};
  point.ImagePtX = x;
  point.ImagePtY = y;
  point.Xw = Xw;
  point.Yw = Yw;
  return point;
}

// A picture in which every pixel and channel differs from its neighbours.
cv::Mat pattern(int width, int height) {
  cv::Mat picture(height, width, CV_8UC3);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const auto value = [&](int a, int b) {
        return static_cast<uchar>((a * x + b * y) % 251 + 1);
      };
      picture.at<cv::Vec3b>(y, x) = cv::Vec3b(value(7, 13), value(3, 29), value(17, 5));
    }
  }
  return picture;
}

bool fail(const std::string& text) {
  std::fprintf(stderr, "%s\n", text.c_str());
  return false;
}

void prepareDrive(const cv::Mat& picture) {
#if !defined(_WIN32)
  std::filesystem::create_directory("D:");
#endif
  std::filesystem::remove(resultPicture);
  cv::imwrite(inputPicture, picture);
}

using Points = std::vector<CalibrationPoint>;

#if defined(_WIN32)
// Runs the aid while a second thread presses the key.
bool straighten(const Points& points, double* params, double& value1, double& value2) {
  bool early = false;
  WindowUser user("Transformed Image",
                  [&] { early = early || std::filesystem::exists(resultPicture); });
  const bool result = GetPerspectiveTransformationParam(points, params, value1, value2);
  if (FISHEYE_CALIBRATION_INTERACTIVE != 0 && user.windowsSeen() != 1) {
    return fail("No window, or more than one");
  }
  if (early) return fail("The result was written before the key");
  return result;
}
#else
bool straighten(const Points& points, double* params, double& value1, double& value2) {
  return GetPerspectiveTransformationParam(points, params, value1, value2);
}
#endif

// Runs the aid on the picture; the result must equal `expected` pixel by pixel.
bool resultIs(const cv::Mat& picture, const Points& points, const cv::Mat& expected) {
  prepareDrive(picture);
  double params[9] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
  double value1 = 10;
  double value2 = 11;
  if (!straighten(points, params, value1, value2)) return fail("It was not straightened");
  for (int i = 0; i < 9; ++i) {
    if (params[i] != i + 1) return fail("params were written");
  }
  if (value1 != 10 || value2 != 11) return fail("value1 or value2 was written");

  const cv::Mat result = cv::imread(resultPicture, cv::IMREAD_UNCHANGED);
  if (result.size() != cv::Size(resultSize, resultSize) || result.type() != CV_8UC3) {
    return fail("The result is not 5184 x 5184 in colour");
  }
  for (int y = 0; y < resultSize; ++y) {
    if (std::memcmp(result.ptr(y), expected.ptr(y), std::size_t{3} * resultSize) != 0) {
      return fail("Row " + std::to_string(y) + " differs");
    }
  }
  return true;
}

// World positions are the image positions times 1/4: the picture is only padded with black.
bool checkIdentity() {
  const cv::Mat picture = pattern(641, 483);
  cv::Mat expected = cv::Mat::zeros(resultSize, resultSize, CV_8UC3);
  picture.copyTo(expected(cv::Rect(0, 0, picture.cols, picture.rows)));
  return resultIs(
      picture,
      {pair(32, 16, 8, 4), pair(352, 16, 88, 4), pair(32, 256, 8, 64), pair(352, 256, 88, 64)},
      expected);
}

// A leaning quadrilateral whose diagonal from point 0 to point 3 is 5 * 80 pixels (3-4-5) and 100
// world units long, so a world unit is 4 pixels: a square of 60 x 80 units becomes 240 x 320 pixels
// at (40, 24).
bool checkGeneral() {
  const cv::Mat picture = pattern(640, 480);
  const std::vector<cv::Point2f> source{{40, 24}, {300, 60}, {10, 330}, {280, 344}};
  const std::vector<cv::Point2f> layout{{40, 24}, {280, 24}, {40, 344}, {280, 344}};
  cv::Mat expected;
  cv::warpPerspective(picture, expected, cv::getPerspectiveTransform(source, layout),
                      cv::Size(resultSize, resultSize), cv::INTER_LINEAR, cv::BORDER_CONSTANT);
  std::vector<CalibrationPoint> points;
  const cv::Point2f world[] = {{500, 700}, {560, 700}, {500, 780}, {560, 780}};
  for (std::size_t i = 0; i < 4; ++i) {
    points.push_back(pair(source[i].x, source[i].y, world[i].x, world[i].y));
  }
  return resultIs(picture, points, expected);
}

bool checkNoDisplay() {
  try {
    resultIs(pattern(8, 8),
             {pair(0, 0, 0, 0), pair(1, 0, 1, 0), pair(0, 1, 0, 1), pair(1, 1, 1, 1)}, cv::Mat());
    return fail("No exception");
  } catch (const cv::Exception& error) {
    std::printf("%s\n", error.what());
    if (std::filesystem::exists(resultPicture)) return fail("A result was written");
    if (error.err.find("window cannot be shown") == std::string::npos) {
      return fail("The exception does not say that the window cannot be shown");
    }
    return true;
  }
}

// Points that determine no transform, and NaN. Without a display the picture is computed all the
// same, then the exception reports the missing display.
bool checkHostile() {
  prepareDrive(pattern(9, 7));
  for (const float value :
       {0.0f, std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(),
        -std::numeric_limits<float>::max(), std::numeric_limits<float>::denorm_min()}) {
    const CalibrationPoint same = pair(value, value, value, value);
    for (const auto& points : {Points(4, same), {pair(0, 0, 0, 0), same, same, pair(1, 1, 1, 1)}}) {
      double value1 = 0;
      double value2 = 0;
      try {
        straighten(points, nullptr, value1, value2);
      } catch (const cv::Exception& error) {
        std::printf("%s\n", error.what());
      }
    }
  }
  return true;
}

}  // namespace

int main(int argc, char** argv) {
#if defined(__linux__)
  if (argc == 3 && std::string(argv[1]) == "close") {
    return askToClose(static_cast<std::uint32_t>(std::stoul(argv[2]))) ? 0 : 1;
  }
#endif
  const std::string name = argc == 2 ? argv[1] : "";
  if (name == "identity") return checkIdentity() ? 0 : 1;
  if (name == "general") return checkGeneral() ? 0 : 1;
  if (name == "hostile") return checkHostile() ? 0 : 1;
  if (name == "no-display") return checkNoDisplay() ? 0 : 1;
  return fail("usage: window_check identity|general|hostile|no-display") ? 0 : 2;
}
