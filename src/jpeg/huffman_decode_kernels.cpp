// Kernels of sequential Huffman decoding.
#include "jpeg/huffman_decode.h"

#include "jpeg/huffman_reader.h"
#include "jpeg/huffman_window.h"
#include "jpeg/scan_order.h"

namespace qel {
namespace QEL_BUILD {
namespace {

QEL_INLINE void clear(int16_t* block)
{
    constexpr int N = QEL_WIDTH < 16 ? 16 : QEL_WIDTH;
    for (int i = 0; i < 64; i += N / 2) store(block + i, S16<N>{});
}

// Decodes from `position` on; where the segment ends within a symbol, position tells how far it came, and the result is
// qelStsJPEGMarkerWarn.
template <class Reader>
QEL_INLINE QelStatus decodeInto(int16_t* block, Reader& in, int16_t* lastDc, HuffmanTablePair tables, int& position)
{
    if (position == 0) {
        int symbol = in.symbol(*tables.dc);
        if (symbol < 0) return symbol == kNoBits ? qelStsJPEGMarkerWarn : qelStsJPEGHuffTableErr;
        int dc = *lastDc;
        if (int n = symbol & 15) {
            if (!in.has(n)) return qelStsJPEGOutOfBufErr;
            dc += in.takeValue(n);
            *lastDc = int16_t(dc);
        }
        store(block, int16_t(dc));
        position = 1;
    }
    while (position < 64) {
        int symbol = in.symbol(*tables.ac);
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

// The same from the start, as long as the window fills. False if the block is to be finished from `position` on.
QEL_INLINE bool decodeAhead(int16_t* block, Window& in, int16_t* lastDc, HuffmanTablePair tables, int& position,
                            QelStatus& status)
{
    if (!in.fill()) return false;
    int length, dc = *lastDc, n = in.symbol(*tables.dc, length) & 15;
    if (n != 0) {
        dc += in.valueBehind(length, n);
        *lastDc = int16_t(dc);
    }
    in.skip(length, n);
    store(block, int16_t(dc));
    int at = 1;
    for (; at < 64; ++at) {
        int symbol = in.symbol(*tables.ac, length), run = symbol >> 4 & 15;
        if (!in.fill()) {
            position = at;
            return false;
        }
        n = symbol & 15;
        if (n == 0) {
            in.skip(length, 0);
            if (run < 15) break;
            at += 15;
            continue;
        }
        at += run;
        int value = in.valueBehind(length, n);
        in.skip(length, n);
        if (__builtin_expect(at > 63, 0)) {
            status = qelStsJPEGCoeffPosErr;
            break;
        }
        store(block + kScanOrder.index[at], int16_t(value));
    }
    position = at;
    return true;
}

QelStatus decodeBlock(BitSource* source, int16_t* block, int16_t* lastDc, HuffmanTablePair tables,
                      uint32_t* positionsLeft)
{
    clear(block);
    int position = 0;
    QelStatus status = qelStsNoErr;
    Window window(*source);
    bool isWhole = decodeAhead(block, window, lastDc, tables, position, status);
    window.giveBack(*source);
    if (!isWhole) {
        BitReader<true> in = {*source};
        status = decodeInto(block, in, lastDc, tables, position);
        *source = in;
        if (status == qelStsJPEGMarkerWarn) return qelStsJPEGOutOfBufErr;
    }
    if (status == qelStsNoErr) *positionsLeft = position > 63 ? 0 : uint32_t(64 - position);
    return status;
}

QelStatus decodeBlockDirect(BitSource* source, int16_t* block, int16_t* lastDc, HuffmanTablePair tables)
{
    clear(block);
    BitReader<false> in = {*source};
    int position = 0;
    QelStatus status = decodeInto(block, in, lastDc, tables, position);
    if (status == qelStsJPEGMarkerWarn) {
        if (position == 0) {
            source->marker = in.marker;
            return status;
        }
        in.count = 0;
        status = qelStsNoErr;
    }
    *source = in;
    return status;
}

// A difference of category 16 is 32768, with no bits behind the symbol.
QelStatus decodeOne(BitSource* source, const QelDecodeHuffmanSpec* spec, int16_t* value)
{
    BitReader<true> in = {*source};
    int symbol = in.symbol(*spec);
    bool whole = symbol >= 0 && (symbol == 0 || symbol > 15 || in.has(symbol));
    if (whole) *value = int16_t(symbol == 0 ? 0 : symbol > 15 ? -32768 : in.takeValue(symbol));
    *source = in;
    return whole ? qelStsNoErr : qelStsJPEGOutOfBufErr;
}

QelStatus fill(BitSource* source, int needed)
{
    BitReader<true> in = {*source};
    QelStatus status = in.fillBytewise(needed);
    *source = in;
    return status;
}

void fillDirect(BitSource* source)
{
    BitReader<false> in = {*source};
    in.fillBytewise(0);
    *source = in;
}

template <bool kBounded> int symbolOf(BitSource* source, const QelDecodeHuffmanSpec* spec)
{
    BitReader<kBounded> in = {*source};
    int symbol = in.symbol(*spec);
    *source = in;
    return symbol;
}

template <bool kBounded> int longCodeOf(BitSource* source, const QelDecodeHuffmanSpec* spec, int length)
{
    BitReader<kBounded> in = {*source};
    int symbol = in.longCode(*spec, length);
    *source = in;
    return symbol;
}

}
}

const HuffmanDecodeKernels HuffmanDecodeKernels::QEL_BUILD = {
    qel::QEL_BUILD::decodeBlock, qel::QEL_BUILD::decodeBlockDirect, qel::QEL_BUILD::decodeOne,
    qel::QEL_BUILD::fill,        qel::QEL_BUILD::symbolOf<true>,    qel::QEL_BUILD::longCodeOf<true>,
    qel::QEL_BUILD::fillDirect,  qel::QEL_BUILD::symbolOf<false>,   qel::QEL_BUILD::longCodeOf<false>};

}
