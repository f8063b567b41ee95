// Output pixels one at a time.
#pragma once

#include <cstdint>

#include "images/view.h"
#include "rendering/block_batch.h"
#include "rendering/careful_positions.h"

namespace fisheye_calibration::rendering {

// A block whose pixels are computed on their own. Where one shows nothing, it has the source pixel
// and the position of another.
struct CarefulBlock {
  alignas(64) std::int32_t column[kBlock], row[kBlock];  // of the source pixel
  alignas(64) std::int32_t u[kBlock], v[kBlock];         // raw position, in 1/32 pixel
  alignas(64) std::int16_t shown[kBlock];                // 0 where a pixel shows nothing, else -1
};

// Computes `count` pixels of a block that starts at output pixel (x, y); the others show nothing.
// Returns false if none shows anything; the positions are then undefined.
bool computeCarefully(const InverseWarp& warp, CarefulPositions& positions, int x, int y, int count,
                      CarefulBlock& block);

// Finds the pixels that show nothing by a column or row of -1 and gives them the source pixel of
// another. Returns false if none shows anything.
bool completeSources(CarefulBlock& block);

// theta = atan r by the standard library, whose rounding is part of the result, of a block.
void arcTangents(const double* r, double* theta);

// The positions relative to the raw pixel (baseU, baseV) that the first one lies in. Returns false
// if they do not fit 16 bits.
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
