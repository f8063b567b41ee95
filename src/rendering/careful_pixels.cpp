#include "rendering/careful_pixels.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <opencv2/core/fast_math.hpp>

#include "images/pixel_format.h"
#include "rendering/one_sample.h"

namespace fisheye_calibration::rendering {
namespace {

constexpr int kManyDoubts = 6;  // of a block's pixels

// Whole raw pixels wrap around at 16 bits (compatibility 39).
int wrapped(std::int32_t position) {
  constexpr int kUnused = 32 - 16 - kFractionBits;
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(position) << kUnused) >> kUnused;
}

}  // namespace

bool computeCarefully(const InverseWarp& warp, CarefulPositions& positions, int x, int y, int count,
                      CarefulBlock& block) {
  std::fill_n(block.column, kBlock, -1);
  for (int k = 0; k < count; ++k) {
    const SourcePixel source = sourcePixel(warp, x + k, y);
    block.column[k] = source.column;
    block.row[k] = source.row;
  }
  if (!completeSources(block)) {
    return false;
  }
  RawPosition raw;
  for (int k = 0; k < kBlock; ++k) {
    if (k == 0 || block.column[k] != block.column[k - 1] || block.row[k] != block.row[k - 1]) {
      raw = positions.at({block.column[k], block.row[k]});
    }
    block.u[k] = raw.u;
    block.v[k] = raw.v;
  }
  return true;
}

bool completeSources(CarefulBlock& block) {
  for (int k = 0; k < kBlock; ++k) {
    block.shown[k] = (block.column[k] | block.row[k]) < 0 ? 0 : -1;
  }
  const auto first = std::find(block.shown, block.shown + kBlock, -1) - block.shown;
  if (first == kBlock) {
    return false;
  }
  std::ptrdiff_t latest = first;
  for (std::ptrdiff_t k = 0; k < kBlock; ++k) {
    latest = block.shown[k] != 0 ? k : latest;
    block.column[k] = block.column[latest];
    block.row[k] = block.row[latest];
  }
  return true;
}

// An enlarged view shows a source pixel several times in a row.
void arcTangents(const double* r, double* theta) {
  theta[0] = std::atan(r[0]);
  for (int k = 1; k < kBlock; ++k) {
    theta[k] = r[k] == r[k - 1] ? theta[k - 1] : std::atan(r[k]);
  }
}

bool makeRelative(const CarefulBlock& block, int& baseU, int& baseV, BlockPositions& relative) {
  constexpr int kFarthest = 30000;  // raw pixels: whole positions fit 16 bits
  constexpr int kLargest = 32000;   // so do differences in 1/32 pixel
  baseU = wrapped(block.u[0]) >> kFractionBits;
  baseV = wrapped(block.v[0]) >> kFractionBits;
  int largest = 0;
  for (int k = 0; k < kBlock; ++k) {
    const int u = wrapped(block.u[k]) - kFractions * baseU;
    const int v = wrapped(block.v[k]) - kFractions * baseV;
    largest = std::max({largest, std::abs(u), std::abs(v)});
    relative.u[k] = static_cast<std::int16_t>(u);
    relative.v[k] = static_cast<std::int16_t>(v);
    relative.shown[k] = block.shown[k];
  }
  return largest < kLargest && std::max(std::abs(baseU), std::abs(baseV)) < kFarthest;
}

void sampleOneByOne(const images::Frame& frame, const CarefulBlock& block, int count,
                    unsigned char* pixels, unsigned char* mask) {
  const auto bytes = static_cast<std::size_t>(frame.bytes);
  for (int k = 0; k < count; ++k, pixels += bytes) {
    unsigned char validity = images::kNoContent;
    if (block.shown[k] != 0) {
      sampleOne(frame, block.u[k], block.v[k], pixels);
      validity = validityOfOne(frame, block.u[k], block.v[k]);
    } else {
      std::memset(pixels, 0, bytes);
    }
    if (mask != nullptr) {
      mask[k] = validity;
    }
  }
}

void settle(const InverseWarp& warp, CarefulPositions& positions, const BlockPlace& block,
            const DoubtfulPixels& pixels, const int* pixel, const BlockDetail& detail,
            BlockPositions& out) {
  const BlockBatch& batch = block.batch;
  const int i = block.i;
  // Many doubts are no accident: the positions lie on ties.
  const bool exactly = std::popcount(pixels.position) > kManyDoubts;
  for (std::uint32_t left = pixels.source | pixels.position; left != 0; left &= left - 1) {
    const int k = std::countr_zero(left);
    SourcePixel source{batch.column[i] + cvRound(detail.sx[k]),
                       batch.row[i] + cvRound(detail.sy[k])};
    if ((pixels.source >> k & 1) != 0) {
      source = sourcePixel(warp, block.x + pixel[k], block.y);
      if (block.edge) {
        out.shown[pixel[k]] = source.column < 0 ? 0 : -1;
      }
      if (source.column < 0) {
        continue;
      }
    } else if (block.edge) {
      source.column = std::clamp(source.column, 0, warp.size.width - 1);
      source.row = std::clamp(source.row, 0, warp.size.height - 1);
    }
    const RawPosition raw = exactly ? positions.exactlyAt(source) : positions.at(source);
    out.u[pixel[k]] = static_cast<std::int16_t>(raw.u - kFractions * batch.baseU[i]);
    out.v[pixel[k]] = static_cast<std::int16_t>(raw.v - kFractions * batch.baseV[i]);
  }
}

}  // namespace fisheye_calibration::rendering
