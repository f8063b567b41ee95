#include "commands/corrected_view.h"

#include <new>

#include "base/frame_buffer.h"
#include "drawing/grid_overlay.h"
#include "fisheye_calibration.h"
#include "geometry/metric_picture.h"

namespace fisheye_calibration::program {
namespace {

View render(const Renderer& renderer, const cv::Mat& picture, const std::string& name) {
  FrameBuffer frame = toBuffer(picture);
  const Size size = renderer.size.value_or(renderer.camera.corrected.value_or(frame.size));
  FrameBuffer view = blankBuffer(size, frame.bitCount);
  FrameBuffer mask = blankBuffer(size, 8);
  if (!SingleCamCorrected(frame.data(), frame.size.width, frame.size.height, frame.bitCount,
                          renderer.camera.param, view.data(), size.width, size.height,
                          mask.data())) {
    failJob(name + ": the library could not correct the frame; nothing of it but black is left");
  }
  View result = {.picture = toPicture(view), .mask = toPicture(mask), .frame = frame.size};
  if (renderer.gridSpacing > 0) {
    const MetricPicture metric = metricPicture(renderer.camera.param, size);
    drawGrid(result.picture, gridOver(metric, renderer.gridSpacing));
  }
  return result;
}

}  // namespace

View FrameCorrector::correct(const cv::Mat& frame, const std::string& name) const {
  View view = render(renderer_, frame, name);
  if (isFirst()) {
    checkSizes(view, name);
  } else if (first_ != view.frame) {
    failBadInput(name + ": its size is not that of the first frame");
  }
  return view;
}

void FrameCorrector::checkSizes(const View& view, const std::string& frame) const {
  const Size rendered = {.width = view.picture.cols, .height = view.picture.rows};
  try {
    requireFrameSize(renderer_.camera, renderer_.cameraFile, frame, view.frame, renderer_.force,
                     messages_);
    requireFittingSize(renderer_.camera, renderer_.cameraFile, rendered, renderer_.force,
                       messages_);
  } catch (const Failure& failure) {
    throw HopelessRun(failure.code(), failure.what());
  }
}

void onFrame(const std::string& name, const std::function<void()>& work) {
  try {
    work();
  } catch (const std::bad_alloc&) {
    failJob(name + ": not enough memory");
  } catch (const cv::Exception& error) {
    failJob(name + ": the image library cannot work on the frame (" + error.err + ")");
  }
}

}  // namespace fisheye_calibration::program
