#include "commands/frame_sink.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <ostream>
#include <utility>

#include "base/file_path.h"
#include "base/text.h"
#include "commands/frame_jobs.h"
#include "commands/option_values.h"
#include "files/output_files.h"
#include "files/picture_file.h"
#include "files/video_file.h"
#include "files/video_kind.h"

namespace fisheye_calibration::program {
namespace fs = std::filesystem;
namespace {

constexpr double kUsualRate = 25;      // frames per second, where nothing states a rate
constexpr double kHighestRate = 1000;  // frames per second

class FolderSink : public FrameSink {
 public:
  explicit FolderSink(fs::path folder) : folder_(std::move(folder)) {
    prepareFolder("-o", folder_);
  }

  void put(const cv::Mat& picture, int number) override {
    OutputFiles files;
    stagePicture(files, folder_ / pathOf(frameFileName(number) + ".png"), picture);
    files.commit();
  }

  std::string finish(std::ostream&) override { return nameOf(folder_); }

 private:
  fs::path folder_;
};

class VideoSink : public FrameSink {
 public:
  VideoSink(fs::path path, double rate, std::string codec)
      : path_(std::move(path)), rate_(rate), video_(path_, rate, std::move(codec)) {}

  void put(const cv::Mat& picture, int) override {
    if (video_.count() > 0) {
      video_.add(picture);
      return;
    }
    try {
      video_.add(picture);
    } catch (const Failure& failure) {
      throw HopelessRun(failure.code(), failure.what());
    }
  }

  double rate() const override { return rate_; }

  std::string finish(std::ostream& messages) override {
    if (video_.count() == 0) {
      failJob(nameOf(path_) + ": not written, for want of a frame");
    }
    const double rate = video_.finish();
    if (!video_.missingCodec().empty()) {
      messages << "note: " << nameOf(path_) << ": " << video_.missingCodec()
               << ", as in the original, cannot be written to such a file here; it is "
               << video_.codec() << "\n";
    }
    if (std::abs(rate - rate_) > 0.001 * rate_) {
      messages << "note: " << nameOf(path_) << ": " << general(rate_, 6)
               << " frames per second cannot be written to such a file here; it plays at "
               << general(rate, 6) << "\n";
    }
    return nameOf(path_) + " (" + video_.codec() + ", " + general(rate, 6) + " frames per second)";
  }

 private:
  fs::path path_;
  double rate_;
  VideoFile video_;
};

double rateOfVideo(const fs::path& output, const std::string& text, const FrameSource& source,
                   std::ostream& messages) {
  if (!text.empty()) {
    const double rate = parsePositiveNumber("--fps", text);
    if (rate > kHighestRate) {
      failBadInput("--fps: at most 1000 frames per second, not " + inQuotes(text));
    }
    return rate;
  }
  if (source.rate() > 0) {
    return source.rate();
  }
  messages << "note: the source states no rate; " << nameOf(output) << " plays at "
           << general(kUsualRate, 6) << " frames per second (--fps changes that)\n";
  return kUsualRate;
}

}  // namespace

std::string frameFileName(int number) {
  constexpr std::size_t kDigits = 6;
  std::string digits = std::to_string(number);
  digits.insert(0, kDigits - std::min(digits.size(), kDigits), '0');
  return "frame-" + digits;
}

std::unique_ptr<FrameSink> openSink(const fs::path& output, const std::string& rate,
                                    const FrameSource& source, std::ostream& messages) {
  if (!hasVideoName(output)) {
    if (!rate.empty()) {
      failBadInput("--fps goes with a video as -o");
    }
    return std::make_unique<FolderSink>(output);
  }
  requireVideoPath("-o", output);
  return std::make_unique<VideoSink>(output, rateOfVideo(output, rate, source, messages),
                                     source.codec());
}

}  // namespace fisheye_calibration::program
