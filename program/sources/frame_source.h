// Where frames come from: still pictures, folders of them, video files, devices and streams.
#pragma once

#include <memory>
#include <opencv2/core.hpp>
#include <optional>
#include <string>

namespace fisheye_calibration::program {

// One frame, or what kept it from being read.
struct SourceFrame {
  cv::Mat picture;    // 8-bit, 1 or 3 channels (BGR), row 0 at the top; empty if it is broken
  std::string name;   // for messages: "folder/b.png", "in.mp4, frame 12"
  std::string fault;  // why the frame is broken; empty if it is not
  std::string notes;  // what else the reader says about it, each note on a line; mostly empty
};

// What kind of input a text names.
enum class SourceKind { kPicture, kFolder, kVideo, kDevice, kStream };

class FrameSource {
 public:
  FrameSource() = default;
  FrameSource(const FrameSource&) = delete;
  FrameSource& operator=(const FrameSource&) = delete;
  virtual ~FrameSource() = default;

  // Waits for the next frame; nothing after the last one, or when a device or stream has gone. A
  // broken frame is returned with its fault, and the next call goes on behind it.
  virtual std::optional<SourceFrame> next() = 0;

  virtual SourceKind kind() const = 0;

  // Frames per second, as the source states it; 0 if it does not.
  virtual double rate() const = 0;

  // Number of frames, if it is known beforehand.
  virtual std::optional<int> count() const = 0;

  // The four letters that name the codec of a video, such as "avc1"; empty if there are none.
  virtual std::string codec() const { return {}; }
};

// What `text` names, by what is there and by its name; nothing is opened. Files that are not there
// count as pictures, or as videos if they are named so.
SourceKind sourceKind(const std::string& text);

// `text` as messages show it: without the user's name and password in an address. They end up in
// logs otherwise.
std::string sourceName(const std::string& text);

// True for devices and streams, which go on until somebody ends them.
bool isEndless(SourceKind kind);

// Opens what `text` names: a file, a folder, "/dev/video0" or a device's index, or an address with
// "://". Fails as bad input, with the text and the reason, if it cannot be opened.
std::unique_ptr<FrameSource> openSource(const std::string& text);

}  // namespace fisheye_calibration::program
