// Renders rows of a corrected view: geometry and sampling in one pass over blocks of pixels.
#pragma once

#include "images/view.h"
#include "rendering/careful_positions.h"
#include "rendering/view_geometry.h"

namespace fisheye_calibration::rendering {

// Whether the instruction set adds float products without rounding them first.
bool addsProductsUnrounded();

// Columns begin ... end - 1 of row y of the output, counted from the top.
struct RowPart {
  int y;
  int begin;
  int end;
  bool isUpwards = false;  // the row below was rendered before this one, as stitching does

  int count() const { return end - begin; }
};

// Renders these pixels, in the frame's format, and, unless `mask` is null, their mask bytes.
void renderRow(const images::Frame& frame, const ViewGeometry& view, CarefulPositions& careful,
               const RowPart& part, unsigned char* pixels, unsigned char* mask);

}  // namespace fisheye_calibration::rendering
