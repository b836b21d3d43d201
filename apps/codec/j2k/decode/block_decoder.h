// SPDX-License-Identifier: Apache-2.0
// From the code-blocks of a tile-component to the coefficients in its subbands (T.800 Annexes D, E and H).
#pragma once

#include <atomic>
#include <functional>

#include "codec/j2k/tile.h"
#include "codec/j2k/wavelet.h"

namespace qel::codec::j2k {

// Code-blocks of a tile that could not be decoded in full.
struct BlockFaults {
    std::atomic<int> damaged = 0; // and concealed
    std::atomic<int> tooDeep = 0; // for 32 bits, and left out
};

// The coefficients of the resolution that `reduce` levels are left out of, no more than the component has: int32_t for
// the reversible wavelet, else float in units of samples of `precision` bits. Those that no sample in `window` needs
// may be 0; it counts in samples of that resolution. blockDone(samples) is called by any thread.
template <class T> Subbands<T> decodeBlocks(const TileComponent& component, int precision, int reduce,
                                            const Rect& window, int threads, BlockFaults& faults,
                                            const std::function<void(uint64_t)>& blockDone);

}
