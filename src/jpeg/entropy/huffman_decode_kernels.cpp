// SPDX-License-Identifier: Apache-2.0
// Kernels of sequential Huffman decoding.
#include "jpeg/entropy/huffman_decode.h"

#include "jpeg/entropy/huffman_fast_reader.h"
#include "jpeg/entropy/huffman_plain_reader.h"
#include "jpeg/entropy/scan_order.h"

namespace qel::QEL_BUILD {
namespace {

// With registers of 16 bytes: for wider ones the function would align its frame.
QEL_INLINE void clear(int16_t* block)
{
#pragma GCC unroll 8
    for (int i = 0; i < 64; i += 8) store(block + i, S16<16>{});
}

// Decodes from `position` on; where the segment ends within a symbol, position tells how far it came, and the result is
// qelStsJPEGMarkerWarn.
template <class Reader> QEL_INLINE QelStatus decodeInto(int16_t* block, Reader& in, int16_t* lastDc,
                                                        const QelDecodeHuffmanSpec& dc, const QelDecodeHuffmanSpec& ac,
                                                        int& position)
{
    if (position == 0) {
        int symbol = in.symbol(dc);
        if (symbol < 0) return symbol == kNoBits ? qelStsJPEGMarkerWarn : qelStsJPEGHuffTableErr;
        if (int n = symbol & 15) {
            if (!in.has(n)) return qelStsJPEGOutOfBufErr;
            *lastDc = int16_t(*lastDc + in.takeValue(n));
        }
        store(block, *lastDc);
        position = 1;
    }
    while (position < 64) {
        int symbol = in.symbol(ac);
        if (symbol < 0) return symbol == kNoBits ? qelStsJPEGMarkerWarn : qelStsJPEGHuffTableErr;
        int run = symbol >> 4 & 15, n = symbol & 15;
        if (n == 0) {
            if (run < 15) break;
            position += 16;
            continue;
        }
        position += run;
        if (!in.has(n)) return qelStsJPEGOutOfBufErr;
        int value = in.takeValue(n);
        if (position > 63) return qelStsJPEGCoeffPosErr;
        store(block + kScanOrder.index[position], int16_t(value));
        ++position;
    }
    return qelStsNoErr;
}

// Decodes a block as long as the window fills.
struct BlockAhead {
    FastReader in;
    int16_t* block;
    size_t position = 0;
    QelStatus status = qelStsNoErr;

