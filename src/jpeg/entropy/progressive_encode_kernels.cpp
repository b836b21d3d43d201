// SPDX-License-Identifier: Apache-2.0
// Kernels of progressive Huffman encoding: one walk over a band for the writer and the counter.
#include "jpeg/entropy/progressive_encode.h"

#include "jpeg/entropy/huffman_fast_writer.h"
#include "jpeg/entropy/scan_coefficients.h"

namespace qel::QEL_BUILD {
namespace {

// Bit i is bit 7 - i of the index.
struct ReversedBytes {
    uint8_t of[256];
};
constexpr ReversedBytes kReversedBytes = [] {
    ReversedBytes reversed = {};
    for (int i = 0; i < 256; ++i)
        for (int bit = 0; bit < 8; ++bit) reversed.of[i] = uint8_t(reversed.of[i] | ((i >> bit) & 1) << (7 - bit));
    return reversed;
}();

// Correction bits of a block: the oldest lowest.
struct Corrections {
    uint64_t bits;
    int count;

    // The `n` oldest, at most 8, in the order of the stream.
    QEL_INLINE uint64_t oldest(int n) const { return kReversedBytes.of[bits & 0xFF] >> (8 - n); }
    QEL_INLINE Corrections without(int n) const { return {bits >> n, count - n}; }
};

// The runs of a state, while a block is coded.
struct Pending {
    uint32_t run, corrections;

    static QEL_INLINE Pending of(const QelEncodeHuffmanState& state)
    {
        return {state.endOfBandRun, state.correctionCount};
    }
    QEL_INLINE void storeTo(QelEncodeHuffmanState& state) const
    {
        state.endOfBandRun = run;
        state.correctionCount = corrections;
    }
    QEL_INLINE bool isEmpty() const { return (run | corrections) == 0; }
    QEL_INLINE bool isFull() const { return run >= kLongestRun || corrections > kMostCorrectionBits; }
};

struct BandWriter : SymbolWriter {
    uint8_t* kept; // correction bits of the pending run, a byte for each

    QEL_INLINE bool bits(uint64_t value, int count)
    {
        return count == 0 || out.put(value, uint64_t(count)) || fail(qelStsJPEGOutOfBufErr);
    }
    QEL_INLINE bool newCoefficient(uint64_t index, uint64_t sign, Corrections corrections)
    {
        int n = corrections.count < 8 ? corrections.count : 8;
        if (!symbol(index, {uint64_t(1 + n), sign << n | corrections.oldest(n)})) return false;
        return corrections.count <= 8 || write(corrections.without(8));
    }
    QEL_INLINE bool write(Corrections corrections)
    {
        for (; corrections.count > 8; corrections = corrections.without(8))
            if (!bits(corrections.oldest(8), 8)) return false;
        return bits(corrections.oldest(corrections.count), corrections.count);
    }
    // Eight bytes of which each is 0 or 1 become one by a product whose terms never meet.
    QEL_INLINE bool writeKept(uint32_t count)
    {
        for (uint32_t i = 0; i < count; i += 8) {
            uint64_t eight = (loadBig64(kept + i) & kLowBits) * kSpread >> 56;
            int n = count - i < 8 ? int(count - i) : 8;
            if (!bits(eight >> (8 - n), n)) return false;
        }
        return true;
    }
    // False near the end of the buffer, where the bits of the run before may still be needed.
    QEL_INLINE bool keep(uint32_t after, Corrections corrections)
    {
        if (!out.hasRoom()) return fail(qelStsJPEGOutOfBufErr);
        keepAll(kept + after, corrections);
        return true;
    }
    // May write up to seven bytes more than there are bits.
    static QEL_INLINE void keepAll(uint8_t* to, Corrections corrections)
    {
        for (int i = 0; i < corrections.count; i += 8) {
            uint64_t apart = ((corrections.bits >> i) & 0xFF) * kLowBits & kSpread;
            storeBig64(to + i, ((apart + 0x7F7F7F7F7F7F7F7F) >> 7) & kLowBits);
        }
    }

private:
    static constexpr uint64_t kLowBits = 0x0101010101010101, kSpread = 0x0102040810204080;
};

struct BandCounter : SymbolCounter {
    QEL_INLINE bool newCoefficient(uint64_t index, uint64_t, Corrections) { return symbol(index, {0, 0}); }
    QEL_INLINE bool write(Corrections) { return true; }
    QEL_INLINE bool writeKept(uint32_t) { return true; }
    QEL_INLINE bool keep(uint32_t, Corrections) { return true; }
};

template <class Sink> QEL_INLINE bool endRun(Sink& sink, Pending& pending)
{
    Pending ended = pending;
    pending = {0, 0};
    if (ended.run > kLongestRun) {
        if (!sink.symbol(kLongestRunSymbol, {kLongestRunSize, ended.run & ((1u << kLongestRunSize) - 1)})) return false;
        ended.run -= kLongestRun;
    }
    if (ended.run > 0) {
        uint32_t size = 31 - uint32_t(__builtin_clz(ended.run));
        if (size > kLongestRunSize) return sink.fail(qelStsJPEGHuffTableErr);
        if (!sink.symbol(size << 4, {size, ended.run & ((1u << size) - 1)})) return false;
    }
    return sink.writeKept(ended.corrections);
}

QEL_INLINE uint64_t positionsOf(const Band& band) { return ~uint64_t(0) << band.ss & ~uint64_t(0) >> (63 - band.se); }

// The point transform of AC coefficients divides, towards zero.
struct Division {
    int al;

