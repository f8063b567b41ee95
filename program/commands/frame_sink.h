// Where corrected frames go: a video, or a folder of pictures.
#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "commands/corrected_view.h"
#include "sources/frame_source.h"

namespace fisheye_calibration::program {

class FrameSink {
 public:
  FrameSink() = default;
  FrameSink(const FrameSink&) = delete;
  FrameSink& operator=(const FrameSink&) = delete;
  virtual ~FrameSink() = default;

  // `number`: of the frame in its source, from 1.
  virtual void put(const cv::Mat& picture, int number) = 0;

  // Frames per second at which a video plays; 0 where there is none.
  virtual double rate() const { return 0; }

  // Ends the work and says in the summary how it was written: "out.mp4 (H.264, 25 frames per
  // second)".
  virtual std::string finish(std::ostream& messages) = 0;
};

// "frame-000012": name of the file for a frame of a source, without extension.
std::string frameFileName(int number);

// A video if `output` is named as one, otherwise the folder, which is made if it is missing. An
// empty `rate` means that of the source. Fails as bad input if nothing can be written there.
std::unique_ptr<FrameSink> openSink(const std::filesystem::path& output, const std::string& rate,
                                    const FrameSource& source, std::ostream& messages);

}  // namespace fisheye_calibration::program
