#include "images/image_operations.h"

#include <algorithm>
#include <cstring>

#include "images/nearest_pixel.h"

namespace fisheye_calibration {
namespace {

bool holdsPixels(const cv::Mat& image) {
  const int channels = image.channels();
  return image.depth() == CV_8U && (channels == 1 || channels == 3 || channels == 4);
}

std::size_t rowBytes(const cv::Mat& image) {
  return static_cast<std::size_t>(image.cols) * image.elemSize();
}

// Where image row j starts in the host's buffer, in bytes.
std::size_t bufferOffset(const cv::Mat& image, int j) {
  return static_cast<std::size_t>(image.rows - 1 - j) * rowBytes(image);
}

template <std::size_t kBytes>
void warpPixels(const cv::Mat& source, const cv::Matx33d& h, double dx, double dy,
                unsigned char fill, cv::Mat& result) {
  for (int y = 0; y < result.rows; ++y) {
    unsigned char* to = result.ptr(y);
    const double py = y - dy;
    for (int x = 0; x < result.cols; ++x, to += kBytes) {
      const double px = x - dx;
      const double w = h(2, 0) * px + h(2, 1) * py + h(2, 2);
      const auto sx = static_cast<float>((h(0, 0) * px + h(0, 1) * py + h(0, 2)) / w);
      const auto sy = static_cast<float>((h(1, 0) * px + h(1, 1) * py + h(1, 2)) / w);
      const int ix = images::nearestPixel(sx, source.cols);
      const int iy = images::nearestPixel(sy, source.rows);
      if (ix >= 0 && iy >= 0) {
        std::memcpy(to, source.ptr(iy) + static_cast<std::size_t>(ix) * kBytes, kBytes);
      } else {
        std::memset(to, fill, kBytes);
      }
    }
  }
}

}  // namespace

void BufferToImage(const unsigned char* buffer, int width, int height, int bitCount,
                   cv::Mat& image) {
  const bool fits = holdsPixels(image) && image.dims == 2 && image.cols == width &&
                    image.rows == height && image.channels() * 8 == bitCount;
  if (buffer == nullptr || !fits) {
    return;
  }
  for (int j = 0; j < image.rows; ++j) {
    std::memcpy(image.ptr(j), buffer + bufferOffset(image, j), rowBytes(image));
  }
}

void ImageToBuffer(const cv::Mat& image, unsigned char* buffer, int& width, int& height,
                   int& bitCount) {
  width = image.cols;
  height = image.rows;
  bitCount = image.channels() * 8;
  if (buffer == nullptr || !holdsPixels(image)) {
    return;
  }
  for (int j = 0; j < image.rows; ++j) {
    std::memcpy(buffer + bufferOffset(image, j), image.ptr(j), rowBytes(image));
  }
}

bool IsImageBlack(const cv::Mat& image) {
  if (!holdsPixels(image)) {
    return true;
  }
  for (int j = 0; j < image.rows; ++j) {
    const unsigned char* const row = image.ptr(j);
    if (std::any_of(row, row + rowBytes(image), [](unsigned char byte) { return byte != 0; })) {
      return false;
    }
  }
  return true;
}

bool WarpByInverseHomography(const cv::Mat& source, cv::Mat& result, const cv::Mat& Hinv, double dx,
                             double dy, unsigned char fill) {
  cv::Matx33d h;
  Hinv.convertTo(h, CV_64F);
  cv::Mat warped(source.size(), source.type(), cv::Scalar::all(0));  // result may be the source
  if (holdsPixels(source)) {
    switch (source.channels()) {
      case 1:
        warpPixels<1>(source, h, dx, dy, fill, warped);
        break;
      case 3:
        warpPixels<3>(source, h, dx, dy, fill, warped);
        break;
      default:
        warpPixels<4>(source, h, dx, dy, fill, warped);
    }
  }
  result = warped;
  return true;
}

}  // namespace fisheye_calibration
