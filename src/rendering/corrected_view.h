// The corrected view of a raw frame: distortion removed, then mapped by a homography.
#pragma once

#include <opencv2/core.hpp>

#include "images/view.h"
#include "lens/camera.h"
#include "rendering/careful_positions.h"
#include "rendering/row_renderer.h"
#include "rendering/view_geometry.h"

namespace fisheye_calibration::rendering {

// The view is rendered in one pass over the output: each output pixel shows one pixel of the
// undistorted image, which is sampled from the raw frame on demand. Neither the undistorted image
// nor its map ever exists as a whole.
class CorrectedView {
 public:
  // The undistorted image has the warp's size; `K` is the matrix of its pinhole camera, whose
  // principal point is replaced by the image's centre (compatibility 36).
  CorrectedView(const images::Frame& frame, const lens::Camera& camera, const cv::Matx33d& K,
                const InverseWarp& warp);

  // Whether any pixel of the undistorted image is not black (compatibility 34).
  bool showsAnything() const;

  // Renders view and mask, of the warp's size; a mask without pixels is left out. Rows are
  // distributed over the image library's threads; the bytes do not depend on how.
  void render(const images::Target& view, const images::Target& mask) const;

  const cv::Size& size() const { return geometry_.warp().size; }

  // Renders single rows in any order, for one thread. The view must outlive it.
  class Rows {
   public:
    explicit Rows(const CorrectedView& view);

    // Row y of the picture, counted from the top: the view's width in pixels and, unless `mask` is
    // null, in mask bytes.
    void render(int y, unsigned char* pixels, unsigned char* mask);

   private:
    const CorrectedView& view_;
    CarefulPositions positions_;
    int lastRow_ = -1;
  };

 private:
  bool showsAnythingIn(CarefulPositions& positions, int row) const;
  bool showsAnythingAnywhere() const;
  bool isFrameBlack() const;

  images::Frame frame_;
  ViewGeometry geometry_;
};

}  // namespace fisheye_calibration::rendering
