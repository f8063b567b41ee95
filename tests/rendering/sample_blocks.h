// Blocks of positions for the sampler.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "rendering/block_access.h"
#include "support/dice.h"

namespace blocks {

constexpr int kLargestOffset = 30000;  // 1/32 pixels from the base

// Positions in 1/32 pixels; pixels of edge blocks may be hidden.
struct Block {
  int baseU = 0;
  int baseV = 0;
  int u[rendering::kBlock] = {};
  int v[rendering::kBlock] = {};
  bool hidden[rendering::kBlock] = {};
  bool edge = false;

  rendering::BlockPositions positions() const {
    rendering::BlockPositions relative;
    for (int k = 0; k < rendering::kBlock; ++k) {
      relative.u[k] = static_cast<std::int16_t>(u[k] - 32 * baseU);
      relative.v[k] = static_cast<std::int16_t>(v[k] - 32 * baseV);
      // Blocks that are not at the edge do not read this.
      relative.shown[k] = static_cast<std::int16_t>(edge ? (hidden[k] ? 0 : -1) : 0x5A5A);
    }
    return relative;
  }

  // The least one: offsets are smaller than so many pixels.
  int extent() const {
    int largest = 0;
    for (int k = 0; k < rendering::kBlock; ++k) {
      largest = std::max({largest, std::abs(u[k] - 32 * baseU), std::abs(v[k] - 32 * baseV)});
    }
    return largest / 32 + 1;
  }
};

// Hides pixels one by one, from one end, or all of them.
inline void hideSome(support::Dice& dice, Block& block) {
  block.edge = true;
  const int kind = dice.whole(0, 3);
  const int turn = dice.whole(0, rendering::kBlock);
  const bool fromStart = dice.oneIn(2);
  for (int k = 0; k < rendering::kBlock; ++k) {
    block.hidden[k] = kind == 0 || (kind == 1 ? (k < turn) == fromStart : dice.oneIn(kind));
  }
}

// The base lies amidst the positions or anywhere that is close enough to all of them.
inline void placeBase(support::Dice& dice, Block& block) {
  const auto [lowU, highU] = std::minmax_element(block.u, block.u + rendering::kBlock);
  const auto [lowV, highV] = std::minmax_element(block.v, block.v + rendering::kBlock);
  const auto place = [&](int low, int high) {
    const int least = std::max((high - kLargestOffset) / 32 + 1, -30000);
    const int largest = std::min((low + kLargestOffset) / 32 - 1, 30000);
    return std::clamp(dice.oneIn(8) ? dice.whole(least, largest) : (low + high) / 64, least,
                      largest);
  };
  block.baseU = place(*lowU, *highU);
  block.baseV = place(*lowV, *highV);
}

// Positions along a line, at any slope, that passes (u, v).
inline Block alongLine(support::Dice& dice, int u, int v, int largestStep) {
  Block block;
  const int stepU = dice.whole(-largestStep, largestStep);
  const int stepV = dice.oneIn(3) ? 0 : dice.whole(-largestStep, largestStep) / 2;
  const int passes = dice.whole(0, rendering::kBlock - 1);
  for (int k = 0; k < rendering::kBlock; ++k) {
    block.u[k] = u + (k - passes) * stepU;
    block.v[k] = v + (k - passes) * stepV;
  }
  return block;
}

// Anywhere in a rectangle of so many pixels whose corner is (x, y), or at its ends.
inline Block scattered(support::Dice& dice, int x, int y, int width, int height) {
  Block block;
  for (int k = 0; k < rendering::kBlock; ++k) {
    block.u[k] = 32 * x + dice.whole(0, 32 * width);
    block.v[k] = 32 * y + dice.whole(0, 32 * height);
    if (dice.oneIn(8)) block.u[k] = 32 * (x + (dice.oneIn(2) ? width : 0));
    if (dice.oneIn(8)) block.v[k] = 32 * (y + (dice.oneIn(2) ? height : 0));
  }
  return block;
}

}  // namespace blocks
