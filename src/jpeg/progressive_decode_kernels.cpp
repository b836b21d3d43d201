// Kernels of progressive Huffman decoding.
#include "jpeg/progressive_decode.h"

#include "jpeg/huffman_reader.h"
#include "jpeg/scan_order.h"

namespace qel {
namespace QEL_BUILD {
namespace {

QelStatus dcFirst(const uint8_t* src, int srcLen, int* pos, int16_t* block, int16_t* lastDc, uint32_t* marker, int al,
                  const QelDecodeHuffmanSpec* table, QelDecodeHuffmanState* state)
{
    StateReader in(src, srcLen, pos, marker, state);
    int symbol = in.symbol(*table);
    if (symbol < 0) return qelStsJPEGOutOfBufErr;
    if (int n = symbol & 15) {
        if (!in.has(n)) return qelStsJPEGOutOfBufErr;
        *lastDc = int16_t(*lastDc + in.takeValue(n));
    }
    store(block, int16_t(*lastDc << al));
    return qelStsNoErr;
}

QelStatus dcRefine(const uint8_t* src, int srcLen, int* pos, int16_t* block, uint32_t* marker, int al,
                   QelDecodeHuffmanState* state)
{
    StateReader in(src, srcLen, pos, marker, state);
    if (!in.has(1)) return qelStsJPEGOutOfBufErr;
    store(block, int16_t(load<int16_t>(block) | int(in.take(1)) << al));
    return qelStsNoErr;
}

// The number of blocks, this one included, that an end of band with so many extra bits ends; 0 where they lack.
QEL_INLINE uint32_t endOfBandRun(StateReader& in, int extraBits)
{
    return in.has(extraBits) ? (1u << extraBits) + in.take(extraBits) : 0;
}

QelStatus acFirst(const uint8_t* src, int srcLen, int* pos, int16_t* block, uint32_t* marker, int ss, int se, int al,
                  const QelDecodeHuffmanSpec* table, QelDecodeHuffmanState* state)
{
    if (state->endOfBandRun > 0) {
        --state->endOfBandRun;
        return qelStsNoErr;
    }
    StateReader in(src, srcLen, pos, marker, state);
    for (int at = ss; at <= se; ++at) {
        int symbol = in.symbol(*table), run = symbol >> 4 & 15, n = symbol & 15;
        if (symbol < 0) return qelStsJPEGOutOfBufErr;
        if (n == 0 && run < 15) {
            uint32_t blocks = endOfBandRun(in, run);
            if (blocks == 0) return qelStsJPEGOutOfBufErr;
            state->endOfBandRun = blocks - 1;
            break;
        }
        at += run;
        if (n == 0) continue;
        if (!in.has(n)) return qelStsJPEGOutOfBufErr;
        int value = in.takeValue(n);
        if (at > se) return qelStsJPEGCoeffPosErr;
        store(block + kScanOrder.index[at], int16_t(value << al));
    }
    return qelStsNoErr;
}

// Passes over coefficients from `at` on, correcting those that are not 0, up to the one behind `zeros` that are 0.
// Where that one is, or last + 1 if there is none; kNoBits where the segment ends.
QEL_INLINE int correct(StateReader& in, int16_t* block, int at, int last, int zeros, int al)
{
    for (; at <= last; ++at) {
        int16_t* coefficient = block + kScanOrder.index[at];
        auto value = load<int16_t>(coefficient);
        if (value == 0) {
            if (zeros-- == 0) break;
            continue;
        }
        if (!in.has(1)) return kNoBits;
        if (in.take(1)) store(coefficient, int16_t(value + (value < 0 ? -1 : 1) * (1 << al)));
    }
    return at;
}

QelStatus acRefine(const uint8_t* src, int srcLen, int* pos, int16_t* block, uint32_t* marker, int ss, int se, int al,
                   const QelDecodeHuffmanSpec* table, QelDecodeHuffmanState* state)
{
    StateReader in(src, srcLen, pos, marker, state);
    int at = ss;
    while (state->endOfBandRun == 0 && at <= se) {
        int symbol = in.symbol(*table), run = symbol >> 4 & 15, n = symbol & 15;
        if (symbol < 0) return qelStsJPEGOutOfBufErr;
        if (n == 0 && run < 15) {
            state->endOfBandRun = endOfBandRun(in, run);
            if (state->endOfBandRun == 0) return qelStsJPEGOutOfBufErr;
            break;
        }
        int value = 0;
        if (n != 0) {
            if (!in.has(1)) return qelStsJPEGOutOfBufErr;
            value = in.take(1) ? 1 << al : -(1 << al);
        }
        at = correct(in, block, at, se, run, al);
        if (at < 0) return qelStsJPEGOutOfBufErr;
        if (value != 0) {
            if (at > se) return qelStsJPEGCoeffPosErr;
            store(block + kScanOrder.index[at], int16_t(value));
        }
        ++at;
    }
    if (state->endOfBandRun == 0) return qelStsNoErr;
    if (correct(in, block, at, se, 64, al) < 0) return qelStsJPEGOutOfBufErr;
    --state->endOfBandRun;
    return qelStsNoErr;
}

}
}

const ProgressiveDecodeKernels ProgressiveDecodeKernels::QEL_BUILD = {
    qel::QEL_BUILD::dcFirst, qel::QEL_BUILD::dcRefine, qel::QEL_BUILD::acFirst, qel::QEL_BUILD::acRefine};

}
