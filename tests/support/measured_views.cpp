#include "support/measured_views.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <locale>
#include <sstream>

namespace support {
namespace {

// Splits "1,80.0000,80.0000,233.8498,283.7476"; false for anything else.
bool parseRow(const std::string& line, MeasuredView& view) {
  std::istringstream row(line);
  row.imbue(std::locale::classic());
  int id = 0;
  char comma = 0;
  cv::Point3f object;
  cv::Point2f image;
  row >> id >> comma >> object.x >> comma >> object.y >> comma >> image.x >> comma >> image.y;
  if (!row) return false;
  view.pointIds.push_back(id);
  view.objectPoints.push_back(object);
  view.imagePoints.push_back(image);
  return true;
}

MeasuredView readView(const std::filesystem::path& folder, const std::string& name,
                      const cv::Size& imageSize) {
  MeasuredView view;
  view.name = name;
  view.imageSize = imageSize;
  std::ifstream file(folder / (name + ".csv"));
  std::string line;
  std::getline(file, line);  // PointId,Xw,Yw,ImagePtX,ImagePtY
  while (std::getline(file, line)) {
    if (!parseRow(line, view)) break;
  }
  return view;
}

}  // namespace

std::string measuredViewsFolder() {
  if (const char* folder = std::getenv("FISHEYE_CALIBRATION_REALDATA")) return folder;
#ifdef FISHEYE_CALIBRATION_REALDATA
  return FISHEYE_CALIBRATION_REALDATA;
#else
  return {};
#endif
}

std::vector<MeasuredCamera> readMeasuredSet(const std::string& set) {
  const std::filesystem::path folder = std::filesystem::path(measuredViewsFolder()) / set;
  const std::filesystem::path description = folder / "set.json";
  std::error_code absent;
  if (!std::filesystem::exists(description, absent)) return {};
  const cv::FileStorage json(description.string(),
                             cv::FileStorage::READ | cv::FileStorage::FORMAT_JSON);
  std::vector<MeasuredCamera> cameras;
  for (const cv::FileNode& entry : json["cameras"]) {
    MeasuredCamera camera;
    camera.name = static_cast<std::string>(entry["name"]);
    const cv::FileNode size = entry["image_size"];
    const cv::Size imageSize(static_cast<int>(size[0]), static_cast<int>(size[1]));
    for (const cv::FileNode& view : entry["views"]) {
      camera.views.push_back(readView(folder, static_cast<std::string>(view), imageSize));
    }
    cameras.push_back(camera);
  }
  return cameras;
}

}  // namespace support
