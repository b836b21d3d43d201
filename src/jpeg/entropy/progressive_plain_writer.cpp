// SPDX-License-Identifier: Apache-2.0
// The plain steps of progressive Huffman encoding.
#include "jpeg/entropy/progressive_plain_writer.h"

#include "core/dispatch.h"
#include "jpeg/block/zigzag.h"

namespace qel {
namespace {

// Ends the pending run, with the correction bits of its blocks.
QelStatus endRun(const BandWriter& sink, QelEncodeHuffmanState* state)
{
    uint32_t run = state->endOfBandRun, count = state->correctionCount;
    state->endOfBandRun = 0;
    state->correctionCount = 0;
    if (run > kLongestRun) {
        if (QelStatus bad = sink.symbol(kLongestRunSymbol)) return bad;
        if (QelStatus bad = sink.bits(run, kLongestRunSize)) return bad;
        run -= kLongestRun;
    }
    if (run > 0) {
        uint32_t size = ownqj_get_eobsize(run);
        if (size > kLongestRunSize) return qelStsJPEGHuffTableErr;
        if (QelStatus bad = sink.symbol(int(size) << 4)) return bad;
        if (QelStatus bad = sink.bits(run, int(size))) return bad;
    }
    return sink.corrections(state->correctionBits, count);
}

// One block more whose band is at its end, with `count` correction bits that stand in the buffer already.
QelStatus lengthenRun(const BandWriter& sink, uint32_t count, QelEncodeHuffmanState* state)
{
    state->endOfBandRun += 1;
    state->correctionCount += count;
    bool isFull = state->endOfBandRun >= kLongestRun || state->correctionCount > kMostCorrectionBits;
    return isFull ? endRun(sink, state) : qelStsNoErr;
}

// The point transform divides the magnitude: -1 with al = 1 is 0.
int magnitudeAt(const int16_t* block, int position, const Band& band)
{
    int value = coefficientAt(block, own_qj_izigzag_index[position]);
    return (value < 0 ? -value : value) >> band.al;
}
bool isNegativeAt(const int16_t* block, int position)
{
    return coefficientAt(block, own_qj_izigzag_index[position]) < 0;
}

// The last position of a coefficient that becomes significant in this scan, 0 if there is none.
int lastNewPosition(const int16_t* block, const Band& band)
{
    for (int k = band.se; k >= band.ss; --k)
        if (magnitudeAt(block, k, band) == 1) return k;
    return 0;
}

}

QelStatus writeFirst(const int16_t* block, const Band& band, const BandWriter& sink, QelEncodeHuffmanState* state)
{
    int zeros = 0;
    for (int k = band.ss; k <= band.se; ++k) {
        int magnitude = magnitudeAt(block, k, band);
        if (magnitude == 0) {
            ++zeros;
            continue;
        }
        if (QelStatus bad = endRun(sink, state)) return bad;
        for (; zeros > 15; zeros -= 16)
            if (QelStatus bad = sink.symbol(kSixteenZeros)) return bad;
        int category = categoryOf(magnitude);
        if (category > kLargestWritten) return qelStsJPEGHuffTableErr;
        if (QelStatus bad = sink.symbol(zeros << 4 | category)) return bad;
        if (QelStatus bad = sink.bits(uint32_t(isNegativeAt(block, k) ? ~magnitude : magnitude), category)) return bad;
        zeros = 0;
    }
    return zeros == 0 ? qelStsNoErr : lengthenRun(sink, 0, state);
}

// The correction bits of a block are kept after those of the pending run; once that run is written, they move to the
// front of the buffer.
QelStatus writeRefinement(const int16_t* block, const Band& band, const BandWriter& sink, QelEncodeHuffmanState* state)
{
    int last = lastNewPosition(block, band), zeros = 0;
    uint8_t* bits = state->correctionBits + state->correctionCount;
    uint32_t count = 0;
    auto writeKept = [&] {
        QelStatus status = sink.corrections(bits, count);
        bits = state->correctionBits;
        count = 0;
        return status;
    };
    for (int k = band.ss; k <= band.se; ++k) {
        int magnitude = magnitudeAt(block, k, band);
        if (magnitude == 0) ++zeros;
        if (magnitude > 1) bits[count++] = magnitude & 1;
        if (zeros > 15 && k <= last) {
            if (QelStatus bad = endRun(sink, state)) return bad;
            if (QelStatus bad = sink.symbol(kSixteenZeros)) return bad;
            if (QelStatus bad = writeKept()) return bad;
            zeros -= 16;
        }
        if (magnitude != 1) continue;
        if (QelStatus bad = endRun(sink, state)) return bad;
        if (QelStatus bad = sink.symbol(zeros << 4 | 1)) return bad;
        if (QelStatus bad = sink.bits(!isNegativeAt(block, k), 1)) return bad;
        if (QelStatus bad = writeKept()) return bad;
        zeros = 0;
    }
    return zeros > 0 || count > 0 ? lengthenRun(sink, count, state) : qelStsNoErr;
}

QelStatus flushRun(const BandWriter& sink, QelEncodeHuffmanState* state)
{
    limitCorrections(state);
    if (QelStatus bad = endRun(sink, state)) return bad;
    if (QelStatus bad = sink.bits(0x7F, 7)) return bad;
    ownqj_EncodeHuffmanStateInit(state);
    return qelStsNoErr;
}

QelStatus flushCount(uint32_t* statistics, QelEncodeHuffmanState* state)
{
    if (QelStatus bad = kernels<ProgressiveEncodeKernels>().countRun(statistics, state)) return bad;
    ownqj_EncodeHuffmanStateInit(state);
    return qelStsNoErr;
}

}
