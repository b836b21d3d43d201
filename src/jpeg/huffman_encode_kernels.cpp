// Kernels of sequential Huffman encoding: the coefficients that are not zero are found first, all at once.
#include "jpeg/huffman_encode.h"

#include "core/big_endian.h"
#include "jpeg/scan_order.h"

namespace qel {
namespace QEL_BUILD {
namespace {

// Sets of coefficients, a bit for each. of[i][m] is the set, by position in the scan, of those coefficients from
// natural index 6i on that `m` has.
struct ScanSets {
    uint64_t of[11][64];
};
constexpr ScanSets makeScanSets()
{
    ScanSets sets = {};
    for (int position = 0; position < 64; ++position) {
        int index = kScanOrder.index[position];
        for (int m = 0; m < 64; ++m)
            if ((m >> (index % 6)) & 1) sets.of[index / 6][m] |= uint64_t(1) << position;
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
#pragma GCC unroll 11
    for (int i = 0; i < 11; ++i) scan |= kScanSets.of[i][(natural >> (6 * i)) & 63];
    return scan;
}

// The category of a value, and the bits that follow its code: a negative value is written as the one's complement of
// its magnitude.
struct Magnitude {
    uint64_t category;
    uint64_t bits;
};
QEL_INLINE constexpr Magnitude measure(int value)
{
    uint32_t category = value == 0 ? 0 : 32 - uint32_t(__builtin_clz(uint32_t(value < 0 ? -value : value)));
    return {category, uint32_t(value < 0 ? value - 1 : value) & ((1u << category) - 1)};
}

// The same for -256 to 255: of[value + 256] is (bits << 8) | category.
struct SmallMagnitudes {
    uint16_t of[512];
};
constexpr SmallMagnitudes makeSmallMagnitudes()
{
    SmallMagnitudes table = {};
    for (int i = 0; i < 512; ++i) table.of[i] = uint16_t(measure(i - 256).bits << 8 | measure(i - 256).category);
    return table;
}
constexpr SmallMagnitudes kSmallMagnitudes = makeSmallMagnitudes();

QEL_INLINE Magnitude magnitudeOf(int value)
{
    uint32_t index = uint32_t(value + 256);
    if (__builtin_expect(index >= 512, 0)) return measure(value);
    uint32_t entry = kSmallMagnitudes.of[index];
    return {entry & 0xFF, entry >> 8};
}

// Calls sink.value(run, coefficient) for each coefficient after the first that is not zero, with the number of zeros
// before it (up to 15; sink.sixteenZeros() takes away sixteen at a time), then sink.endOfBlock() where zeros are left.
// Each returns false to stop.
template <class Sink> QEL_INLINE bool walk(const int16_t* block, Sink& sink)
{
    uint64_t next = 1;
    for (uint64_t left = nonZero(block) & ~uint64_t(1); left != 0; left &= left - 1) {
        uint64_t position = uint64_t(__builtin_ctzll(left)), run = position - next;
        next = position + 1;
        for (; __builtin_expect(run > 15, 0); run -= 16)
            if (!sink.sixteenZeros()) return false;
        if (!sink.value(run, load<int16_t>(block + kScanOrder.index[position]))) return false;
    }
    return next == 64 || sink.endOfBlock();
}

// Bits on their way to memory, 64 at a time: the low end of `bits` holds the last ones of the stream, `count` of which
// have not been written yet.
struct Output {
    static constexpr int kLargestStep = 16; // a word, each byte stuffed

    uint64_t bits;
    int count;
    uint8_t* next;
    const uint8_t* lastStart; // a step may start here, but not behind

    QEL_INLINE void putByte(uint8_t byte)
    {
        *next++ = byte;
        if (byte == 0xFF) *next++ = 0;
    }

    QEL_INLINE void putWord(uint64_t word)
    {
        if (__builtin_expect(hasFF(word), 0)) {
            for (int i = 0; i < 8; ++i) putByte(uint8_t(word >> (56 - 8 * i)));
        } else {
            storeBig64(next, word);
            next += 8;
        }
    }

    // Appends `length` bits, 1 to 32; none of `value` lies above them. False near the end of the buffer.
    QEL_INLINE bool put(uint64_t value, int length)
    {
        count += length;
        int excess = count - 64;
        if (__builtin_expect(excess < 0, 1)) {
            bits = bits << length | value;
            return true;
        }
        if (next > lastStart) return false;
        uint64_t word = bits << (length - excess) | value >> excess;
        putWord(word);
        bits = word << excess | (value & ((uint64_t(1) << excess) - 1));
        count = excess;
        return true;
    }

    // Writes the whole bytes that are left, singly, so that no other byte is touched.
    QEL_INLINE void finish()
    {
        for (; count >= 8; count -= 8) putByte(uint8_t(bits >> (count - 8)));
    }

    // The same at once, where there is room for a step. Bytes behind the last one are written as they are.
    QEL_INLINE bool finishAtOnce()
    {
        if (next > lastStart) return false;
        int bytes = count >> 3;
        uint64_t word = bits << (-count & 63), behind = ~uint64_t(0) >> (8 * bytes);
        if (__builtin_expect(hasFF(word & ~behind), 0)) {
            finish();
            return true;
        }
        storeBig64(next, (word & ~behind) | (loadBig64(next) & behind));
        next += bytes;
        count &= 7;
        return true;
    }
};

// Writes the symbols of a block.
struct Coder {
    const QelEncodeHuffmanSpec& ac;
    Output out;
    QelStatus status;

    QEL_INLINE bool symbol(const QelEncodeHuffmanSpec& spec, uint64_t index, Magnitude value)
    {
        uint32_t entry = spec.entries[index];
        int length = int(entry >> 16);
        if (__builtin_expect(length == 0, 0)) {
            status = qelStsJPEGHuffSpecErr;
            return false;
        }
        if (out.put(uint64_t(entry & 0xFFFF) << value.category | value.bits, length + int(value.category))) return true;
        status = qelStsJPEGOutOfBufErr;
        return false;
    }
    QEL_INLINE bool value(uint64_t run, int coefficient)
    {
        Magnitude magnitude = magnitudeOf(coefficient);
        return symbol(ac, run << 4 | magnitude.category, magnitude);
    }
    QEL_INLINE bool sixteenZeros() { return symbol(ac, kSixteenZeros, {0, 0}); }
    QEL_INLINE bool endOfBlock() { return symbol(ac, kEndOfBlock, {0, 0}); }

    QEL_INLINE void block(const int16_t* src, int lastDc, const QelEncodeHuffmanSpec& dc)
    {
        Magnitude difference = magnitudeOf(load<int16_t>(src) - lastDc);
        if (symbol(dc, difference.category, difference)) walk(src, *this);
    }
};

// The low word of the state has the pending bits from bit 23 down, and the last written byte above them.
QelStatus encodeBlock(const int16_t* src, uint8_t* dst, int dstLen, int* pos, int16_t* lastDc,
                      const QelEncodeHuffmanSpec* dc, const QelEncodeHuffmanSpec* ac, QelEncodeHuffmanState* state)
{
    Coder coder = {
        *ac,
        {state->accumulator[0] >> (24 - state->count), state->count, dst + *pos, dst + dstLen - Output::kLargestStep},
        qelStsNoErr};
    coder.block(src, *lastDc, *dc);
    if (coder.status == qelStsJPEGOutOfBufErr || !coder.out.finishAtOnce()) return qelStsJPEGOutOfBufErr;
    *lastDc = load<int16_t>(src);
    state->accumulator[0] = uint32_t(coder.out.bits << (24 - coder.out.count));
    state->accumulator[1] = 0;
    state->count = coder.out.count;
    *pos = int(coder.out.next - dst);
    return coder.status;
}

void encodeBlockDirect(const int16_t* src, uint8_t* dst, int* bitLength, int16_t* lastDc,
                       const QelEncodeHuffmanSpec* dc, const QelEncodeHuffmanSpec* ac)
{
    int bytes = *bitLength >> 3, count = *bitLength & 7;
    uint64_t bits = count == 0 ? 0 : dst[bytes] >> (8 - count);
    Coder coder = {*ac, {bits, count, dst + bytes, (const uint8_t*)UINTPTR_MAX}, qelStsNoErr};
    coder.block(src, *lastDc, *dc);
    coder.out.finish();
    if (coder.out.count != 0) *coder.out.next = uint8_t(coder.out.bits << (8 - coder.out.count));
    *lastDc = load<int16_t>(src);
    *bitLength = int(uint32_t(coder.out.next - dst) * 8 + uint32_t(coder.out.count));
}

struct Counter {
    uint32_t* ac;

    QEL_INLINE bool value(uint64_t run, int coefficient)
    {
        ++ac[run << 4 | magnitudeOf(coefficient).category];
        return true;
    }
    QEL_INLINE bool sixteenZeros() { return ++ac[kSixteenZeros], true; }
    QEL_INLINE bool endOfBlock() { return ++ac[kEndOfBlock], true; }
};

void countBlock(const int16_t* src, uint32_t* dcStatistics, uint32_t* acStatistics, int16_t* lastDc)
{
    Counter counter = {acStatistics};
    ++dcStatistics[magnitudeOf(load<int16_t>(src) - *lastDc).category];
    *lastDc = load<int16_t>(src);
    walk(src, counter);
}

}
}

const HuffmanEncodeKernels HuffmanEncodeKernels::QEL_BUILD = {
    qel::QEL_BUILD::encodeBlock, qel::QEL_BUILD::encodeBlockDirect, qel::QEL_BUILD::countBlock};

}
