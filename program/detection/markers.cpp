#include "detection/markers.h"

#include <cstddef>

// The module moved from the contributed ones into `objdetect` in version 4.7, with other classes.
#define FISHEYE_CALIBRATION_NO_MARKERS 0
#define FISHEYE_CALIBRATION_CONTRIBUTED_MARKERS 1
#define FISHEYE_CALIBRATION_OBJDETECT_MARKERS 2
#if FISHEYE_CALIBRATION_MARKERS == FISHEYE_CALIBRATION_OBJDETECT_MARKERS
#include <opencv2/objdetect/aruco_detector.hpp>
#elif FISHEYE_CALIBRATION_MARKERS == FISHEYE_CALIBRATION_CONTRIBUTED_MARKERS
#include <opencv2/aruco.hpp>
#else
#include "base/failure.h"
#endif

namespace fisheye_calibration::program {

#if FISHEYE_CALIBRATION_MARKERS == FISHEYE_CALIBRATION_NO_MARKERS

bool markersAvailable() { return false; }

std::vector<Marker> findMarkers(const cv::Mat&, int, int) {
  failJob("this program was built without markers");
}

cv::Mat markerPattern(int, int) { failJob("this program was built without markers"); }

#else

namespace {

using Corners = std::vector<std::vector<cv::Point2f> >;

// The dictionaries of one size differ in their length only: a number has the same pattern in all.
int dictionaryOf(int bits, int count) {
  constexpr std::array<int, 4> kLengths = {50, 100, 250, 1000};
  constexpr std::array<std::array<int, 4>, 4> kNames = {
      {{cv::aruco::DICT_4X4_50, cv::aruco::DICT_4X4_100, cv::aruco::DICT_4X4_250,
        cv::aruco::DICT_4X4_1000},
       {cv::aruco::DICT_5X5_50, cv::aruco::DICT_5X5_100, cv::aruco::DICT_5X5_250,
        cv::aruco::DICT_5X5_1000},
       {cv::aruco::DICT_6X6_50, cv::aruco::DICT_6X6_100, cv::aruco::DICT_6X6_250,
        cv::aruco::DICT_6X6_1000},
       {cv::aruco::DICT_7X7_50, cv::aruco::DICT_7X7_100, cv::aruco::DICT_7X7_250,
        cv::aruco::DICT_7X7_1000}}};
  std::size_t length = 0;
  while (length + 1 < kLengths.size() && kLengths[length] < count) {
    ++length;
  }
  return kNames[static_cast<std::size_t>(bits - 4)][length];
}

template <typename Parameters>
void setParameters(Parameters& parameters) {
  parameters.minMarkerPerimeterRate = 0.01;  // of the picture's longer side: small markers, too
  parameters.polygonalApproxAccuracyRate = 0.05;  // the lens bends their sides
  parameters.adaptiveThreshWinSizeMax = 53;
}

#if FISHEYE_CALIBRATION_MARKERS == FISHEYE_CALIBRATION_OBJDETECT_MARKERS

void detect(const cv::Mat& grey, int dictionary, Corners& corners, std::vector<int>& ids) {
  cv::aruco::DetectorParameters parameters;
  setParameters(parameters);
  const cv::aruco::ArucoDetector detector(cv::aruco::getPredefinedDictionary(dictionary),
                                          parameters);
  detector.detectMarkers(grey, corners, ids);
}

void draw(int dictionary, int id, int side, cv::Mat& pattern) {
  cv::aruco::generateImageMarker(cv::aruco::getPredefinedDictionary(dictionary), id, side, pattern);
}

#else

void detect(const cv::Mat& grey, int dictionary, Corners& corners, std::vector<int>& ids) {
  const auto parameters = cv::aruco::DetectorParameters::create();
  setParameters(*parameters);
  cv::aruco::detectMarkers(grey, cv::aruco::getPredefinedDictionary(dictionary), corners, ids,
                           parameters);
}

void draw(int dictionary, int id, int side, cv::Mat& pattern) {
  cv::aruco::getPredefinedDictionary(dictionary)->drawMarker(id, side, pattern);
}

#endif

}  // namespace

bool markersAvailable() { return true; }

std::vector<Marker> findMarkers(const cv::Mat& grey, int bits, int count) {
  Corners corners;
  std::vector<int> ids;
  detect(grey, dictionaryOf(bits, count), corners, ids);
  std::vector<Marker> markers;
  for (std::size_t i = 0; i < ids.size(); ++i) {
    markers.push_back(
        {.id = ids[i], .corners = {corners[i][0], corners[i][1], corners[i][2], corners[i][3]}});
  }
  return markers;
}

cv::Mat markerPattern(int bits, int id) {
  cv::Mat pattern;
  draw(dictionaryOf(bits, kLargestMarkerCount), id, bits + 2, pattern);
  return pattern;
}

#endif

}  // namespace fisheye_calibration::program
