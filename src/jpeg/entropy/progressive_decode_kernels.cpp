// SPDX-License-Identifier: Apache-2.0
// Kernels of progressive Huffman decoding.
#include "jpeg/entropy/progressive_decode.h"

#include "jpeg/entropy/coefficient_sets.h"
#include "jpeg/entropy/huffman_fast_reader.h"

namespace qel::QEL_BUILD {
namespace {

__attribute__((noinline)) QelStatus finishDcFirst(const uint8_t* src, int srcLen, int* pos, int16_t* block,
                                                  int16_t* lastDc, uint32_t* marker, int al,
                                                  const QelDecodeHuffmanSpec* table, QelDecodeHuffmanState* state)
{
    return readBytewise(src, srcLen, pos, marker, state, [=](StateReader& in) {
        int symbol = in.symbol(*table);
        if (symbol < 0) return qelStsJPEGOutOfBufErr;
        if (int n = symbol & 15) {
            if (!in.has(n)) return qelStsJPEGOutOfBufErr;
            *lastDc = int16_t(*lastDc + in.takeValue(n));
        }
        store(block, int16_t(*lastDc << al));
        return qelStsNoErr;
    });
}

__attribute__((noinline)) QelStatus fillAndDecodeDc(const uint8_t* src, int srcLen, int* pos, int16_t* block,
                                                    int16_t* lastDc, uint32_t* marker, int al,
                                                    const QelDecodeHuffmanSpec* table, QelDecodeHuffmanState* state)
{
    FastReader in(src, srcLen, *pos, *marker, state);
    // The step leaves enough bits of a full window.
    bool isFull = in.fill();
    if (isFull) {
        *lastDc = int16_t(*lastDc + in.difference(in.symbol(*table) & 15));
        store(block, int16_t(*lastDc << al));
    }
    in.giveBackNoted(src, pos, state);
    return isFull ? qelStsNoErr : finishDcFirst(src, srcLen, pos, block, lastDc, marker, al, table, state);
}

QelStatus dcFirst(const uint8_t* src, int srcLen, int* pos, int16_t* block, int16_t* lastDc, uint32_t* marker, int al,
                  const QelDecodeHuffmanSpec* table, QelDecodeHuffmanState* state)
{
    int16_t difference;
    if (!takeHeldValue(*table, state, &difference))
        return fillAndDecodeDc(src, srcLen, pos, block, lastDc, marker, al, table, state);
    *lastDc = int16_t(*lastDc + difference);
    store(block, int16_t(*lastDc << al));
    return qelStsNoErr;
}

QEL_INLINE void setBit(int16_t* block, uint32_t bit, int al)
{
    store(block, int16_t(load<int16_t>(block) | int(bit) << al));
}

__attribute__((noinline)) QelStatus finishDcRefine(const uint8_t* src, int srcLen, int* pos, int16_t* block,
                                                   uint32_t* marker, int al, QelDecodeHuffmanState* state)
{
    return readBytewise(src, srcLen, pos, marker, state, [=](StateReader& in) {
        if (!in.has(1)) return qelStsJPEGOutOfBufErr;
        setBit(block, in.take(1), al);
        return qelStsNoErr;
    });
}

QelStatus dcRefine(const uint8_t* src, int srcLen, int* pos, int16_t* block, uint32_t* marker, int al,
                   QelDecodeHuffmanState* state)
{
    int count = state->count - 1;
    bool isHeld = unsigned(count) < kMostBits && !isMarkerNear(src + *pos, src + srcLen);
    if (__builtin_expect(!isHeld, 0)) return finishDcRefine(src, srcLen, pos, block, marker, al, state);
    setBit(block, uint32_t(accumulatorOf(state) >> count) & 1, al);
    state->count = count;
    return qelStsNoErr;
}

// Decodes a first scan's band as long as the window fills.
struct FirstAhead {
    FastReader in;
    int16_t* block;
    const QelDecodeHuffmanSpec& table;
    unsigned position, last;
    int al;
    uint32_t run = 0;
    QelStatus status = qelStsNoErr;

