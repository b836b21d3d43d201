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

// By a byte: the category of the value v that it stands for, which is v itself from 0 on, and else v - 1.
struct Categories {
    uint32_t of[256];
};
constexpr Categories makeCategories()
{
    Categories table = {};
    for (int i = 0; i < 256; ++i) table.of[i] = uint32_t(measure(i < 128 ? i : i - 255).category);
    return table;
}
constexpr Categories kCategories = makeCategories();

// The order of the scan in packed registers of N bytes, whose blocks of 16 hold two rows each.
template <int N> struct PackedScanOrder {
    uint8_t index[64];
};
template <int N> constexpr PackedScanOrder<N> makePackedScanOrder()
{
    PackedScanOrder<N> order = {};
    for (int position = 0; position < 64; ++position) {
        int row = kScanOrder.index[position] / 8, column = kScanOrder.index[position] % 8;
        // Rows of one register: those of its first source are the first halves of the blocks.
        constexpr int kRows = N / 8;
        int first = row / kRows * kRows, inRegister = row % kRows, block = inRegister % (kRows / 2);
        order.index[position] = uint8_t(8 * (first + 2 * block + inRegister / (kRows / 2)) + column);
    }
    return order;
}
template <int N> constexpr PackedScanOrder<N> kPackedScanOrder = makePackedScanOrder<N>();

// The coefficients of a block but the first: which are not zero, by position in the scan; and if each of them is within
// -126 to 126, a byte for each. From a negative one 1 is taken away, so that its low bits are those that follow its
// code.
class Coefficients {
public:
    QEL_INLINE explicit Coefficients(const int16_t* block)
    {
        if constexpr (!kAsBytes) {
            set = nonZero(block) & ~uint64_t(1);
            return;
        }
        U8<N> v[kRegisters], first = {0xFF};
        for (int i = 0; i < kRegisters; ++i)
            v[i] = (U8<N>)Simd<N>::packSigned(load<S16<N>>(block + i * N), load<S16<N>>(block + i * N + N / 2));
        Simd<N>::template permute<kPackedScanOrder<N>>(v);
        v[0] &= ~first;
        uint64_t zeros = 0;
        for (int i = 0; i < kRegisters; ++i) {
            zeros |= Simd<N>::signMask((U8<N>)(v[i] == 0)) << (i * N % 64);
            auto negative = (U8<N>)((S8<N>)v[i] < 0);
            beyond_ |= (U8<N>)((v[i] ^ negative) == 127);
            store(bytes + i * N, v[i] + negative);
        }
        set = ~zeros;
    }

    QEL_INLINE bool areBytes() const { return kAsBytes && Simd<N>::isZero(beyond_); }

    uint64_t set;
    alignas(32) uint8_t bytes[64];

private:
    static constexpr int N = QEL_WIDTH < 16 ? 16 : QEL_WIDTH, kRegisters = 64 / N;
    static constexpr bool kAsBytes = Simd<N>::kPermutesFast;
    U8<N> beyond_ = {};
};

// Calls sink.value(run, magnitudeAt(position)) for each position of `set`, with the number of others before it (up to
// 15; sink.sixteenZeros() takes away sixteen at a time), then sink.endOfBlock() where some are left. Each returns false
// to stop. Bit 0 of the set stands for position 1.
template <class Sink, class MagnitudeAt> QEL_INLINE bool walkSet(uint64_t set, Sink& sink, MagnitudeAt magnitudeAt)
{
    uint64_t position = 0;
    while (set != 0) {
        auto run = uint64_t(__builtin_ctzll(set));
        set = set >> run >> 1;
        position += run + 1;
        for (; __builtin_expect(run > 15, 0); run -= 16)
            if (!sink.sixteenZeros()) return false;
        if (!sink.value(run, magnitudeAt(position))) return false;
    }
    return position == 63 || sink.endOfBlock();
}

// The same for the coefficients of a block.
template <class Sink> QEL_INLINE bool walk(const int16_t* block, const Coefficients& coefficients, Sink& sink)
{
    if (__builtin_expect(coefficients.areBytes(), 1))
        return walkSet(coefficients.set >> 1, sink, [&](uint64_t position) -> Magnitude {
            uint64_t value = coefficients.bytes[position], category = kCategories.of[value];
            return {category, value & ((uint64_t(1) << category) - 1)};
        });
    return walkSet(coefficients.set >> 1, sink,
                   [=](uint64_t position) { return magnitudeOf(load<int16_t>(block + kScanOrder.index[position])); });
}

// Bits on their way to memory, 64 at a time: from the top of `bits`, the `free` lowest of which are zero.
struct Output {
    static constexpr int kLargestStep = 16; // a word, each byte stuffed

    uint64_t bits;
    int64_t free;
    uint8_t last; // that was written
    uint8_t* next;
    const uint8_t* lastStart; // a step may start here, but not behind

    QEL_INLINE void putByte(uint8_t byte)
    {
        *next++ = last = byte;
        if (byte == 0xFF) *next++ = 0;
    }

    QEL_INLINE void putWord(uint64_t word)
    {
        if (__builtin_expect(hasFF(word), 0)) {
            for (int i = 0; i < 8; ++i) putByte(uint8_t(word >> (56 - 8 * i)));
        } else {
            storeBig64(next, word);
            last = uint8_t(word);
            next += 8;
        }
    }

    // Appends `length` bits, 1 to 32; none of `value` lies above them. False near the end of the buffer.
    QEL_INLINE bool put(uint64_t value, uint64_t length)
    {
        free -= int64_t(length);
        if (__builtin_expect(free >= 0, 1)) {
            bits |= value << free;
            return true;
        }
        if (next > lastStart) return false;
        putWord(bits | value >> -free);
        free += 64;
        bits = value << free;
        return true;
    }

