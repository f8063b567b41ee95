#include "reference/generator.h"

#include <array>
#include <cstdio>
#include <cstring>

namespace reference {

std::uint32_t Generator::next() {
  state_ += 0x9e3779b9U;
  std::uint32_t z = state_;
  z = (z ^ (z >> 16)) * 0x85ebca6bU;
  z = (z ^ (z >> 13)) * 0xc2b2ae35U;
  return z ^ (z >> 16);
}

std::string hashOf(std::span<const unsigned char> bytes) {
  std::uint64_t hash = 0xcbf29ce484222325U;
  for (const unsigned char byte : bytes) {
    hash = (hash ^ byte) * 0x100000001b3U;
  }
  std::array<char, 17> digits{};
  std::snprintf(digits.data(), digits.size(), "%08lx%08lx", static_cast<unsigned long>(hash >> 32),
                static_cast<unsigned long>(hash & 0xffffffffU));
  return digits.data();
}

std::string hashOf(const cv::Mat& picture) {
  CV_Assert(picture.isContinuous());
  return hashOf(std::span(picture.data, picture.total() * picture.elemSize()));
}

std::string hashOf(const std::vector<double>& numbers) {
  std::vector<unsigned char> bytes(numbers.size() * sizeof(double));
  std::memcpy(bytes.data(), numbers.data(), bytes.size());
  return hashOf(bytes);
}

cv::Mat picture(Generator& generator, std::string_view kind, int width, int height, int channels) {
  cv::Mat result(height, width, CV_8UC(channels), cv::Scalar::all(0));
  if (kind == "zero") return result;
  const std::span bytes(result.data, result.total() * result.elemSize());
  for (unsigned char& byte : bytes) {
    byte = static_cast<unsigned char>(kind == "noise" ? generator.below(256)
                                                      : 255 * generator.below(2));
  }
  return result;
}

std::vector<double> matrixElements(Generator& generator, std::string_view kind, int n) {
  constexpr std::array<double, 9> kReaches{0.1, 0.1, 15, 0.1, 0.1, 15, 1e-4, 1e-4, 0};
  const auto side = static_cast<std::size_t>(n);
  const double reach = kind == "tiny" ? 1e-103 : kind == "huge" ? 1e101 : 1;
  const bool dependent = kind == "singular" || kind == "near";
  std::vector<double> elements(side * side);
  for (std::size_t i = 0; i < elements.size(); ++i) {
    double& element = elements[i];
    if (!dependent) {
      element = generator.number(reach);
    } else if (i / side < side - 1) {
      element = generator.between(-9, 9);
    } else {
      element = elements[i % side] + 2 * elements[side + i % side];
    }
    if (kind == "dominant" && i % (side + 1) == 0) element += 16;
    if (kind == "homography") element *= kReaches.at(i);
    if (kind == "homography" && i % 4 == 0) element += 1;
  }
  if (kind == "near") elements.back() += generator.number(1e-13);
  return elements;
}

std::vector<double> numbers(Generator& generator, std::size_t count, double reach) {
  std::vector<double> result(count);
  for (double& x : result) x = generator.number(reach);
  return result;
}

std::vector<double> quadrilaterals(Generator& generator) {
  constexpr std::array<double, 8> kCorners{100, 100, 900, 100, 100, 700, 900, 700};
  std::vector<double> result;
  for (std::size_t i = 0; i < 16; ++i) {
    result.push_back(static_cast<float>(kCorners.at(i % 8) + generator.number(90)));
  }
  return result;
}

TiltedGrid tiltedGrid(int columns, int rows, double noise, int nth, std::uint32_t seed) {
  Generator generator(seed);
  const std::vector<double> h = matrixElements(generator, "homography", 3);
  TiltedGrid grid;
  for (int i = 0; i < columns * rows; ++i) {
    const double x = 150 + 70 * (i % columns);
    const int row = i / columns;
    const double y = 90 + 70 * row;
    const double w = h[6] * x + h[7] * y + h[8];
    const int astray = nth > 0 && i % nth == nth - 1 ? 80 : 0;
    const double u = (h[0] * x + h[1] * y + h[2]) / w + generator.number(noise) + astray;
    const double v = (h[3] * x + h[4] * y + h[5]) / w + generator.number(noise);
    grid.level.emplace_back(static_cast<float>(x), static_cast<float>(y));
    grid.tilted.emplace_back(static_cast<float>(u), static_cast<float>(v));
  }
  return grid;
}

}  // namespace reference
