#include "rendering/careful_pixels.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <cstring>
#include <opencv2/core/fast_math.hpp>

#include "images/pixel_format.h"
#include "rendering/one_sample.h"

namespace fisheye_calibration::rendering {
namespace {

constexpr int kManyDoubts = 6;  // of a block's pixels

}  // namespace

void computeCarefully(const InverseWarp& warp, CarefulPositions& positions, int x, int y, int count,
                      CarefulBlock& block) {
  SourcePixel sources[kBlock];
  for (int k = 0; k < count; ++k) {
    sources[k] = sourcePixel(warp, x + k, y);
  }
  std::fill(sources + count, sources + kBlock, SourcePixel{-1, -1});
  block.first = kBlock;
  for (int k = kBlock - 1; k >= 0; --k) {
    block.shown[k] = sources[k].column < 0 ? 0 : -1;
    block.first = sources[k].column < 0 ? block.first : k;
  }
  for (int k = block.first; k < count; ++k) {
    if (block.shown[k] != 0) {
      block.raw[k] = positions.at(sources[k]);
    }
  }
}

bool makeRelative(const CarefulBlock& block, int& baseU, int& baseV, BlockPositions& relative) {
  constexpr int kFarthest = 30000;          // raw pixels: whole positions fit 16 bits
  constexpr std::int64_t kLargest = 32000;  // so do differences in 1/32 pixel
  baseU = block.raw[block.first].u >> kFractionBits;
  baseV = block.raw[block.first].v >> kFractionBits;
  bool fits = std::max(std::abs(baseU), std::abs(baseV)) < kFarthest;
  for (int k = 0; k < kBlock; ++k) {
    const RawPosition raw = block.raw[block.shown[k] != 0 ? k : block.first];
    const std::int64_t u = std::int64_t{raw.u} - std::int64_t{kFractions} * baseU;
    const std::int64_t v = std::int64_t{raw.v} - std::int64_t{kFractions} * baseV;
    fits = fits && std::max(std::abs(u), std::abs(v)) < kLargest;
    relative.u[k] = static_cast<std::int16_t>(u);
    relative.v[k] = static_cast<std::int16_t>(v);
    relative.shown[k] = block.shown[k];
  }
  return fits;
}

void sampleOneByOne(const images::Frame& frame, const CarefulBlock& block, int count,
                    unsigned char* pixels, unsigned char* mask) {
  const auto bytes = static_cast<std::size_t>(frame.bytes);
  for (int k = 0; k < count; ++k, pixels += bytes) {
    unsigned char validity = images::kNoContent;
    if (block.shown[k] != 0) {
      sampleOne(frame, block.raw[k].u, block.raw[k].v, pixels);
      validity = validityOfOne(frame, block.raw[k].u, block.raw[k].v);
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