    // Writes the whole bytes that are left, singly, so that no other byte is touched.
    QEL_INLINE void finish()
    {
        for (; free <= 56; free += 8, bits <<= 8) putByte(uint8_t(bits >> 56));
    }

    // The same at once, where there is room for a step. Bytes behind the last one are written as they are.
    QEL_INLINE void finishAtOnce()
    {
        if (__builtin_expect(hasFF(bits) || free == 0, 0)) return finish();
        uint64_t used = uint64_t(64 - free) & 56, behind = ~uint64_t(0) >> used;
        storeBig64(next, (bits & ~behind) | (loadBig64(next) & behind));
        next += used >> 3;
        free += int64_t(used);
        if (used != 0) last = uint8_t(bits >> (64 - used));
        bits <<= used;
    }
};

// Writes the symbols of a block.
struct Coder {
    const QelEncodeHuffmanSpec& ac;
    Output out;
    QelStatus status;

    QEL_INLINE bool symbol(const QelEncodeHuffmanSpec& spec, uint64_t index, Magnitude value)
    {
        uint64_t entry = spec.entries[index], code = entry & 0xFFFF, length = entry >> 16;
        if (__builtin_expect(length == 0, 0)) {
            status = qelStsJPEGHuffSpecErr;
            return false;
        }
        if (out.put(code << value.category | value.bits, length + value.category)) return true;
        status = qelStsJPEGOutOfBufErr;
        return false;
    }
    QEL_INLINE bool value(uint64_t run, Magnitude magnitude)
    {
        return symbol(ac, run << 4 | magnitude.category, magnitude);
    }
    QEL_INLINE bool sixteenZeros() { return symbol(ac, kSixteenZeros, {0, 0}); }
    QEL_INLINE bool endOfBlock() { return symbol(ac, kEndOfBlock, {0, 0}); }

    QEL_INLINE void block(const int16_t* src, const Coefficients& coefficients, int lastDc,
                          const QelEncodeHuffmanSpec& dc)
    {
        Magnitude difference = magnitudeOf(load<int16_t>(src) - lastDc);
        if (symbol(dc, difference.category, difference)) walk(src, coefficients, *this);
    }
};

// The low word of the state has the pending bits from bit 23 down, and the last written byte above them.
QelStatus encodeBlock(const int16_t* src, uint8_t* dst, int dstLen, int* pos, int16_t* lastDc,
                      const QelEncodeHuffmanSpec* dc, const QelEncodeHuffmanSpec* ac, QelEncodeHuffmanState* state)
{
    // First of all, as the rest waits for it.
    Coefficients coefficients(src);
    uint32_t pending = state->accumulator[0];
    Coder coder = {*ac,
                   {uint64_t(pending) << 40, 64 - state->count, uint8_t(pending >> 24), dst + *pos,
                    dst + dstLen - Output::kLargestStep},
                   qelStsNoErr};
    coder.block(src, coefficients, *lastDc, *dc);
    auto& out = coder.out;
    if (coder.status == qelStsJPEGOutOfBufErr || out.next > out.lastStart) return qelStsJPEGOutOfBufErr;
    out.finishAtOnce();
    *lastDc = load<int16_t>(src);
    state->accumulator[0] = uint32_t(out.last) << 24 | uint32_t(out.bits >> 40);
    state->accumulator[1] = 0;
    state->count = int(64 - out.free);
    *pos = int(out.next - dst);
    return coder.status;
}

void encodeBlockDirect(const int16_t* src, uint8_t* dst, int* bitLength, int16_t* lastDc,
                       const QelEncodeHuffmanSpec* dc, const QelEncodeHuffmanSpec* ac)
{
    Coefficients coefficients(src);
    int bytes = *bitLength >> 3, count = *bitLength & 7;
    uint64_t bits = count == 0 ? 0 : uint64_t(dst[bytes] >> (8 - count)) << (64 - count);
    Coder coder = {*ac, {bits, 64 - count, 0, dst + bytes, (const uint8_t*)UINTPTR_MAX}, qelStsNoErr};
    coder.block(src, coefficients, *lastDc, *dc);
    coder.out.finish();
    if (coder.out.free != 64) *coder.out.next = uint8_t(coder.out.bits >> 56);
    *lastDc = load<int16_t>(src);
    *bitLength = int(uint32_t(coder.out.next - dst) * 8 + uint32_t(64 - coder.out.free));
}

struct Counter {
    uint32_t* ac;

    QEL_INLINE bool value(uint64_t run, Magnitude magnitude) { return ++ac[run << 4 | magnitude.category], true; }
    QEL_INLINE bool sixteenZeros() { return ++ac[kSixteenZeros], true; }
    QEL_INLINE bool endOfBlock() { return ++ac[kEndOfBlock], true; }
};

void countBlock(const int16_t* src, uint32_t* dcStatistics, uint32_t* acStatistics, int16_t* lastDc)
{
    Coefficients coefficients(src);
    Counter counter = {acStatistics};
    ++dcStatistics[magnitudeOf(load<int16_t>(src) - *lastDc).category];
    *lastDc = load<int16_t>(src);
    walk(src, coefficients, counter);
}

}
}

const HuffmanEncodeKernels HuffmanEncodeKernels::QEL_BUILD = {
    qel::QEL_BUILD::encodeBlock, qel::QEL_BUILD::encodeBlockDirect, qel::QEL_BUILD::countBlock};

}
