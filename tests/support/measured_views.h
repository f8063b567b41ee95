// Measured points of real lenses, kept outside the project: one CSV a view, one set.json a set.
#pragma once

#include <opencv2/core.hpp>
#include <string>
#include <vector>

namespace support {

struct MeasuredView {
  std::string name;
  cv::Size imageSize;
  std::vector<int> pointIds;
  std::vector<cv::Point3f> objectPoints;  // Z = 0
  std::vector<cv::Point2f> imagePoints;   // pixels
};

struct MeasuredCamera {
  std::string name;
  std::vector<MeasuredView> views;
};

// Folder of the measured sets: the environment variable FISHEYE_CALIBRATION_REALDATA, else the
// definition of that name the library was built with, else empty.
std::string measuredViewsFolder();

// The cameras of one set; none where the folder is absent or a file cannot be read.
std::vector<MeasuredCamera> readMeasuredSet(const std::string& set);

}  // namespace support
