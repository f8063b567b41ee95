// Video files, devices and streams as sources of frames, through the image library.
#pragma once

#include <opencv2/videoio.hpp>
#include <vector>

#include "base/size.h"
#include "sources/frame_source.h"

namespace fisheye_calibration::program {

// What the number of frames means that a capture states.
enum class StatedCount {
  kEstimate,     // it follows from duration and rate
  kExact,        // each of them can be read unless the file is damaged
  kBeforeEdits,  // the file is whole, and may leave some of them out of what it shows
};

// Takes frames from an open capture. A frame that arrives but cannot be decoded, or is of another
// size than the first one, is broken. A file that lacks frames ends with one more broken frame,
// whose fault says how many are missing and where.
class CapturedFrames : public FrameSource {
 public:
  CapturedFrames(SourceKind kind, std::string name, const cv::VideoCapture& capture,
                 StatedCount stated);

  std::optional<SourceFrame> next() override;
  SourceKind kind() const override { return kind_; }
  double rate() const override { return rate_; }
  std::optional<int> count() const override { return count_; }
  std::string codec() const override;

 private:
  bool grab();
  bool grabPastBroken();
  std::optional<SourceFrame> end();
  void retrieve(SourceFrame& frame);
  void noteGap();
  bool isDamage(int missing) const;

  SourceKind kind_;
  std::string name_;
  cv::VideoCapture capture_;
  double rate_ = 0;
  std::optional<int> count_;
  StatedCount stated_;
  Size first_;             // size of the first frame; no size before it
  int number_ = 0;         // of the last frame, from 1
  int broken_ = 0;         // frames that have been skipped and are to be reported
  bool grabbed_ = false;   // the one behind them has arrived
  double position_ = 0;    // time of the last frame, milliseconds
  std::vector<int> gaps_;  // the numbers of the first frames after which time jumps
  int jumped_ = 0;         // frames for which there was time in all jumps
  bool ended_ = false;
};

std::unique_ptr<FrameSource> openVideo(const std::string& file);
// "/dev/video0" or an index.
std::unique_ptr<FrameSource> openDevice(const std::string& device);
std::unique_ptr<FrameSource> openStream(const std::string& address);

}  // namespace fisheye_calibration::program
