// SPDX-License-Identifier: Apache-2.0
// How the blocks of a scan lie: MCUs across and down, and the blocks of one MCU (T.81 A.2). In a lossless file a block
// is one sample.
#pragma once

#include <concepts>
#include <cstdint>
#include <type_traits>
#include <vector>

#include "codec/jpeg/info.h"

namespace qel::codec::jpeg {

// One block of an MCU.
struct McuBlock {
    int slot;   // component of the scan, from 0
    int dx, dy; // place in the component's share of the MCU, in blocks
};

// A component as a scan sees it.
struct ScanShare {
    int component;    // in the frame
    int across, down; // blocks of each MCU
};

struct ScanLayout {
    int mcusAcross = 0, mcusDown = 0;
    std::vector<ScanShare> shares;
    std::vector<McuBlock> blocks;

    // `components` are indices into the frame. A scan of one component has MCUs of one block, and only those blocks
    // that the component itself needs; a scan of several pads all of them to whole MCUs.
    ScanLayout(const Info& info, const std::vector<int>& components);
};

// Takes the blocks of a row of MCUs in the order of the scan, 64 quantized coefficients each in natural order: block
// `i` of the MCU in a column.
template <class T>
concept BlockSink = std::invocable<T&, int, int, const int16_t*>;

// Says where such a block lies.
template <class T>
concept BlockPlaces = std::is_invocable_r_v<int16_t*, const T&, int, int>;

// Of a scan of several components (T.81 B.2.3).
inline constexpr int kMaxBlocksOfMcu = 10;

constexpr int blocksFor(int samples) { return (samples + 7) / 8; }

// Sets the sizes of the components from that of the picture and the sampling factors (T.81 A.1.1).
void setComponentSizes(Info& info);

// Blocks of a component in whole MCUs of the frame.
int paddedBlocksAcross(const Info& info, const Component& component);
int paddedBlocksDown(const Info& info, const Component& component);

}
