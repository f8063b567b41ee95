// The views of a run's frames as seen from above: of pictures, and of any other source.
#pragma once

#include <filesystem>
#include <functional>
#include <iosfwd>
#include <opencv2/core.hpp>
#include <optional>
#include <string>

#include "base/failure.h"
#include "base/size.h"
#include "checks/checked_camera.h"

namespace fisheye_calibration::program {

struct Renderer {
  CheckedCamera camera;
  std::filesystem::path cameraFile;
  std::optional<Size> size;  // empty: the one that the camera's file notes, or the frame's own
  double gridSpacing = 0;    // 0: no grid
  bool force = false;        // warn of what does not fit instead of refusing it
};

struct View {
  cv::Mat picture;
  cv::Mat mask;
  Size frame;
};

// Ends a run over many frames, because the next one would fail for the same reason.
class HopelessRun : public Failure {
 public:
  using Failure::Failure;
};

// Frames of one size and one camera: the warnings of the first hold for all.
class FrameCorrector {
 public:
  FrameCorrector(const Renderer& renderer, std::ostream& messages)
      : renderer_(renderer), messages_(messages) {}

  // Fails, with the frame's name, if it cannot be corrected or is of another size than the first.
  View correct(const cv::Mat& frame, const std::string& name) const;

  // Until a view is accepted, the next frame counts as the first one.
  bool isFirst() const { return first_ == Size(); }
  void accept(const View& view) { first_ = view.frame; }

 private:
  void checkSizes(const View& view, const std::string& frame) const;

  const Renderer& renderer_;
  std::ostream& messages_;
  Size first_;  // that of the first frame; no size before it
};

// Does the work on a frame. What the image library and the memory complain of becomes a failure
// that names the frame.
void onFrame(const std::string& name, const std::function<void()>& work);

}  // namespace fisheye_calibration::program
