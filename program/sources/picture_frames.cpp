#include "sources/picture_frames.h"

#include <new>
#include <sstream>

#include "base/failure.h"
#include "base/file_path.h"
#include "files/picture_file.h"

namespace fisheye_calibration::program {
namespace {

// The reader's messages begin with the file's name, as the frame's own messages will.
std::string withoutName(const std::string& message, const std::string& name) {
  return message.starts_with(name + ": ") ? message.substr(name.size() + 2) : message;
}

}  // namespace

std::optional<SourceFrame> PictureFrames::next() {
  if (taken_ == pictures_.size()) {
    return std::nullopt;
  }
  const std::filesystem::path& path = pictures_[taken_++];
  SourceFrame frame;
  frame.name = nameOf(path);
  std::ostringstream notes;
  try {
    frame.picture = readFrame(path, notes);
  } catch (const Failure& failure) {
    frame.fault = withoutName(failure.what(), frame.name);
  } catch (const std::bad_alloc&) {
    frame.fault = "not enough memory";
  } catch (const cv::Exception& failure) {
    frame.fault = "not a picture that can be read (" + failure.err + ")";
  }
  frame.notes = notes.str();
  return frame;
}

}  // namespace fisheye_calibration::program
