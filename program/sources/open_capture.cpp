// Opens captures with the image library's readers that suit the kind of source, one after another.
#include <algorithm>
#include <filesystem>
#include <functional>
#include <opencv2/videoio/registry.hpp>

#include "base/failure.h"
#include "base/file_path.h"
#include "base/text.h"
#include "files/iso_boxes.h"
#include "files/quiet_decoders.h"
#include "files/video_kind.h"
#include "sources/captured_frames.h"

namespace fisheye_calibration::program {
namespace {

using Readers = std::vector<cv::VideoCaptureAPIs>;

// The first reader that succeeds, in the order wanted; a closed capture if none does. The image
// library's own choice would take a file's name for the pattern of a series of pictures.
cv::VideoCapture firstThatOpens(const Readers& wanted, const Readers& built,
                                const std::function<bool(cv::VideoCapture&, int)>& open) {
  quietDecoders();
  for (const cv::VideoCaptureAPIs reader : wanted) {
    if (std::find(built.begin(), built.end(), reader) == built.end()) {
      continue;
    }
    cv::VideoCapture capture;
    try {
      if (open(capture, reader)) {
        return capture;
      }
    } catch (const cv::Exception&) {  // the next one may do better
      continue;
    }
  }
  return {};
}

// Phones and editors cut films by a list of edits, and leave the frames where they are.
StatedCount statedCountOf(const std::filesystem::path& path) {
  if (isIsoMedia(path) && holdsWholeBoxes(path)) {
    return StatedCount::kBeforeEdits;
  }
  return statesFrameCount(path) ? StatedCount::kExact : StatedCount::kEstimate;
}

}  // namespace

std::unique_ptr<FrameSource> openVideo(const std::string& file) {
  // An absolute path is never taken for an address.
  const std::string path = absoluteNameOf(pathOf(file));
  cv::VideoCapture capture =
      firstThatOpens({cv::CAP_FFMPEG, cv::CAP_MSMF, cv::CAP_OPENCV_MJPEG},
                     cv::videoio_registry::getStreamBackends(),
                     [&](cv::VideoCapture& tried, int reader) { return tried.open(path, reader); });
  if (!capture.isOpened()) {
    failBadInput(file +
                 ": not a video that can be read here; it may be damaged or cut off, or its codec "
                 "is missing");
  }
  return std::make_unique<CapturedFrames>(SourceKind::kVideo, file, capture,
                                          statedCountOf(pathOf(file)));
}

std::unique_ptr<FrameSource> openDevice(const std::string& device) {
  const std::optional<int> index = parseInteger(device);
  const cv::VideoCapture capture = firstThatOpens(
      {cv::CAP_V4L2, cv::CAP_DSHOW, cv::CAP_MSMF}, cv::videoio_registry::getCameraBackends(),
      [&](cv::VideoCapture& tried, int reader) {
        return index ? tried.open(*index, reader) : tried.open(device, reader);
      });
  if (!capture.isOpened()) {
    failBadInput(device + ": no camera can be opened there; is it connected, and not in use?");
  }
  const std::string name = index ? "camera " + device : device;
  return std::make_unique<CapturedFrames>(SourceKind::kDevice, name, capture,
                                          StatedCount::kEstimate);
}

std::unique_ptr<FrameSource> openStream(const std::string& address) {
  const cv::VideoCapture capture = firstThatOpens(
      {cv::CAP_FFMPEG, cv::CAP_GSTREAMER, cv::CAP_MSMF}, cv::videoio_registry::getStreamBackends(),
      [&](cv::VideoCapture& tried, int reader) { return tried.open(address, reader); });
  const std::string name = sourceName(address);
  if (!capture.isOpened()) {
    failBadInput(name + ": no stream can be opened there");
  }
  return std::make_unique<CapturedFrames>(SourceKind::kStream, name, capture,
                                          StatedCount::kEstimate);
}

}  // namespace fisheye_calibration::program
