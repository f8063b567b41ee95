// Steps of the block renderer that are otherwise reached only together, on the chosen instruction
// set.
#pragma once

#include <array>
#include <cstdint>

#include "images/view.h"
#include "lens/camera.h"
#include "rendering/block_batch.h"
#include "rendering/careful_pixels.h"
#include "rendering/row_renderer.h"

namespace blocks {

namespace rendering = fisheye_calibration::rendering;
namespace images = fisheye_calibration::images;

// Whether the instruction set computes blocks at all. If not, none of the others may be called.
bool areComputed();

// The middles of blocks `first` ... of a part of a row.
void prepare(const rendering::ViewGeometry& view, const rendering::RowPart& part, int first,
             rendering::BlockBatch& batch);

// What block i of the batch is before rounding, and its positions without any pixel settled.
// Element k of the detail belongs to pixel order[k] of the block.
struct Trace {
  rendering::BlockDetail detail;
  rendering::BlockPositions positions;
  std::array<int, rendering::kBlock> order;
};
Trace trace(const rendering::ViewGeometry& view, const rendering::BlockBatch& batch, int i);

// The block that starts at output pixel (x, y), by the plain steps. Returns false if it shows
// nothing.
bool computeCarefully(const rendering::ViewGeometry& view, rendering::CarefulPositions& positions,
                      int x, int y, rendering::CarefulBlock& block);

// Raw positions by vector arctangents against those by the standard library's.
struct ArctangentCheck {
  double largestShare = 0;  // of the bound on their difference
  int certain = 0;          // rays whose rounding does not depend on the last bits
  int wrong = 0;            // of these, rounded differently
};
void checkArctangents(const fisheye_calibration::lens::Camera& camera,
                      const std::array<double, rendering::kBlock>& x,
                      const std::array<double, rendering::kBlock>& y, ArctangentCheck& check);

// A block at positions relative to the raw pixel (baseU, baseV), which differ from it by less than
// `extent` pixels. With `edge`, pixels that are not shown become 0. With `isLast`, nothing is
// written behind the block; otherwise up to four bytes may be. The mask may be null.
struct Request {
  const rendering::BlockPositions& positions;
  int baseU;
  int baseV;
  int extent;
  bool edge;
  bool isLast;
};
void sample(const images::Frame& frame, const Request& request, unsigned char* pixels,
            unsigned char* mask);

// Whether the machine's own instructions give the portable operations' results for these bytes (see
// byte_products-inl.h). Pairs of weights must not be above 127, their sums not above 32767.
using Bytes64 = std::array<std::uint8_t, 64>;
bool sumsOfPairsAgree(const Bytes64& x, const Bytes64& weights);
bool narrowingAgrees(const Bytes64& a, const Bytes64& b);

}  // namespace blocks
