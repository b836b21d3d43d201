// SPDX-License-Identifier: Apache-2.0
// Progressive scans of AC coefficients to a stream (T.81 G.1.2.2, G.1.2.3): the plain steps, which define what is
// written, and the choice between them and the kernels.
#pragma once

#include "jpeg/entropy/huffman_plain_writer.h"
#include "jpeg/entropy/progressive_encode.h"

namespace qel {

struct BandWriter {
    PlainWriter out;
    const QelEncodeHuffmanSpec* spec;

    QelStatus symbol(int symbol) const { return out.writeSymbol(spec, symbol); }
    QelStatus bits(uint32_t value, int length) const { return length == 0 ? qelStsNoErr : out.write(value, length); }
    QelStatus corrections(const uint8_t* bit, uint32_t count) const
    {
        for (uint32_t i = 0; i < count; ++i)
            if (QelStatus bad = out.write(bit[i], 1)) return bad;
        return qelStsNoErr;
    }
};

// A block of a first scan, and of a refinement scan.
QelStatus writeFirst(const int16_t* block, const Band& band, const BandWriter& sink, QelEncodeHuffmanState* state);
QelStatus writeRefinement(const int16_t* block, const Band& band, const BandWriter& sink, QelEncodeHuffmanState* state);
// The end of a scan of either kind: the pending run, ones to the end of the byte, a fresh state.
QelStatus flushRun(const BandWriter& sink, QelEncodeHuffmanState* state);
// The same for statistics: the pending run is counted.
QelStatus flushCount(uint32_t* statistics, QelEncodeHuffmanState* state);

// A state that nobody initialised may count more than its buffer holds.
inline void limitCorrections(QelEncodeHuffmanState* state)
{
    if (state->correctionCount > kMostCorrectionBits) state->correctionCount = kMostCorrectionBits;
}

// By the kernel, or if the block comes near the end of the buffer by the plain steps.
template <class Kernel, class Plainly> inline QelStatus encodeBand(Kernel kernel, Plainly plainly, const int16_t* block,
                                                                   const Band& band, const BandWriter& sink,
                                                                   QelEncodeHuffmanState* state)
{
    limitCorrections(state);
    if (sink.out.room() >= ProgressiveEncodeKernels::kRoomForBlock) {
        QelStatus status = kernel(block, sink.out.dst, sink.out.dstLen, sink.out.pos, band, sink.spec, state);
        if (status != qelStsJPEGOutOfBufErr) return status;
    }
    return plainly(block, band, sink, state);
}

}
