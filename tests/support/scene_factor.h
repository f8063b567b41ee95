// How many random scenes tests compare.
#pragma once

namespace support {

// Ten times as many in optimised code on x86-64; other processors are usually emulated.
#if defined(__OPTIMIZE__) && defined(__x86_64__)
constexpr int kSceneFactor = 10;
#else
constexpr int kSceneFactor = 1;
#endif

}  // namespace support
