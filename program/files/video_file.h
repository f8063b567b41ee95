// Writing of videos.
#pragma once

#include <filesystem>
#include <opencv2/core.hpp>
#include <opencv2/videoio.hpp>
#include <string>

#include "base/size.h"
#include "files/output_files.h"

namespace fisheye_calibration::program {

// Fails as bad input if no video can be written there: as requireWritable() does, for extensions of
// no video, and for what is there and no plain file.
void requireVideoPath(const std::string& option, const std::filesystem::path& path);

// A video that grows picture by picture, and replaces an existing file when it is finished.
class VideoFile {
 public:
  // `rate`: frames per second. `original`: the four letters of the codec whose family is wanted;
  // empty for the usual one of such files.
  VideoFile(std::filesystem::path path, double rate, std::string original);

  // All pictures are of the size of the first one, in grey or colour. The first one fails as bad
  // input if a side is odd, which most codecs cannot store, and as a failed job if nothing here can
  // write such a file.
  void add(const cv::Mat& picture);

  int count() const { return count_; }
  // Names of the codec that is written, from the first picture on, and of the one that was wanted
  // instead, which is empty if they are the same.
  const std::string& codec() const { return codec_; }
  const std::string& missingCodec() const { return missingCodec_; }

  // Fails if not all of the pictures are in the file. Returns the rate that the file states, which
  // is a whole number where the writer knows no others.
  double finish();

 private:
  void open(const Size& size);
  bool tryToOpen(const std::string& code, const Size& size);

  std::filesystem::path path_;
  double rate_;
  std::string original_;
  OutputFiles files_;  // is destroyed after the writer, which holds a file open
  std::filesystem::path temporary_;
  cv::VideoWriter writer_;
  std::string codec_;
  std::string missingCodec_;
  int count_ = 0;
};

}  // namespace fisheye_calibration::program
