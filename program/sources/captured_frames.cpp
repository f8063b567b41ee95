#include "sources/captured_frames.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "base/text.h"

namespace fisheye_calibration::program {
namespace {

constexpr double kHighestRate = 1000;  // frames per second; more is no statement
constexpr double kHighestCount = 1e8;  // frames
constexpr std::size_t kMostNamedGaps = 8;
constexpr int kMostBrokenInARow = 10000;  // after which a file counts as ended
constexpr const char* kUndecodable = "it cannot be decoded";

double statedRate(const cv::VideoCapture& capture) {
  const double rate = capture.get(cv::CAP_PROP_FPS);
  return rate > 0 && rate <= kHighestRate ? rate : 0;  // also for a rate that is not a number
}

std::optional<int> statedCount(const cv::VideoCapture& capture) {
  const double count = capture.get(cv::CAP_PROP_FRAME_COUNT);
  return count >= 1 && count <= kHighestCount ? std::optional(static_cast<int>(count))
                                              : std::nullopt;
}

// How many frames may be missing from an estimated number before it tells anything.
int tolerance(int count) { return 2 + count / 50; }

}  // namespace

CapturedFrames::CapturedFrames(SourceKind kind, std::string name, const cv::VideoCapture& capture,
                               StatedCount stated)
    : kind_(kind), name_(std::move(name)), capture_(capture), stated_(stated) {
  rate_ = statedRate(capture_);
  if (kind_ == SourceKind::kVideo) {
    count_ = statedCount(capture_);
  }
}

std::string CapturedFrames::codec() const {
  if (kind_ == SourceKind::kDevice) {
    return {};  // what it states is the layout of its pixels
  }
  const double value = capture_.get(cv::CAP_PROP_FOURCC);
  if (!(value >= 1 && value <= 4294967295.0)) {
    return {};
  }
  const auto bits = static_cast<unsigned int>(value);
  std::string code;
  for (unsigned int shift = 0; shift < 32; shift += 8) {
    const auto letter = static_cast<char>((bits >> shift) & 0xffu);
    if (letter == '\0' && !code.empty() && (bits >> shift) == 0) {
      break;  // a shorter name, such as "vp9"
    }
    if (letter < ' ' || letter > '~') {
      return {};
    }
    code += letter;
  }
  return code;
}

std::optional<SourceFrame> CapturedFrames::next() {
  if (ended_) {
    return std::nullopt;
  }
  if (!grabbed_ && !grabPastBroken()) {
    return end();
  }
  ++number_;
  SourceFrame frame;
  frame.name = name_ + ", frame " + std::to_string(number_);
  if (broken_ > 0) {
    --broken_;
    frame.fault = kUndecodable;
    return frame;
  }
  grabbed_ = false;
  noteGap();
  retrieve(frame);
  return frame;
}

bool CapturedFrames::grab() {
  try {
    return capture_.grab();
  } catch (const cv::Exception&) {  // the same as no frame
    return false;
  }
}

// A reader may fail at a broken frame and go on behind it when it is asked again.
bool CapturedFrames::grabPastBroken() {
  const int left = std::min(count_.value_or(0) - number_, kMostBrokenInARow);
  grabbed_ = grab();
  for (int tried = 1; !grabbed_ && tried < left; ++tried) {
    grabbed_ = grab();
    broken_ = grabbed_ ? tried : 0;
  }
  return grabbed_;
}

void CapturedFrames::retrieve(SourceFrame& frame) {
  cv::Mat picture;
  try {
    if (!capture_.retrieve(picture) || picture.empty()) {
      frame.fault = kUndecodable;
      return;
    }
  } catch (const cv::Exception& failure) {
    frame.fault = std::string(kUndecodable) + " (" + failure.err + ")";
    return;
  }
  const Size size = {.width = picture.cols, .height = picture.rows};
  if (picture.type() != CV_8UC1 && picture.type() != CV_8UC3) {
    frame.fault = "neither grey nor colour with 8 bits a pixel";
  } else if (first_ != Size() && size != first_) {
    frame.fault = sizeText(size) + " pixels; the first frame has " + sizeText(first_);
  } else if (size.width > kLargestImageSide || size.height > kLargestImageSide) {
    frame.fault = sizeText(size) + " pixels; at most " + std::to_string(kLargestImageSide) +
                  " a side can be used";
  } else {
    first_ = size;
    frame.picture = picture.clone();  // the capture may use its memory again
  }
}

void CapturedFrames::noteGap() {
  const double position = capture_.get(cv::CAP_PROP_POS_MSEC);
  const double frames = (position - position_) * rate_ / 1000;
  if (kind_ == SourceKind::kVideo && number_ > 1 && frames > 1.5 && frames < kHighestCount) {
    jumped_ += static_cast<int>(std::min(std::round(frames) - 1, kHighestCount - jumped_));
    if (gaps_.size() <= kMostNamedGaps) {
      gaps_.push_back(number_ - 1);
    }
  }
  position_ = position;
}

bool CapturedFrames::isDamage(int missing) const {
  switch (stated_) {
    case StatedCount::kEstimate:
      return missing > tolerance(*count_);
    case StatedCount::kExact:
      return missing > 0;
    case StatedCount::kBeforeEdits:
      break;
  }
  // What is left out on purpose leaves no jumps. Times that are uneven on purpose would jump by
  // more.
  return jumped_ > 0 && jumped_ <= missing;
}

std::optional<SourceFrame> CapturedFrames::end() {
  ended_ = true;
  const int missing = count_.value_or(0) - number_;
  if (!count_ || !isDamage(missing)) {
    return std::nullopt;
  }
  SourceFrame frame;
  frame.name = name_;
  frame.fault = std::to_string(missing) + " of its " + std::to_string(*count_) +
                " frames cannot be read; the file is damaged or has been cut off";
  if (!gaps_.empty() && gaps_.size() <= kMostNamedGaps) {
    std::vector<std::string> names;
    for (const int gap : gaps_) {
      names.push_back(std::to_string(gap));
    }
    frame.fault += " (time jumps after frame " + joined(names, ", ") + ")";
  } else {
    frame.fault += " (the last one read is frame " + std::to_string(number_) + ")";
  }
  return frame;
}

}  // namespace fisheye_calibration::program
