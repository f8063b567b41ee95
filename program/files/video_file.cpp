#include "files/video_file.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <opencv2/imgproc.hpp>
#include <opencv2/videoio/registry.hpp>
#include <system_error>
#include <utility>
#include <vector>

#include "base/failure.h"
#include "base/file_path.h"
#include "base/text.h"
#include "files/decoder_messages.h"
#include "files/output_paths.h"
#include "files/quiet_decoders.h"
#include "files/video_kind.h"

namespace fisheye_calibration::program {
namespace fs = std::filesystem;
namespace {

constexpr std::array<cv::VideoCaptureAPIs, 3> kBackends = {cv::CAP_FFMPEG, cv::CAP_MSMF,
                                                           cv::CAP_OPENCV_MJPEG};

int fourLetters(const std::string& code) {
  return code.size() == 4 ? cv::VideoWriter::fourcc(code[0], code[1], code[2], code[3]) : 0;
}

struct Written {
  int count = 0;    // frames that can be read
  double rate = 0;  // as the file states it
};

// Reads a finished file to its end: its header may count frames for which the disk had no room.
Written readBack(const fs::path& path) {
  for (const cv::VideoCaptureAPIs backend : kBackends) {
    try {
      cv::VideoCapture capture(nameOf(path), backend);
      if (capture.isOpened()) {
        Written written = {.rate = capture.get(cv::CAP_PROP_FPS)};
        while (capture.grab()) {
          ++written.count;
        }
        return written;
      }
    } catch (const cv::Exception&) {  // the next one may do better
      continue;
    }
  }
  return {};
}

}  // namespace

void requireVideoPath(const std::string& option, const fs::path& path) {
  requireWritable(option, path);
  if (codesFor(path, {}).empty()) {
    failBadInput(option + ": no kind of video that can be written ends in " +
                 inQuotes(nameOf(path.extension())) + " (try .mp4 or .avi): " + nameOf(path));
  }
  std::error_code error;
  if (fs::exists(path, error) && !fs::is_regular_file(path, error)) {
    failBadInput(option + ": " + nameOf(path) + " is no plain file; a video needs one");
  }
}

VideoFile::VideoFile(fs::path path, double rate, std::string original)
    : path_(std::move(path)), rate_(rate), original_(std::move(original)) {
  quietDecoders();
}

void VideoFile::add(const cv::Mat& picture) {
  if (!writer_.isOpened()) {
    open({.width = picture.cols, .height = picture.rows});
  }
  if (picture.channels() == 1) {
    cv::Mat colour;
    cv::cvtColor(picture, colour, cv::COLOR_GRAY2BGR);
    writer_.write(colour);
  } else {
    writer_.write(picture);
  }
  ++count_;
}

void VideoFile::open(const Size& size) {
  if (size.width % 2 != 0 || size.height % 2 != 0) {
    failBadInput(nameOf(path_) + ": videos need even sides, not " + sizeText(size) +
                 "; give another --size");
  }
  if (temporary_.empty()) {
    temporary_ = files_.stageNew(path_);
  }
  const std::vector<std::string> codes = codesFor(path_, original_);
  const auto opened = std::find_if(codes.begin(), codes.end(),
                                   [&](const std::string& code) { return tryToOpen(code, size); });
  if (opened == codes.end()) {
    failJob(nameOf(path_) +
            ": a video of this kind cannot be written here; one that ends in .avi can");
  }
  codec_ = codecName(*opened);
  const std::string wanted = codecName(original_);
  missingCodec_ = wanted == codec_ ? "" : wanted;
}

bool VideoFile::tryToOpen(const std::string& code, const Size& size) {
  const std::vector<cv::VideoCaptureAPIs> built = cv::videoio_registry::getWriterBackends();
  for (const cv::VideoCaptureAPIs backend : kBackends) {
    if (std::find(built.begin(), built.end(), backend) == built.end()) {
      continue;
    }
    // The image library's own writer would cut the fraction off.
    const double rate = backend == cv::CAP_OPENCV_MJPEG ? std::max(std::round(rate_), 1.0) : rate_;
    const DecoderMessages quiet;  // some encoders announce themselves
    try {
      if (writer_.open(nameOf(temporary_), backend, fourLetters(code), rate,
                       cv::Size(size.width, size.height), true)) {
        return true;
      }
    } catch (const cv::Exception&) {  // the next one may do better
      continue;
    }
  }
  return false;
}

double VideoFile::finish() {
  {
    const DecoderMessages quiet;  // and some say good-bye
    writer_.release();
  }
  // The writer does not say whether all has been written.
  const Written written = readBack(temporary_);
  if (written.count < count_) {
    failJob(nameOf(path_) + ": the video could not be written as a whole (" +
            std::to_string(written.count) + " of " + std::to_string(count_) +
            " frames arrived); is there room on the disk?");
  }
  files_.commit();
  return written.rate;
}

}  // namespace fisheye_calibration::program
