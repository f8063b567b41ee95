#include "support/plain_remap.h"

#include <algorithm>

namespace plain {
namespace {

// Where a result pixel is sampled: whole part and 1/32 pixels.
struct Position {
  int sx;
  int sy;
  int a;
  int b;
};

Position positionAt(const cv::Mat& map1, const cv::Mat& map2, int x, int y) {
  const cv::Vec2s whole = map1.at<cv::Vec2s>(y, x);
  const int fractions = map2.at<unsigned short>(y, x) & 1023;
  return {whole[0], whole[1], fractions & 31, fractions >> 5};
}

bool isIn(const cv::Mat& source, int x, int y) {
  return x >= 0 && x < source.cols && y >= 0 && y < source.rows;
}

unsigned char byteOf(const cv::Mat& source, int x, int y, int channel) {
  return source.ptr(
      y)[static_cast<std::size_t>(x) * source.elemSize() + static_cast<std::size_t>(channel)];
}

// The sample at a position; `pixel`(x, y) is the byte of the pixel in column x, row y.
template <class Pixel>
unsigned char mix(const Position& p, const Pixel& pixel) {
  const int top = (32 - p.a) * pixel(p.sx, p.sy) + p.a * pixel(p.sx + 1, p.sy);
  const int bottom = (32 - p.a) * pixel(p.sx, p.sy + 1) + p.a * pixel(p.sx + 1, p.sy + 1);
  return static_cast<unsigned char>(((32 - p.b) * top + p.b * bottom + 512) >> 10);
}

void requireMaps(const cv::Mat& source, const cv::Mat& map1, const cv::Mat& map2) {
  CV_Assert(source.depth() == CV_8U);
  CV_Assert(map1.type() == CV_16SC2);
  CV_Assert(map2.type() == CV_16UC1 && map2.size() == map1.size());
}

}  // namespace

void remapConstant(const cv::Mat& source, cv::Mat& result, const cv::Mat& map1, const cv::Mat& map2,
                   unsigned char border) {
  requireMaps(source, map1, map2);
  result.create(map1.size(), source.type());
  for (int y = 0; y < map1.rows; ++y) {
    unsigned char* to = result.ptr(y);
    for (int x = 0; x < map1.cols; ++x) {
      const Position position = positionAt(map1, map2, x, y);
      for (int c = 0; c < source.channels(); ++c) {
        *to++ = mix(position, [&](int px, int py) {
          return isIn(source, px, py) ? byteOf(source, px, py, c) : border;
        });
      }
    }
  }
}

void remapTransparent(const cv::Mat& source, cv::Mat& result, const cv::Mat& map1,
                      const cv::Mat& map2) {
  requireMaps(source, map1, map2);
  CV_Assert(result.size() == map1.size() && result.type() == source.type());
  for (int y = 0; y < map1.rows; ++y) {
    for (int x = 0; x < map1.cols; ++x) {
      const Position position = positionAt(map1, map2, x, y);
      if (!isIn(source, position.sx, position.sy)) {
        continue;
      }
      unsigned char* const to = result.ptr(y) + static_cast<std::size_t>(x) * source.elemSize();
      for (int c = 0; c < source.channels(); ++c) {
        to[c] = mix(position, [&](int px, int py) {
          return byteOf(source, std::min(px, source.cols - 1), std::min(py, source.rows - 1), c);
        });
      }
    }
  }
}

}  // namespace plain