    template <class V> QEL_INLINE V operator()(V v) const
    {
        auto ones = int16_t((1 << al) - 1);
        return (v + ((v >> 15) & ones)) >> al;
    }
};

template <int kLargest, class Sink> QEL_INLINE bool walkFirst(const int16_t* block, const Coefficients& coefficients,
                                                              const Band& band, Sink& sink, Pending& pending)
{
    uint64_t set = coefficients.set & positionsOf(band);
    if (set != 0) {
        if (!pending.isEmpty() && !endRun(sink, pending)) return false;
        auto valueAt = [=](uint64_t position) {
            return Division{band.al}(int(load<int16_t>(block + kScanOrder.index[position])));
        };
        if (!walk<kLargest>(coefficients, set, uint64_t(band.ss), sink, valueAt)) return false;
    }
    if (set >> band.se) return true;
    ++pending.run;
    return !pending.isFull() || endRun(sink, pending);
}

// The coefficients of a band as a refinement scan sees them, by position in the scan.
struct Refined {
    uint64_t ones;     // that become significant in this scan
    uint64_t others;   // that have been before
    uint64_t low;      // bit 0 of the magnitudes of both
    uint64_t negative; // of both

    QEL_INLINE Refined(const int16_t* block, const Band& band)
    {
        constexpr int N = kWidth, kRegisters = 64 / N;
        auto describe = [&](int i) {
            auto v = load<S16<N>>(block + i), sign = v >> 15;
            auto magnitude = (S16<N>)((U16<N>)((v ^ sign) - sign) >> band.al);
            auto isLarge = (S16<N>)((magnitude & ~1) != 0);
            return (magnitude & 1) | (isLarge & 2) | (sign & 0x80);
        };
        U8<N> v[kRegisters];
        for (int i = 0; i < kRegisters; ++i) v[i] = Simd<N>::packUnsigned(describe(i * N), describe(i * N + N / 2));
        Simd<N>::template permute<kPackedScanOrder<N>>(v);
        others = low = negative = 0;
        for (int i = 0; i < kRegisters; ++i) {
            int shift = i * N % 64;
            negative |= Simd<N>::signMask(v[i]) << shift;
            others |= Simd<N>::signMask((U8<N>)((U16<N>)v[i] << 6)) << shift;
            low |= Simd<N>::signMask((U8<N>)((U16<N>)v[i] << 7)) << shift;
        }
        others &= positionsOf(band);
        ones = low & ~others & positionsOf(band);
    }

