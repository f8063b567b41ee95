#include "files/picture_file.h"

#include <opencv2/imgcodecs.hpp>
#include <string_view>
#include <system_error>
#include <vector>

#include "base/failure.h"
#include "base/file_path.h"
#include "base/text.h"
#include "files/read_file.h"

namespace fisheye_calibration::program {
namespace {

cv::Mat readAs(const std::filesystem::path& path, int kind) {
  const std::string bytes = readFile(path);
  cv::Mat picture;
  if (!bytes.empty()) {
    const std::vector<unsigned char> buffer(bytes.begin(), bytes.end());
    try {
      picture = cv::imdecode(buffer, kind | cv::IMREAD_IGNORE_ORIENTATION);
    } catch (const cv::Exception&) {  // an impossible size in a damaged header
      picture.release();
    }
  }
  if (picture.empty()) {
    failBadInput(nameOf(path) + ": not a picture that can be read");
  }
  return picture;
}

}  // namespace

bool isPicture(const std::filesystem::path& path) {
  std::error_code error;
  return std::filesystem::is_regular_file(path, error) && cv::haveImageReader(nameOf(path));
}

cv::Mat readGreyPicture(const std::filesystem::path& path) {
  return readAs(path, cv::IMREAD_GRAYSCALE);
}

cv::Mat readColourPicture(const std::filesystem::path& path) {
  return readAs(path, cv::IMREAD_COLOR);
}

cv::Mat readFrame(const std::filesystem::path& path) { return readAs(path, cv::IMREAD_ANYCOLOR); }

void requirePictureName(const std::string& option, const std::filesystem::path& path) {
  const std::string extension = nameOf(path.extension());
  if (extension.empty() || !cv::haveImageWriter("picture" + extension)) {
    failBadInput(option + ": no kind of picture ends in " + inQuotes(extension) +
                 " (try .png): " + nameOf(path));
  }
}

void stagePicture(OutputFiles& files, const std::filesystem::path& path, const cv::Mat& picture) {
  std::vector<unsigned char> bytes;
  if (!cv::imencode(nameOf(path.extension()), picture, bytes)) {
    failJob(nameOf(path) + ": the picture cannot be encoded");
  }
  const auto* const text = reinterpret_cast<const char*>(bytes.data());
  files.stage(path, std::string_view(text, bytes.size()));
}

}  // namespace fisheye_calibration::program