    // False if the band is to be finished from `position` on.
    QEL_INLINE bool decode()
    {
        for (;;) {
            if (!in.fill()) return false;
            if (!decodeNext()) return true;
#pragma GCC unroll 2
            for (int i = 0; i < 2; ++i)
                if (in.isReady() && !decodeNext()) return true;
        }
    }

private:
    // False after the last coefficient.
    QEL_INLINE bool decodeNext()
    {
        unsigned symbol = in.symbol(table), n = symbol & 15;
        if (__builtin_expect(n == 0, 0)) {
            if (symbol < kSixteenZeros) {
                run = (1u << (symbol >> 4)) - 1 + uint32_t(in.take(symbol >> 4));
                return false;
            }
            position += 16;
            return position <= last;
        }
        position += symbol >> 4;
        int value = in.value(n);
        // A run may lead past the band, where T.81 has none, but not past the block.
        if (__builtin_expect(position > 63, 0)) {
            status = qelStsJPEGCoeffPosErr;
            return false;
        }
        store(block + kScanOrder.index[position], int16_t(value << al));
        return ++position <= last;
    }
};

// The number of blocks, this one included, that an end of band with so many extra bits ends; 0 where they lack.
QEL_INLINE uint32_t runOf(StateReader& in, int extraBits)
{
    return in.has(extraBits) ? (1u << extraBits) + in.take(extraBits) : 0;
}

// From position `at` on.
QEL_INLINE QelStatus decodeFirst(StateReader& in, int16_t* block, int at, int se, int al,
                                 const QelDecodeHuffmanSpec& table, QelDecodeHuffmanState* state)
{
    for (; at <= se; ++at) {
        int symbol = in.symbol(table), run = symbol >> 4 & 15, n = symbol & 15;
        if (symbol < 0) return qelStsJPEGOutOfBufErr;
        if (n == 0 && run < 15) {
            uint32_t blocks = runOf(in, run);
            if (blocks == 0) return qelStsJPEGOutOfBufErr;
            state->endOfBandRun = blocks - 1;
            break;
        }
        at += run;
        if (n == 0) continue;
        if (!in.has(n)) return qelStsJPEGOutOfBufErr;
        int value = in.takeValue(n);
        if (at > 63) return qelStsJPEGCoeffPosErr;
        store(block + kScanOrder.index[at], int16_t(value << al));
    }
    return qelStsNoErr;
}

__attribute__((noinline)) QelStatus finishAcFirst(const uint8_t* src, int srcLen, int* pos, int16_t* block,
                                                  uint32_t* marker, int at, int se, int al,
                                                  const QelDecodeHuffmanSpec* table, QelDecodeHuffmanState* state)
{
    return readBytewise(src, srcLen, pos, marker, state,
                        [=](StateReader& in) { return decodeFirst(in, block, at, se, al, *table, state); });
}

// A block of a run that has nothing to be read.
QEL_INLINE QelStatus passOver(const uint8_t* src, int srcLen, int* pos, uint32_t* marker, QelDecodeHuffmanState* state)
{
    bool isLast = --state->endOfBandRun == 0;
    if (isLast && isMarkerNear(src + *pos, src + srcLen)) return meetMarker(src, srcLen, pos, marker, state);
    return qelStsNoErr;
}

QelStatus acFirst(const uint8_t* src, int srcLen, int* pos, int16_t* block, uint32_t* marker, int ss, int se, int al,
                  const QelDecodeHuffmanSpec* table, QelDecodeHuffmanState* state)
{
    if (state->endOfBandRun > 0) return passOver(src, srcLen, pos, marker, state);
    FirstAhead ahead = {{src, srcLen, *pos, *marker, state}, block, *table, unsigned(ss), unsigned(se), al};
    bool isWhole = ahead.decode();
    ahead.in.giveBack(src, pos, state);
    state->endOfBandRun = ahead.run;
    if (!isWhole) return finishAcFirst(src, srcLen, pos, block, marker, int(ahead.position), se, al, table, state);
    if (ahead.in.isMarkerNear() && ahead.status == qelStsNoErr) return meetMarker(src, srcLen, pos, marker, state);
    return ahead.status;
}

// What a coefficient that is not 0 becomes by the bit that is read for it.
QEL_INLINE int16_t corrected(int value, int bit, int al)
{
    return int16_t(value + ((value >> 15 | 1) & -bit) * (1 << al));
}

// Decodes a refinement of a band as long as the window fills. The coefficients that are passed over are corrected
// together at the end: their bits come in the order of the scan, and with all in a row there is one loop for all.
struct RefinementAhead {
    // So many that a full window has bits for all of them after the longest code and a sign.
    static constexpr unsigned kMostNonZero = 39;

    FastReader in;
    int16_t* block;
    const QelDecodeHuffmanSpec& table;
    uint64_t nonZero; // from position `at` on
    int at, last, al;
    uint32_t run;       // blocks that an end of band still ends, with this one
    uint64_t bits = 0;  // for the coefficients that are not zero and have been passed
    unsigned count = 0; // of them
    QelStatus status = qelStsNoErr;

    // False if the band is to be finished from `at` on.
    QEL_INLINE bool decode()
    {
        uint64_t all = nonZero << at;
        bool isWhole = decodeRuns();
        correct(all);
        return isWhole;
    }

private:
    QEL_INLINE bool decodeRuns()
    {
        while (run == 0 && at <= last) {
            if (!in.fill()) return false;
            decodeNext();
        }
        if (run == 0) return true;
        if (!in.fill()) return false;
        read(countOf(nonZero));
        --run;
        return true;
    }

