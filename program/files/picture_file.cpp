#include "files/picture_file.h"

#include <filesystem>
#include <opencv2/imgcodecs.hpp>
#include <vector>

#include "base/failure.h"
#include "base/file_path.h"
#include "files/read_file.h"

namespace fisheye_calibration::program {
namespace {

cv::Mat readAs(const std::string& path, int kind) {
  const std::string bytes = readFile(path);
  cv::Mat picture;
  if (!bytes.empty()) {
    const std::vector<unsigned char> buffer(bytes.begin(), bytes.end());
    try {
      picture = cv::imdecode(buffer, kind | cv::IMREAD_IGNORE_ORIENTATION);
    } catch (const cv::Exception&) {  // an absurd size in a damaged header
      picture.release();
    }
  }
  if (picture.empty()) {
    failBadInput(path + ": not a picture that can be read");
  }
  return picture;
}

}  // namespace

bool isPicture(const std::string& path) {
  std::error_code error;
  return std::filesystem::is_regular_file(filePath(path), error) && cv::haveImageReader(path);
}

cv::Mat readGreyPicture(const std::string& path) { return readAs(path, cv::IMREAD_GRAYSCALE); }

cv::Mat readColourPicture(const std::string& path) { return readAs(path, cv::IMREAD_COLOR); }

cv::Mat readFrame(const std::string& path) { return readAs(path, cv::IMREAD_ANYCOLOR); }

std::string encodePicture(const std::string& path, const cv::Mat& picture) {
  std::vector<unsigned char> bytes;
  const std::string ending = filePath(path).extension().string();
  if (!cv::imencode(ending, picture, bytes)) {
    failJob(path + ": the picture cannot be encoded");
  }
  return {bytes.begin(), bytes.end()};
}

void requirePictureName(const std::string& option, const std::string& path) {
  const std::string ending = filePath(path).extension().string();
  if (ending.empty() || !cv::haveImageWriter("picture" + ending)) {
    failBadInput(option + ": no kind of picture ends in \"" + ending + "\" (try .png): " + path);
  }
}

}  // namespace fisheye_calibration::program
