#include "detection/markers.h"

#include <algorithm>
#include <cstddef>
#include <opencv2/imgproc.hpp>

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

constexpr int kSmallestWindow = 3;  // of the adaptive thresholds, pixels
constexpr int kLargestWindow = 53;
constexpr double kStraightness = 0.05;  // of a quadrilateral's perimeter: the lens bends its sides

// The perimeters of all quadrilaterals that may be markers, at two of the thresholds.
std::vector<double> perimetersOfCandidates(const cv::Mat& grey) {
  std::vector<double> perimeters;
  for (const int window : {kSmallestWindow, kLargestWindow}) {
    cv::Mat binary;
    cv::adaptiveThreshold(grey, binary, 255, cv::ADAPTIVE_THRESH_MEAN_C, cv::THRESH_BINARY_INV,
                          window, 7);
    std::vector<std::vector<cv::Point> > outlines;
    cv::findContours(binary, outlines, cv::RETR_LIST, cv::CHAIN_APPROX_NONE);
    for (const std::vector<cv::Point>& outline : outlines) {
      std::vector<cv::Point> corners;
      cv::approxPolyDP(outline, corners, kStraightness * static_cast<double>(outline.size()), true);
      if (corners.size() == 4 && cv::isContourConvex(corners)) {
        perimeters.push_back(static_cast<double>(outline.size()));
      }
    }
  }
  return perimeters;
}

// The smallest perimeter of markers to look for, as a share of the picture's longer side. The image
// library compares all candidates with each other, which takes minutes on noise or a honeycomb; so
// small ones are left out where there are far more of them than markers.
double smallestPerimeter(const cv::Mat& grey, int count) {
  constexpr double kSmallest = 0.01;
  constexpr double kLargest = 1;
  constexpr int kMostOthers = 1500;
  const std::vector<double> perimeters = perimetersOfCandidates(grey);
  const double longer = std::max(grey.cols, grey.rows);
  double rate = kSmallest;
  while (rate < kLargest && std::count_if(perimeters.begin(), perimeters.end(), [&](double p) {
                              return p >= rate * longer;
                            }) > 8 * count + kMostOthers) {
    rate *= 1.5;
  }
  return rate;
}

template <typename Parameters>
void setParameters(Parameters& parameters, double smallestPerimeter) {
  parameters.minMarkerPerimeterRate = smallestPerimeter;
  parameters.polygonalApproxAccuracyRate = kStraightness;
  parameters.adaptiveThreshWinSizeMin = kSmallestWindow;
  parameters.adaptiveThreshWinSizeMax = kLargestWindow;
}

#if FISHEYE_CALIBRATION_MARKERS == FISHEYE_CALIBRATION_OBJDETECT_MARKERS

void detect(const cv::Mat& grey, int dictionary, double smallest, Corners& corners,
            std::vector<int>& ids) {
  cv::aruco::DetectorParameters parameters;
  setParameters(parameters, smallest);
  const cv::aruco::ArucoDetector detector(cv::aruco::getPredefinedDictionary(dictionary),
                                          parameters);
  detector.detectMarkers(grey, corners, ids);
}

void draw(int dictionary, int id, int side, cv::Mat& pattern) {
  cv::aruco::generateImageMarker(cv::aruco::getPredefinedDictionary(dictionary), id, side, pattern);
}

#else

void detect(const cv::Mat& grey, int dictionary, double smallest, Corners& corners,
            std::vector<int>& ids) {
  const auto parameters = cv::aruco::DetectorParameters::create();
  setParameters(*parameters, smallest);
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
  detect(grey, dictionaryOf(bits, count), smallestPerimeter(grey, count), corners, ids);
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
