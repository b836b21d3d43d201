// Kernels of sequential Huffman encoding: the coefficients that are not zero are found first, all at once.
#include "jpeg/huffman_encode.h"

#include "core/big_endian.h"
#include "jpeg/scan_order.h"

namespace qel {
namespace QEL_BUILD {
namespace {

// A set of coefficients has 64 bits; of[i][m] is the set, by position in the scan, of the four coefficients from
// natural index 4i on that `m` has.
struct ScanSets {
    uint64_t of[16][16];
};
constexpr ScanSets makeScanSets()
{
    ScanSets sets = {};
    for (int position = 0; position < 64; ++position) {
        int index = kScanOrder.index[position];
        for (int m = 0; m < 16; ++m)
            if ((m >> (index % 4)) & 1) sets.of[index / 4][m] |= uint64_t(1) << position;
    }
    return sets;
}
constexpr ScanSets kScanSets = makeScanSets();

// The coefficients that are not zero, by position in the scan.
QEL_INLINE uint64_t nonZero(const int16_t* block)
{
    constexpr int N = QEL_WIDTH < 16 ? 16 : QEL_WIDTH;
    uint64_t zeros = 0;
    for (int i = 0; i < 64; i += N) {
        auto low = (S16<N>)(load<S16<N>>(block + i) == 0), high = (S16<N>)(load<S16<N>>(block + i + N / 2) == 0);
        zeros |= Simd<N>::signMask(Simd<N>::inOrder(Simd<N>::packUnsigned(low & 0xFF, high & 0xFF))) << (i % 64);
    }
    uint64_t natural = ~zeros, scan = 0;
    for (int i = 0; i < 16; ++i) scan |= kScanSets.of[i][(natural >> (4 * i)) & 15];
    return scan;
}

// The number of bits of a byte.
struct BitCounts {
    uint8_t of[256];
};
constexpr BitCounts makeBitCounts()
{
    BitCounts counts = {};
    for (int i = 1; i < 256; ++i) counts.of[i] = uint8_t(counts.of[i / 2] + 1);
    return counts;
}
constexpr BitCounts kBitCounts = makeBitCounts();

// Of a value of at most 16 bits and a sign. A table: finding the highest bit is slow on baseline processors.
QEL_INLINE int category(int value)
{
    int magnitude = value < 0 ? -value : value;
    return magnitude < 256 ? kBitCounts.of[magnitude] : kBitCounts.of[magnitude >> 8] + 8;
}

// Calls sink.value(run, coefficient) for each coefficient after the first that is not zero, with the number of zeros
// before it (up to 15; sink.sixteenZeros() takes away sixteen at a time), then sink.endOfBlock() where zeros are left.
// Each returns false to stop.
template <class Sink> QEL_INLINE bool walk(const int16_t* block, Sink& sink)
{
    int last = 0;
    for (uint64_t left = nonZero(block) & ~uint64_t(1); left != 0; left &= left - 1) {
        int position = __builtin_ctzll(left), run = position - last - 1;
        last = position;
        for (; run > 15; run -= 16)
            if (!sink.sixteenZeros()) return false;
        if (!sink.value(run, load<int16_t>(block + kScanOrder.index[position]))) return false;
    }
    return last == 63 || sink.endOfBlock();
}

// A sink in registers. Up to 63 bits are pending; they go out 64 at a time.
struct Output {
    static constexpr int kLargestStep = 16;

    uint64_t bits;
    int count;
    uint8_t* next;
    int64_t room;

    QEL_INLINE void putByte(uint8_t byte)
    {
        *next++ = byte, --room;
        if (byte == 0xFF) *next++ = 0, --room;
    }

    QEL_INLINE void putWord(uint64_t word)
    {
        if (hasFF(word)) {
            for (int i = 0; i < 8; ++i) putByte(uint8_t(word >> (56 - 8 * i)));
        } else {
            storeBig64(next, word);
            next += 8, room -= 8;
        }
    }

    // Appends `length` bits, 1 to 32; none of `value` lies above them. False near the end of the buffer.
    QEL_INLINE bool put(uint64_t value, int length)
    {
        int excess = count + length - 64;
        if (excess < 0) {
            bits = bits << length | value;
            count += length;
            return true;
        }
        if (room < kLargestStep) return false;
        uint64_t word = bits << (length - excess) | value >> excess;
        putWord(word);
        bits = word << excess | (value & ((uint64_t(1) << excess) - 1));
        count = excess;
        return true;
    }

    // Writes all whole bytes.
    QEL_INLINE bool finish()
    {
        if (room < kLargestStep) return false;
        for (; count >= 8; count -= 8) putByte(uint8_t(bits >> (count - 8)));
        return true;
    }
};

// Writes the symbols of a block.
struct Coder {
    const QelEncodeHuffmanSpec& ac;
    Output out;
    QelStatus status;

    QEL_INLINE bool symbol(const QelEncodeHuffmanSpec& spec, int index, int value, int extraBits)
    {
        uint32_t entry = spec.entries[index];
        int length = int(entry >> 16);
        if (length == 0) {
            status = qelStsJPEGHuffSpecErr;
            return false;
        }
        // A negative value is written as the one's complement of its magnitude.
        uint32_t extra = uint32_t(value + (value >> 31)) & ((1u << extraBits) - 1);
        if (out.put(uint64_t(entry & 0xFFFF) << extraBits | extra, length + extraBits)) return true;
        status = qelStsJPEGOutOfBufErr;
        return false;
    }
    QEL_INLINE bool value(int run, int coefficient)
    {
        int bits = category(coefficient);
        return symbol(ac, run << 4 | bits, coefficient, bits);
    }
    QEL_INLINE bool sixteenZeros() { return symbol(ac, kSixteenZeros, 0, 0); }
    QEL_INLINE bool endOfBlock() { return symbol(ac, kEndOfBlock, 0, 0); }
};

QelStatus encodeBlock(const int16_t* block, int difference, const QelEncodeHuffmanSpec* dc,
                      const QelEncodeHuffmanSpec* ac, BitSink* sink)
{
    Coder coder = {*ac, {sink->bits, sink->count, sink->next, sink->room}, qelStsNoErr};
    int bits = category(difference);
    if (coder.symbol(*dc, bits, difference, bits)) walk(block, coder);
    if (coder.status != qelStsJPEGOutOfBufErr && !coder.out.finish()) coder.status = qelStsJPEGOutOfBufErr;
    if (coder.status != qelStsJPEGOutOfBufErr)
        *sink = {coder.out.bits, coder.out.count, coder.out.next, coder.out.room};
    return coder.status;
}

struct Counter {
    uint32_t* ac;

    QEL_INLINE bool value(int run, int coefficient)
    {
        ++ac[run << 4 | category(coefficient)];
        return true;
    }
    QEL_INLINE bool sixteenZeros() { return ++ac[kSixteenZeros], true; }
    QEL_INLINE bool endOfBlock() { return ++ac[kEndOfBlock], true; }
};

void countBlock(const int16_t* block, int difference, uint32_t* dcStatistics, uint32_t* acStatistics)
{
    Counter counter = {acStatistics};
    ++dcStatistics[category(difference)];
    walk(block, counter);
}

}
}

const HuffmanEncodeKernels HuffmanEncodeKernels::QEL_BUILD = {qel::QEL_BUILD::encodeBlock, qel::QEL_BUILD::countBlock};

}
