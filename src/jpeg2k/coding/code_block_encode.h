// SPDX-License-Identifier: Apache-2.0
// Code-block encoding: the block as sets of samples, and the table of the kernels that work on them.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "core/kernel_tables.h"
#include "jpeg2k/coding/mq_encoder.h"
#include "jpeg2k/coding/raw_packer.h"
#include "qeljx/types.h"

namespace qel {

// A word is a set of up to 64 samples in the order of the scan: 16 columns of a stripe, four rows each from the lowest
// bit up; those that lie outside of the block stay empty. A map has the words of each stripe with one after them, and
// a stripe above and below. These stay empty from the map of signs on: only there words are looked at from beside.
struct BlockMaps {
    int width, height;
    int words, stripes; // words in a stripe without the one after them
    uint64_t* first;    // maps follow each other: bits 0 to 30 of the magnitudes, then those below
    enum { kSigns = 31, kSignificant, kVisited, kRefined, kMaps };

    QEL_INLINE ptrdiff_t stride() const { return words + 1; }
    QEL_INLINE ptrdiff_t size() const { return stride() * (stripes + 2) + 1; }
    QEL_INLINE uint64_t* map(int index) const { return first + index * size() + stride() + 1; }

    static QEL_INLINE int wordsFor(int width) { return width / 16 + (width % 16 != 0); }
    static QEL_INLINE int stripesFor(int height) { return height / 4 + (height % 4 != 0); }
    static QEL_INLINE BlockMaps of(QelSize block, uint64_t* memory)
    {
        return {block.width, block.height, wordsFor(block.width), stripesFor(block.height), memory};
    }
};

// How a pass is coded.
struct PassMode {
    int plane;
    int bandType;
    bool isRaw, isCausal;
    bool isExact; // what is coded is then all there is
};

// What a pass records: decisions, each as (context << 1) | decision, and what they reduce the squared error by, in
// units of 2^-13 of the square of the plane's step.
struct PassRecord {
    uint8_t* end;
    int64_t reduction;
};

struct CodeBlockEncodeKernels {
    // Fills the maps of signs and of magnitudes, down to the map `lowest` at least, and clears those from kSignificant
    // on. Returns the union of the magnitudes.
    uint32_t (*load)(const int32_t* src, int srcStep, int lowest, const BlockMaps& maps);

    // Passes over the block (T.800 D.3). Beyond the end of the record up to kRecordSlack bytes are written.
    PassRecord (*significance)(const BlockMaps& maps, const PassMode& mode, uint8_t* decisions);
    PassRecord (*refinement)(const BlockMaps& maps, const PassMode& mode, uint8_t* decisions);
    PassRecord (*cleanup)(const BlockMaps& maps, const PassMode& mode, uint8_t* decisions);

    // Each writes no more than kBytesPerDecision bytes for a decision.
    uint8_t* (*encode)(MqEncoder& mq, const uint8_t* decisions, int count, uint8_t* next);
    uint8_t* (*pack)(RawPacker& raw, const uint8_t* decisions, int count, uint8_t* next);

    static constexpr int kRecordSlack = 64;
    static constexpr int kBytesPerDecision = 3;

    QEL_BUILDS(CodeBlockEncodeKernels);
};

}
