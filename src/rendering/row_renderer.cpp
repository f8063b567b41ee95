#include "rendering/row_renderer.h"

#include <algorithm>
#include <cstring>

#include "images/pixel_format.h"
#include "rendering/careful_pixels.h"

#ifndef FISHEYE_ROW_RENDERER_ONCE
#define FISHEYE_ROW_RENDERER_ONCE
namespace fisheye_calibration::rendering {
namespace {

// Without vectors, or fewer pixels than a block has.
void renderOneByOne(const images::Frame& frame, const InverseWarp& warp, CarefulPositions& careful,
                    const RowPart& part, unsigned char* pixels, unsigned char* mask) {
  CarefulBlock block;
  for (std::int64_t offset = 0; offset < part.count(); offset += kBlock) {
    const int count = static_cast<int>(std::min<std::int64_t>(kBlock, part.count() - offset));
    computeCarefully(warp, careful, part.begin + static_cast<int>(offset), part.y, count, block);
    sampleOneByOne(frame, block, count, pixels + offset * frame.bytes,
                   mask != nullptr ? mask + offset : nullptr);
  }
}

}  // namespace
}  // namespace fisheye_calibration::rendering
#endif  // FISHEYE_ROW_RENDERER_ONCE

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "rendering/row_renderer.cpp"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/highway.h>

#include "rendering/block_positions-inl.h"
#include "rendering/block_samples-inl.h"
#include "rendering/block_setup-inl.h"
#include "rendering/careful_block-inl.h"

HWY_BEFORE_NAMESPACE();
namespace fisheye_calibration::rendering {
namespace HWY_NAMESPACE {
namespace {

#if FISHEYE_HAS_BLOCKS

// One row. The positions of a block are computed before the previous block is sampled, and the
// middles of a batch before the previous batch is rendered, so that neither waits for the other's
// results.
template <int kBytes, bool kSkewed>
class RowOfBlocks {
 public:
  RowOfBlocks(const images::Frame& frame, const ViewGeometry& view, CarefulPositions& careful,
              const RowPart& part, unsigned char* pixels, unsigned char* mask)
      : frame_(frame),
        view_(view),
        row_(view, part.y),
        careful_(careful),
        part_(part),
        pixels_(pixels),
        mask_(mask) {}

  HWY_INLINE void render() {
    const int blocks = (part_.count() - 1) / kBlock + 1;
    prepareBatch(view_, row_, part_, 0, batches_[0]);
    for (int first = 0; first < blocks; first += kBatch) {
      const BlockBatch& batch = batches_[first / kBatch % 2];
      places_ = placesOf<kBytes>(frame_, batch);
      if (first + kBatch < blocks) {
        prepareBatch(view_, row_, part_, first + kBatch, batches_[(first / kBatch + 1) % 2]);
      }
      const int count = std::min(kBatch, blocks - first);
      for (int i = 0; i < count; ++i) {
        renderBlock(
            batch, i,
            std::min<std::int64_t>(std::int64_t{kBlock} * (first + i), part_.count() - kBlock));
      }
    }
    samplePending();
  }

 private:
  enum class Found { kPositions, kNothing, kNoFloat };

  // Block i of the batch, which starts `offset` pixels after the part.
  HWY_INLINE void renderBlock(const BlockBatch& batch, int i, std::ptrdiff_t offset) {
    BlockPositions& positions = positions_[next_];
    Found found = Found::kPositions;
    if (HWY_UNLIKELY(!has(batch.usual & ~places_.beyond, i))) {
      found = computeUnusual(batch, i, offset, positions);
    } else {
      const bool certain = positionsInside<kSkewed, false, false>(view_, batch, i, positions);
      if (HWY_UNLIKELY(!certain)) {
        computeDetailed(batch, i, offset, {.skewed = kSkewed}, positions);
      }
    }
    samplePending();
    if (HWY_UNLIKELY(found != Found::kPositions)) {
      if (found == Found::kNothing) {
        clear(offset);
      } else {
        renderOtherwise(offset);
      }
      return;
    }
    pending_ = {&positions,
                batch.baseU[i],
                batch.baseV[i],
                has(places_.deep, i),
                !has(batch.inside, i),
                isLast(offset),
                part_.isUpwards,
                stride_,
                pixels_ + offset * kBytes,
                mask_ != nullptr ? mask_ + offset : nullptr};
    next_ ^= 1;
  }

  static bool has(unsigned bits, int i) { return (bits >> i & 1) != 0; }

  HWY_INLINE Found computeUnusual(const BlockBatch& batch, int i, std::ptrdiff_t offset,
                                  BlockPositions& positions) {
    if (has(batch.outside, i)) {
      return Found::kNothing;
    }
    const LensNode& node = view_.node(batch.node[i]);
    if (!has(batch.small, i) || node.safe == 0) {
      return Found::kNoFloat;
    }
    if (has(places_.beyond, i)) {
      return Found::kNothing;
    }
    const BlockKind kind{kSkewed, !has(batch.gentle, i), node.odd, !has(batch.inside, i)};
    if (kind.edge || !otherPositionsInside<kSkewed>(view_, batch, i, kind, positions)) {
      computeDetailed(batch, i, offset, kind, positions);
    }
    return Found::kPositions;
  }