    QEL_INLINE Corrections correctionsIn(uint64_t set) const
    {
        set &= others;
        return {Simd<kWidth>::gatherBits(low, set), __builtin_popcountll(set)};
    }
};

// The position, as a set, of the sixteenth of `set`.
QEL_INLINE uint64_t sixteenth(uint64_t set)
{
    for (int i = 0; i < 15; ++i) set &= set - 1;
    return set & -set;
}

template <class Sink>
QEL_INLINE bool walkRefinement(const Refined& refined, const Band& band, Sink& sink, Pending& pending)
{
    uint64_t left = positionsOf(band);
    if (refined.ones != 0 && !pending.isEmpty() && !endRun(sink, pending)) return false;
    for (uint64_t ones = refined.ones; ones != 0; ones &= ones - 1) {
        uint64_t one = ones & -ones, before = left & (one - 1), zeros = before & ~refined.others;
        auto run = uint64_t(__builtin_popcountll(zeros));
        for (; __builtin_expect(run > 15, 0); run -= 16) {
            uint64_t last = sixteenth(zeros), passed = before & (last - 1);
            if (!sink.symbol(kSixteenZeros, {0, 0}) || !sink.write(refined.correctionsIn(passed))) return false;
            before &= ~(passed | last);
            zeros &= before;
        }
        uint64_t isPositive = (refined.negative & one) == 0;
        if (!sink.newCoefficient(run << 4 | 1, isPositive, refined.correctionsIn(before))) return false;
        left &= -one << 1;
    }
    if (left == 0) return true;
    Corrections kept = refined.correctionsIn(left);
    if (!sink.keep(pending.corrections, kept)) return false;
    pending.run += 1;
    pending.corrections += uint32_t(kept.count);
    return !pending.isFull() || endRun(sink, pending);
}

// Codes a block by `walk`, and stores what that leaves.
template <class Walk> QEL_INLINE QelStatus encode(uint8_t* dst, int dstLen, int* pos, const QelEncodeHuffmanSpec* ac,
                                                  QelEncodeHuffmanState* state, Walk walk)
{
    BandWriter writer = {{*ac, FastWriter::of(*state, dst, dstLen, *pos), qelStsNoErr}, state->correctionBits};
    Pending pending = Pending::of(*state);
    walk(writer, pending);
    if (writer.status == qelStsJPEGOutOfBufErr || !writer.out.hasRoom()) return qelStsJPEGOutOfBufErr;
    writer.out.finishAtOnce();
    writer.out.storeTo(*state);
    pending.storeTo(*state);
    *pos = int(writer.out.next - dst);
    return writer.status;
}

template <class Walk> QEL_INLINE QelStatus count(uint32_t* statistics, QelEncodeHuffmanState* state, Walk walk)
{
    BandCounter counter = {{statistics, qelStsNoErr}};
    Pending pending = Pending::of(*state);
    walk(counter, pending);
    pending.storeTo(*state);
    return counter.status;
}

QelStatus encodeFirst(const int16_t* src, uint8_t* dst, int dstLen, int* pos, Band band, const QelEncodeHuffmanSpec* ac,
                      QelEncodeHuffmanState* state)
{
    Coefficients coefficients(src, Division{band.al});
    if ((coefficients.set & positionsOf(band)) == 0 && state->endOfBandRun + 1 < kLongestRun) {
        ++state->endOfBandRun;
        return qelStsNoErr;
    }
    return encode(dst, dstLen, pos, ac, state, [&](auto& writer, auto& pending) {
        walkFirst<kLargestWritten>(src, coefficients, band, writer, pending);
    });
}

QelStatus encodeRefinement(const int16_t* src, uint8_t* dst, int dstLen, int* pos, Band band,
                           const QelEncodeHuffmanSpec* ac, QelEncodeHuffmanState* state)
{
    Refined refined(src, band);
    if (refined.ones == 0) {
        Corrections kept = refined.correctionsIn(positionsOf(band));
        Pending pending = {state->endOfBandRun + 1, state->correctionCount + uint32_t(kept.count)};
        if (!pending.isFull()) {
            BandWriter::keepAll(state->correctionBits + state->correctionCount, kept);
            pending.storeTo(*state);
            return qelStsNoErr;
        }
    }
    return encode(dst, dstLen, pos, ac, state,
                  [&](auto& writer, auto& pending) { walkRefinement(refined, band, writer, pending); });
}

QelStatus countFirst(const int16_t* src, uint32_t* statistics, Band band, QelEncodeHuffmanState* state)
{
    Coefficients coefficients(src, Division{band.al});
    return count(statistics, state, [&](auto& counter, auto& pending) {
        walkFirst<kLargestCounted>(src, coefficients, band, counter, pending);
    });
}

QelStatus countRefinement(const int16_t* src, uint32_t* statistics, Band band, QelEncodeHuffmanState* state)
{
    Refined refined(src, band);
    return count(statistics, state,
                 [&](auto& counter, auto& pending) { walkRefinement(refined, band, counter, pending); });
}

QelStatus countRun(uint32_t* statistics, QelEncodeHuffmanState* state)
{
    return count(statistics, state, [](auto& counter, auto& pending) { endRun(counter, pending); });
}

constexpr ProgressiveEncodeKernels kKernels = {
    .encodeFirst = encodeFirst,
    .encodeRefinement = encodeRefinement,
    .countFirst = countFirst,
    .countRefinement = countRefinement,
    .countRun = countRun,
};

}
}

const qel::ProgressiveEncodeKernels qel::ProgressiveEncodeKernels::QEL_BUILD = qel::QEL_BUILD::kKernels;
