// Output pixels one at a time.
#pragma once

#include <cstdint>

#include "images/view.h"
#include "rendering/block_batch.h"
#include "rendering/careful_positions.h"

namespace fisheye_calibration::rendering {

// The raw positions of a block's pixels, in 1/32 pixel.
struct CarefulBlock {
  RawPosition raw[kBlock];     // only where the pixel shows something
  std::int16_t shown[kBlock];  // -1 there, else 0
  int first;                   // the first pixel that shows something, kBlock if there is none
};

// Computes `count` pixels of a block that starts at output pixel (x, y); the others show nothing.
void computeCarefully(const InverseWarp& warp, CarefulPositions& positions, int x, int y, int count,
                      CarefulBlock& block);

// The positions relative to (baseU, baseV), the raw pixel of the first one. Returns false if they
// do not fit 16 bits.
bool makeRelative(const CarefulBlock& block, int& baseU, int& baseV, BlockPositions& relative);

// Samples the first `count` pixels of the block; `mask` may be null.
void sampleOneByOne(const images::Frame& frame, const CarefulBlock& block, int count,
                    unsigned char* pixels, unsigned char* mask);

// Pixels of a block whose rounding float cannot decide, as bits; bit k stands for output column
// x + pixel[k] of a block that starts at column x.
struct DoubtfulPixels {
  std::uint32_t source = 0;    // the source pixel is in doubt,
  std::uint32_t position = 0;  // or only its raw position
};

// Block i of a batch.
struct BlockPlace {
  const BlockBatch& batch;
  int i;
  int x, y;   // the output pixel where it starts
  bool edge;  // pixels may lie outside the undistorted image
};

// Computes these pixels of a block again.
void settle(const InverseWarp& warp, CarefulPositions& positions, const BlockPlace& block,
            const DoubtfulPixels& pixels, const int* pixel, const BlockDetail& detail,
            BlockPositions& out);

}  // namespace fisheye_calibration::rendering