    // False if the block is to be finished from `position` on.
    QEL_INLINE bool decode(int16_t* lastDc, const QelDecodeHuffmanSpec& dc, const QelDecodeHuffmanSpec& ac)
    {
        if (!in.fill()) return false;
        *lastDc = int16_t(*lastDc + in.difference(in.symbol(dc) & 15));
        store(block, *lastDc);
        position = 1;
        for (;;) {
            // Mostly there are bits for two more.
#pragma GCC unroll 2
            for (int i = 0; i < 2; ++i)
                if (in.isReady() && !decodeNext(ac)) return true;
            if (!in.fill()) return false;
            if (!decodeNext(ac)) return true;
        }
    }

private:
    // False after the last coefficient.
    QEL_INLINE bool decodeNext(const QelDecodeHuffmanSpec& ac)
    {
        unsigned symbol = in.symbol(ac), n = symbol & 15;
        if (__builtin_expect(n == 0, 0)) {
            if (symbol < kSixteenZeros) return false;
            position += 16;
            return position < 64;
        }
        position += (symbol >> 4) + 1;
        store(block + kScanOrder.index[position - 1], int16_t(in.value(n)));
        if (__builtin_expect(position < 64, 1)) return true;
        if (position > 64) {
            // It had no place, and went to that of the last one.
            store(block + 63, int16_t(0));
            status = qelStsJPEGCoeffPosErr;
        }
        return false;
    }
};

QEL_INLINE QelStatus blockStatus(QelStatus status, int position, QelDecodeHuffmanState* state)
{
    if (status == qelStsNoErr) state->positionsLeft = position > 63 ? 0 : uint32_t(64 - position);
    return status;
}

__attribute__((noinline)) QelStatus finishBlock(const uint8_t* src, int srcLen, int* pos, int16_t* dst, int16_t* lastDc,
                                                uint32_t* marker, const QelDecodeHuffmanSpec* dc,
                                                const QelDecodeHuffmanSpec* ac, QelDecodeHuffmanState* state,
                                                int position)
{
    return readBytewise(src, srcLen, pos, marker, state, [&](StateReader& in) {
        QelStatus status = decodeInto(dst, in, lastDc, *dc, *ac, position);
        return status == qelStsJPEGMarkerWarn ? qelStsJPEGOutOfBufErr : blockStatus(status, position, state);
    });
}

QelStatus decodeBlock(const uint8_t* src, int srcLen, int* pos, int16_t* dst, int16_t* lastDc, uint32_t* marker,
                      const QelDecodeHuffmanSpec* dc, const QelDecodeHuffmanSpec* ac, QelDecodeHuffmanState* state)
{
    clear(dst);
    BlockAhead ahead = {{src, srcLen, *pos, *marker, state}, dst};
    bool isWhole = ahead.decode(lastDc, *dc, *ac);
    ahead.in.giveBack(src, pos, state);
    if (!isWhole) return finishBlock(src, srcLen, pos, dst, lastDc, marker, dc, ac, state, int(ahead.position));
    QelStatus status = blockStatus(ahead.status, int(ahead.position), state);
    if (ahead.in.isMarkerNear() && status == qelStsNoErr) return meetMarker(src, srcLen, pos, marker, state);
    return status;
}

// The bit position is that of a byte: bits of it that have been read are in `bits`. A segment that ends within an AC
// symbol ends the block too; within the first symbol only the marker is handed over.
QelStatus decodeBlockDirect(const uint8_t* src, int* bitPosition, int16_t* dst, int16_t* lastDc, uint32_t* marker,
                            uint32_t* bits, int* count, const QelDecodeHuffmanSpec* dc, const QelDecodeHuffmanSpec* ac)
{
    clear(dst);
    int pos = *bitPosition / 8, position = 0, heldCount = *count;
    uint32_t heldBits = *bits;
    QelStatus status;
    {
        DirectReader in(src, &pos, marker, &heldBits, &heldCount);
        status = decodeInto(dst, in, lastDc, *dc, *ac, position);
    }
    if (status == qelStsJPEGMarkerWarn) {
        if (position == 0) return qelStsNoErr;
        heldCount = 0;
        status = qelStsNoErr;
    }
    *bitPosition = int(uint32_t(pos) * 8);
    *bits = heldBits;
    *count = heldCount;
    return status;
}

// A difference of category 16 is 32768, with no bits after the symbol.
__attribute__((noinline)) QelStatus finishOne(const uint8_t* src, int srcLen, int* pos, int16_t* dst, uint32_t* marker,
                                              const QelDecodeHuffmanSpec* spec, QelDecodeHuffmanState* state)
{
    return readBytewise(src, srcLen, pos, marker, state, [=](StateReader& in) {
        int symbol = in.symbol(*spec);
        if (symbol < 0 || (symbol < 16 && !in.has(symbol))) return qelStsJPEGOutOfBufErr;
        store(dst, int16_t(symbol == 0 ? 0 : symbol > 15 ? -32768 : in.takeValue(symbol)));
        return qelStsNoErr;
    });
}

QelStatus decodeOne(const uint8_t* src, int srcLen, int* pos, int16_t* dst, uint32_t* marker,
                    const QelDecodeHuffmanSpec* spec, QelDecodeHuffmanState* state)
{
    FastReader in(src, srcLen, *pos, *marker, state);
    // The step leaves enough bits of a full window.
    bool isFull = in.fill();
    if (__builtin_expect(isFull, 1)) {
        unsigned symbol = in.symbol(*spec);
        store(dst, int16_t(__builtin_expect(symbol > 15, 0) ? -32768 : in.difference(symbol)));
    }
    in.giveBackNoted(src, pos, state);
    return isFull ? qelStsNoErr : finishOne(src, srcLen, pos, dst, marker, spec, state);
}

QelStatus fill(const uint8_t* src, int srcLen, int* pos, uint32_t* marker, int needed, QelDecodeHuffmanState* state)
{
    return StateReader(src, srcLen, pos, marker, state).fillBytewise(needed);
}

QelStatus symbolStatus(int found, int* symbol)
{
    if (found < 0) return qelStsJPEGOutOfBufErr;
    *symbol = found;
    return qelStsNoErr;
}

QelStatus symbol(const uint8_t* src, int srcLen, int* pos, uint32_t* marker, const QelDecodeHuffmanSpec* spec,
                 QelDecodeHuffmanState* state, int* found)
{
    return symbolStatus(StateReader(src, srcLen, pos, marker, state).symbol(*spec), found);
}

QelStatus longCode(const uint8_t* src, int srcLen, int* pos, uint32_t* marker, int length,
                   const QelDecodeHuffmanSpec* spec, QelDecodeHuffmanState* state, int* found)
{
    return symbolStatus(StateReader(src, srcLen, pos, marker, state).longCode(*spec, length), found);
}

void fillDirect(const uint8_t* src, int* pos, uint32_t* marker, uint32_t* bits, int* count)
{
    DirectReader(src, pos, marker, bits, count).fillBytewise(0);
}

int symbolDirect(const uint8_t* src, int* pos, uint32_t* marker, uint32_t* bits, int* count,
                 const QelDecodeHuffmanSpec* spec)
{
    return DirectReader(src, pos, marker, bits, count).symbol(*spec);
}

int longCodeDirect(const uint8_t* src, int* pos, uint32_t* marker, uint32_t* bits, int* count, int length,
                   const QelDecodeHuffmanSpec* spec)
{
    return DirectReader(src, pos, marker, bits, count).longCode(*spec, length);
}

constexpr HuffmanDecodeKernels kKernels = {
    .decodeBlock = decodeBlock,
    .decodeBlockDirect = decodeBlockDirect,
    .decodeOne = decodeOne,
    .fill = fill,
    .symbol = symbol,
    .longCode = longCode,
    .fillDirect = fillDirect,
    .symbolDirect = symbolDirect,
    .longCodeDirect = longCodeDirect,
};

}
}

const qel::HuffmanDecodeKernels qel::HuffmanDecodeKernels::QEL_BUILD = qel::QEL_BUILD::kKernels;
