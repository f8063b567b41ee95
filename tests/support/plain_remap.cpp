#include "support/plain_remap.h"

#include <array>

namespace plain {
namespace {

struct Neighbour {
  int x;
  int y;
  int weight;  // of 1024
};

// The four pixels P00, P01, P10, P11 of the sample that a result pixel shows.
std::array<Neighbour, 4> neighboursAt(const cv::Mat& map1, const cv::Mat& map2, int x, int y) {
  const cv::Vec2s corner = map1.at<cv::Vec2s>(y, x);
  const int fractions = map2.at<unsigned short>(y, x) & 1023;
  const int a = fractions & 31;
  const int b = fractions >> 5;
  const int sx = corner[0];
  const int sy = corner[1];
  return {{{sx, sy, (32 - a) * (32 - b)},
           {sx + 1, sy, a * (32 - b)},
           {sx, sy + 1, (32 - a) * b},
           {sx + 1, sy + 1, a * b}}};
}

bool isIn(const cv::Mat& source, const Neighbour& n) {
  return n.x >= 0 && n.x < source.cols && n.y >= 0 && n.y < source.rows;
}

int byteAt(const cv::Mat& source, const Neighbour& n, int channel) {
  return source.ptr(
      n.y)[static_cast<std::size_t>(n.x) * source.elemSize() + static_cast<std::size_t>(channel)];
}

void requireMaps(const cv::Mat& source, const cv::Mat& map1, const cv::Mat& map2) {
  CV_Assert(source.depth() == CV_8U);
  CV_Assert(map1.type() == CV_16SC2);
  CV_Assert(map2.type() == CV_16UC1 && map2.size() == map1.size());
}

void requireTransparent(const cv::Mat& source, const cv::Mat& result, const cv::Mat& map1,
                        const cv::Mat& map2) {
  requireMaps(source, map1, map2);
  CV_Assert(result.size() == map1.size() && result.type() == source.type());
}

unsigned char* pixelAt(cv::Mat& image, int x, int y) {
  return image.ptr(y) + static_cast<std::size_t>(x) * image.elemSize();
}

// The mean of the neighbours that exist, unless the upper left one does not. With 15-bit weights it
// is 2^15 t/s, computed in single precision and cut to an integer before it is rounded to 8 bits.
void mixExisting(const cv::Mat& source, const std::array<Neighbour, 4>& neighbours,
                 unsigned char* to) {
  if (!isIn(source, neighbours[0])) {
    return;
  }
  for (int c = 0; c < source.channels(); ++c) {
    int t = 0;
    int s = 0;  // at least 32: the upper left one always has weight
    for (const Neighbour& n : neighbours) {
      if (isIn(source, n)) {
        t += 32 * n.weight * byteAt(source, n, c);
        s += 32 * n.weight;
      }
    }
    const float mean = static_cast<float>(t) * 32768.0F / static_cast<float>(s);
    to[c] = static_cast<unsigned char>((static_cast<int>(mean) + 16384) >> 15);
  }
}

}  // namespace

void remapConstant(const cv::Mat& source, cv::Mat& result, const cv::Mat& map1, const cv::Mat& map2,
                   unsigned char border) {
  requireMaps(source, map1, map2);
  result.create(map1.size(), source.type());
  for (int y = 0; y < map1.rows; ++y) {
    unsigned char* to = result.ptr(y);
    for (int x = 0; x < map1.cols; ++x) {
      const auto neighbours = neighboursAt(map1, map2, x, y);
      for (int c = 0; c < source.channels(); ++c) {
        int sum = 0;
        for (const Neighbour& n : neighbours) {
          sum += n.weight * (isIn(source, n) ? byteAt(source, n, c) : border);
        }
        *to++ = static_cast<unsigned char>((sum + 512) >> 10);
      }
    }
  }
}

void remapTransparent(const cv::Mat& source, cv::Mat& result, const cv::Mat& map1,
                      const cv::Mat& map2) {
  requireTransparent(source, result, map1, map2);
  for (int y = 0; y < map1.rows; ++y) {
    for (int x = 0; x < map1.cols; ++x) {
      mixExisting(source, neighboursAt(map1, map2, x, y), pixelAt(result, x, y));
    }
  }
}

void remapLastColumnAndRow(const cv::Mat& source, cv::Mat& result, const cv::Mat& map1,
                           const cv::Mat& map2) {
  requireTransparent(source, result, map1, map2);
  for (int y = 0; y < map1.rows; ++y) {
    for (int x = 0; x < map1.cols; ++x) {
      const cv::Vec2s corner = map1.at<cv::Vec2s>(y, x);
      if (corner[0] == source.cols - 1 || corner[1] == source.rows - 1) {
        mixExisting(source, neighboursAt(map1, map2, x, y), pixelAt(result, x, y));
      }
    }
  }
}

}  // namespace plain