  HWY_INLINE void samplePending() {
    if (HWY_LIKELY(pending_.positions != nullptr)) {
      sampleBlock<kBytes>(frame_, pending_);
      pending_.positions = nullptr;
    }
  }

  // A block that shows nothing.
  HWY_INLINE void clear(std::ptrdiff_t offset) {
    std::memset(pixels_ + offset * kBytes, 0, std::size_t{kBlock} * kBytes);
    if (mask_ != nullptr) {
      std::memset(mask_ + offset, images::kNoContent, kBlock);
    }
  }

  // A block that float cannot describe.
  HWY_NOINLINE void renderOtherwise(std::ptrdiff_t offset) {
    unsigned char* const pixels = pixels_ + offset * kBytes;
    unsigned char* const mask = mask_ != nullptr ? mask_ + offset : nullptr;
    CarefulBlock block;
    if (!computeBlockCarefully(view_, careful_, columnAt(offset), part_.y, block)) {
      clear(offset);
      return;
    }
    BlockPositions positions;
    int baseU = 0;
    int baseV = 0;
    if (makeRelative(block, baseU, baseV, positions)) {
      sampleBlock<kBytes>(frame_, {&positions, baseU, baseV, false, true, isLast(offset),
                                   part_.isUpwards, stride_, pixels, mask});
    } else {
      sampleOneByOne(frame_, block, kBlock, pixels, mask);
    }
  }

  HWY_NOINLINE void computeDetailed(const BlockBatch& batch, int i, std::ptrdiff_t offset,
                                    const BlockKind& kind, BlockPositions& positions) {
    const LensNode& node = view_.node(batch.node[i]);
    BlockDetail detail;
    if (detailedBlock(view_, batch, i, kind, positions, detail)) {
      return;
    }
    const DoubtfulPixels doubtful{doubtfulPixels(detail.sx, detail.sy, batch.clear[i]),
                                  doubtfulPixels(detail.u, detail.v, node.safe)};
    const BlockPlace place{batch, i, columnAt(offset), part_.y, kind.edge};
    settle(view_.warp(), careful_, place, doubtful, kOffsets.pixel, detail, positions);
  }

  // The four bytes that storing a block may write behind it belong to up to two pixels.
  bool isLast(std::ptrdiff_t offset) const { return offset + kBlock + 2 > part_.count(); }

  int columnAt(std::ptrdiff_t offset) const { return part_.begin + static_cast<int>(offset); }

  const images::Frame& frame_;
  const std::ptrdiff_t stride_ = frame_.stride();
  const ViewGeometry& view_;
  const RowGeometry row_;
  CarefulPositions& careful_;
  const RowPart part_;
  unsigned char* const pixels_;
  unsigned char* const mask_;
  BlockBatch batches_[2];
  FramePlaces places_{};  // of the batch that is rendered
  BlockPositions positions_[2];
  int next_ = 0;
  SampledBlock pending_{};
};

template <int kBytes>
HWY_INLINE void renderBlocks(const images::Frame& frame, const ViewGeometry& view,
                             CarefulPositions& careful, const RowPart& part, unsigned char* pixels,
                             unsigned char* mask) {
  if (view.xy() == 0) {
    RowOfBlocks<kBytes, false>(frame, view, careful, part, pixels, mask).render();
  } else {
    RowOfBlocks<kBytes, true>(frame, view, careful, part, pixels, mask).render();
  }
}

void RenderRow(const images::Frame& frame, const ViewGeometry& view, CarefulPositions& careful,
               const RowPart& part, unsigned char* pixels, unsigned char* mask) {
  switch (frame.bytes) {
    case 1:
      renderBlocks<1>(frame, view, careful, part, pixels, mask);
      break;
    case 3:
      renderBlocks<3>(frame, view, careful, part, pixels, mask);
      break;
    case 4:
      renderBlocks<4>(frame, view, careful, part, pixels, mask);
      break;
    default:  // images::bytesPerPixel gives no other
      break;
  }
}

#else

void RenderRow(const images::Frame& frame, const ViewGeometry& view, CarefulPositions& careful,
               const RowPart& part, unsigned char* pixels, unsigned char* mask) {
  renderOneByOne(frame, view.warp(), careful, part, pixels, mask);
}

#endif  // FISHEYE_HAS_BLOCKS

bool AddsProductsUnrounded() { return HWY_NATIVE_FMA != 0; }

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace fisheye_calibration::rendering
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace fisheye_calibration::rendering {

HWY_EXPORT(RenderRow);
HWY_EXPORT(AddsProductsUnrounded);

bool addsProductsUnrounded() { return HWY_DYNAMIC_DISPATCH(AddsProductsUnrounded)(); }

void renderRow(const images::Frame& frame, const ViewGeometry& view, CarefulPositions& careful,
               const RowPart& part, unsigned char* pixels, unsigned char* mask) {
  if (part.count() >= kBlock) {
    HWY_DYNAMIC_DISPATCH(RenderRow)(frame, view, careful, part, pixels, mask);
  } else {
    renderOneByOne(frame, view.warp(), careful, part, pixels, mask);
  }
}

}  // namespace fisheye_calibration::rendering
#endif  // HWY_ONCE
