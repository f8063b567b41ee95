#include "program/support/sample_video.h"

#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <opencv2/videoio.hpp>
#include <opencv2/videoio/registry.hpp>
#include <stdexcept>

namespace fisheye_calibration::program {
namespace {

std::string readAll(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

void writeAll(const std::string& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

std::size_t littleEndian(const std::string& bytes, std::size_t at) {
  std::size_t value = 0;
  for (std::size_t i = 4; i-- > 0;) {
    value = value << 8 | static_cast<unsigned char>(bytes.at(at + i));
  }
  return value;
}

struct Chunk {
  std::size_t begin;
  std::size_t length;
};

// Frames are chunks "00dc" behind "movi": name, length, bytes, and one more if the length is odd.
Chunk chunkOf(const std::string& bytes, int frame) {
  std::size_t at = bytes.find("movi") + 4;
  while (true) {
    const std::size_t length = littleEndian(bytes, at + 4);
    if (bytes.compare(at, 4, "00dc") == 0 && --frame == 0) {
      return {at + 8, length};
    }
    at += 8 + length + length % 2;
  }
}

}  // namespace

bool hasFfmpeg() { return cv::videoio_registry::isBackendBuiltIn(cv::CAP_FFMPEG); }

void writeVideo(const std::string& path, const std::vector<cv::Mat>& pictures) {
  cv::VideoWriter writer(path, cv::CAP_OPENCV_MJPEG, cv::VideoWriter::fourcc('M', 'J', 'P', 'G'),
                         kSampleRate, pictures.at(0).size(), true);
  if (!writer.isOpened()) {
    throw std::runtime_error(path + ": cannot write");
  }
  for (const cv::Mat& picture : pictures) {
    writer.write(picture);
  }
}

int shadeOf(int frame) { return 30 + 15 * frame; }

std::vector<cv::Mat> shadedPictures(int count, const cv::Size& size) {
  std::vector<cv::Mat> pictures;
  for (int frame = 1; frame <= count; ++frame) {
    pictures.emplace_back(size, CV_8UC3, cv::Scalar::all(shadeOf(frame)));
  }
  return pictures;
}

int frameOfShade(const cv::Mat& picture, int count) {
  const double shade = cv::mean(picture)[0];
  for (int frame = 1; frame <= count; ++frame) {
    if (std::abs(shade - shadeOf(frame)) < 4) {
      return frame;
    }
  }
  return 0;
}

void replaceFrame(const std::string& path, int frame, const std::string& bytes) {
  std::string video = readAll(path);
  const Chunk chunk = chunkOf(video, frame);
  if (bytes.size() > chunk.length) {
    throw std::runtime_error(path + ": no room for the frame");
  }
  video.replace(chunk.begin, chunk.length, bytes + std::string(chunk.length - bytes.size(), '\0'));
  writeAll(path, video);
}

void cutOffIn(const std::string& path, int frame) {
  const std::string video = readAll(path);
  const Chunk chunk = chunkOf(video, frame);
  writeAll(path, video.substr(0, chunk.begin + chunk.length / 2));
}

}  // namespace fisheye_calibration::program
