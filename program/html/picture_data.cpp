#include "html/picture_data.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "base/failure.h"

namespace fisheye_calibration::program {
namespace {

constexpr int kJpegQuality = 82;

std::string encoded(const cv::Mat& picture, const std::string& kind,
                    const std::vector<int>& options) {
  std::vector<unsigned char> bytes;
  if (!cv::imencode(kind, picture, bytes, options)) {
    failJob("the report: a picture cannot be written as " + kind);
  }
  return base64({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

}  // namespace

std::string base64(std::string_view bytes) {
  constexpr std::string_view kDigits =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    std::uint32_t group = 0;
    const std::size_t count = std::min<std::size_t>(3, bytes.size() - i);
    for (std::size_t j = 0; j < 3; ++j) {
      group = (group << 8U) | (j < count ? static_cast<unsigned char>(bytes[i + j]) : 0U);
    }
    for (std::size_t j = 0; j < 4; ++j) {
      text += j <= count ? kDigits[(group >> (18U - 6U * j)) & 63U] : '=';
    }
  }
  return text;
}

std::string jpegData(const cv::Mat& picture, int longestSide) {
  const double scale = static_cast<double>(longestSide) / std::max(picture.cols, picture.rows);
  cv::Mat reduced = picture;
  if (scale < 1) {
    const cv::Size size(std::max(1, static_cast<int>(std::lround(picture.cols * scale))),
                        std::max(1, static_cast<int>(std::lround(picture.rows * scale))));
    cv::resize(picture, reduced, size, 0, 0, cv::INTER_AREA);
  }
  return "data:image/jpeg;base64," +
         encoded(reduced, ".jpg", {cv::IMWRITE_JPEG_QUALITY, kJpegQuality});
}

std::string pngData(const cv::Mat& picture) {
  return "data:image/png;base64," + encoded(picture, ".png", {});
}

}  // namespace fisheye_calibration::program