    QEL_INLINE void decodeNext()
    {
        unsigned symbol = in.symbol(table);
        int value = 0;
        if (__builtin_expect((symbol & 15) != 0, 1)) {
            int sign = int(in.take(1)) * 2 - 1;
            value = sign * (1 << al);
        } else if (symbol < kSixteenZeros) {
            run = (1u << (symbol >> 4)) + uint32_t(in.take(symbol >> 4));
            return;
        }
        // As far as so many zeros go: what is passed moves the end, so that more may be passed. It mostly ends here.
        unsigned zeros = (symbol >> 4) + 1;
        uint64_t among = nonZeroAmong(zeros + countOf(nonZeroAmong(zeros))), more;
        unsigned passed = countOf(among);
        while (__builtin_expect((more = nonZeroAmong(zeros + passed)) != among, 0)) {
            among = more;
            passed = countOf(among);
        }
        read(passed);
        nonZero >>= zeros + passed;
        at += int(zeros + passed);
        if (__builtin_expect(at <= last + 1, 1))
            store(block + kScanOrder.index[at - 1], int16_t(value));
        else if (value != 0)
            status = qelStsJPEGCoeffPosErr;
    }

    static QEL_INLINE unsigned countOf(uint64_t set) { return unsigned(__builtin_popcountll(set)); }

    QEL_INLINE uint64_t nonZeroAmong(unsigned next) const { return nonZero & ((uint64_t(1) << next) - 1); }

    QEL_INLINE void read(unsigned n)
    {
        bits = bits << n | in.take(n);
        count += n;
    }

    QEL_INLINE void correct(uint64_t coefficients)
    {
        bits = bits << (63 - count) << 1;
        for (; count > 0; --count, coefficients &= coefficients - 1, bits <<= 1) {
            int16_t* coefficient = block + kScanOrder.index[__builtin_ctzll(coefficients)];
            store(coefficient, corrected(load<int16_t>(coefficient), int(bits >> 63), al));
        }
    }
};

// Passes over coefficients from `at` on, correcting those that are not 0, up to the one after `zeros` that are 0.
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
        store(coefficient, corrected(value, int(in.take(1)), al));
    }
    return at;
}

// From position `at` on.
QEL_INLINE QelStatus decodeRefinement(StateReader& in, int16_t* block, int at, int se, int al,
                                      const QelDecodeHuffmanSpec& table, QelDecodeHuffmanState* state)
{
    while (state->endOfBandRun == 0 && at <= se) {
        int symbol = in.symbol(table), run = symbol >> 4 & 15, n = symbol & 15;
        if (symbol < 0) return qelStsJPEGOutOfBufErr;
        if (n == 0 && run < 15) {
            state->endOfBandRun = runOf(in, run);
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

__attribute__((noinline)) QelStatus finishAcRefine(const uint8_t* src, int srcLen, int* pos, int16_t* block,
                                                   uint32_t* marker, int at, int se, int al,
                                                   const QelDecodeHuffmanSpec* table, QelDecodeHuffmanState* state)
{
    return readBytewise(src, srcLen, pos, marker, state,
                        [=](StateReader& in) { return decodeRefinement(in, block, at, se, al, *table, state); });
}

QelStatus acRefine(const uint8_t* src, int srcLen, int* pos, int16_t* block, uint32_t* marker, int ss, int se, int al,
                   const QelDecodeHuffmanSpec* table, QelDecodeHuffmanState* state)
{
    uint64_t set = (nonZero(block, [](auto v) { return v; }) & ((uint64_t(2) << se) - 1)) >> ss;
    if (state->endOfBandRun > 0 && set == 0) return passOver(src, srcLen, pos, marker, state);
    int at = ss;
    if (__builtin_expect(__builtin_popcountll(set) <= int(RefinementAhead::kMostNonZero), 1)) {
        RefinementAhead ahead = {
            {src, srcLen, *pos, *marker, state}, block, *table, set, ss, se, al, state->endOfBandRun};
        bool isWhole = ahead.decode();
        ahead.in.giveBack(src, pos, state);
        state->endOfBandRun = ahead.run;
        if (isWhole && ahead.in.isMarkerNear() && ahead.status == qelStsNoErr)
            return meetMarker(src, srcLen, pos, marker, state);
        if (isWhole) return ahead.status;
        at = ahead.at;
    }
    return finishAcRefine(src, srcLen, pos, block, marker, at, se, al, table, state);
}

constexpr ProgressiveDecodeKernels kKernels = {
    .dcFirst = dcFirst,
    .dcRefine = dcRefine,
    .acFirst = acFirst,
    .acRefine = acRefine,
};

}
}

const qel::ProgressiveDecodeKernels qel::ProgressiveDecodeKernels::QEL_BUILD = qel::QEL_BUILD::kKernels;
