// Inputs of the recorded cases, and the hash of results: those of generator.mjs in C++.
#pragma once

#include <cstddef>
#include <cstdint>
#include <opencv2/core.hpp>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace reference {

constexpr int kGeneratorVersion = 1;

// A counter that advances by 2^32/golden ratio, mixed by the finaliser of MurmurHash3.
class Generator {
 public:
  explicit Generator(std::uint32_t seed) : state_(seed) {}

  std::uint32_t next();
  // A whole number of 0 ... n - 1.
  int below(int n) { return static_cast<int>(next() % static_cast<std::uint32_t>(n)); }
  int between(int low, int high) { return low + below(high - low + 1); }
  // In [-reach, reach), a multiple of reach/2^31.
  double number(double reach) { return (next() - 2147483648.0) / 2147483648.0 * reach; }

 private:
  std::uint32_t state_;
};

// 64-bit FNV-1a as 16 hexadecimal digits, of bytes, of the pixels of a continuous picture and of
// numbers as they lie in memory.
std::string hashOf(std::span<const unsigned char> bytes);
std::string hashOf(const cv::Mat& picture);
std::string hashOf(const std::vector<double>& numbers);

// noise: all values; extremes: 0 and 255 only; zero.
cv::Mat picture(Generator& generator, std::string_view kind, int width, int height, int channels);

// Row by row, n x n:
//   plain       any elements
//   dominant    a heavy diagonal
//   homography  3 x 3, near the identity
//   singular    small whole numbers, the last row a sum of multiples of the first two
//   near        the same but for a trace in the last element
//   tiny, huge  so small or large that products of three leave or nearly leave the range
std::vector<double> matrixElements(Generator& generator, std::string_view kind, int n);

std::vector<double> numbers(Generator& generator, std::size_t count, double reach);

// Corners of two quadrilaterals, x and y in turn; each value is one of 32-bit float.
std::vector<double> quadrilaterals(Generator& generator);

// Points of a level grid and where they lie in a tilted view, with noise up to `noise` pixels and
// every `nth` point far off (0: none).
struct TiltedGrid {
  std::vector<cv::Point2f> level;
  std::vector<cv::Point2f> tilted;
};
TiltedGrid tiltedGrid(int columns, int rows, double noise, int nth, std::uint32_t seed);

}  // namespace reference
