// SPDX-License-Identifier: Apache-2.0
// Kernels of the 8x8 DCT. Column passes take eight rows of eight lanes; row passes and quantization take registers as
// wide as the machine has, each with the rows of one or two tables side by side.
#include "jpeg/block/dct.h"

#include "core/blocks.h"
#include "jpeg/block/dct_columns.h"
#include "jpeg/block/dct_tables.h"

namespace qel::QEL_BUILD {
namespace {

using Wide = S16<kWidth>;
using Wide32 = S32<kWidth>;
using Op = Simd<kWidth>;

template <class Body> QEL_INLINE void forRows(Body body)
{
#pragma GCC unroll 8
    for (int r = 0; r < 8; r += kWidth / 16) body(r);
}

// What each frequency (position) of two parts of a row table gathers from two pairs of values.
QEL_INLINE Wide32 dot(const int16_t (&table)[4][8][8], int part, int r, Wide32 first, Wide32 second)
{
    return Op::mulAddPairs((Wide)first, load<Wide>(table[part][r])) +
           Op::mulAddPairs((Wide)second, load<Wide>(table[part + 1][r]));
}

// Cosines of even frequencies are the same in both halves of a row, those of odd ones opposite: the products are of
// four sums and four differences.
struct ForwardSums {
    Wide32 low, high; // frequencies 0 to 3, 4 to 7
};
QEL_INLINE ForwardSums forwardDot(int r, Wide values)
{
    auto first = inBlocks<0, 2, 0, 2>((Wide32)values), second = inBlocks<1, 3, 1, 3>((Wide32)values);
    auto& table = rowTables().forward;
    return {dot(table, 0, r, first, second), dot(table, 2, r, first, second)};
}
// Without byte shuffles, two steps that compilers have instructions for.
QEL_INLINE Wide mirrored(Wide v)
{
    if constexpr (kWidth > 16) return inBlocks<7, 6, 5, 4, 3, 2, 1, 0>(v);
    return (Wide)inBlocks<2, 3, 0, 1>((Wide32)inBlocks<3, 2, 1, 0, 7, 6, 5, 4>(v));
}
// kInRange: the sums and differences fit 16 bits. Else each half is multiplied by itself; 32-bit sums wrap.
template <bool kInRange> QEL_INLINE Wide forwardRow(int r, Wide v)
{
    ForwardSums sum;
    if constexpr (kInRange) {
        // The differences come out one too small, which the rounding makes up for.
        sum = forwardDot(r, mirrored(v) + (v ^ load<Wide>(rowTables().upperHalf)));
        sum.low += load<Wide32>(rowTables().forwardRounding[0][r]);
        sum.high += load<Wide32>(rowTables().forwardRounding[1][r]);
    } else {
        auto twice = (Wide)inBlocks<0, 1, 0, 1>((Wide32)v), upperTwice = (Wide)inBlocks<2, 3, 2, 3>((Wide32)v);
        auto lower = forwardDot(r, inBlocks<0, 1, 2, 3, 7, 6, 5, 4>(twice));
        auto upper = forwardDot(r, inBlocks<3, 2, 1, 0, 4, 5, 6, 7>(upperTwice));
        auto isOdd = load<Wide32>(rowTables().isOdd);
        sum.low = lower.low + ((upper.low ^ isOdd) - isOdd) + (1 << 19);
        sum.high = lower.high + ((upper.high ^ isOdd) - isOdd) + (1 << 19);
    }
    return Op::pack(sum.low >> 20, sum.high >> 20);
}

// Frequencies u and u + 2 in every 32-bit lane.
template <int u> QEL_INLINE Wide32 twoFrequencies(Wide v)
{
    constexpr int w = u + 2;
    if constexpr (kWidth > 16) return (Wide32)inBlocks<u, w, u, w, u, w, u, w>(v);
    constexpr int pair = u / 4 * 2 + u % 4;
    return inBlocks<pair, pair, pair, pair>((Wide32)inBlocks<0, 2, 1, 3, 4, 6, 5, 7>(v));
}

// The second half of the samples comes out mirrored.
QEL_INLINE Wide inverseRow(int r, Wide v)
{
    auto& table = rowTables().inverse;
    auto even =
        dot(table, 0, r, twoFrequencies<0>(v), twoFrequencies<4>(v)) + load<Wide32>(rowTables().inverseRounding[r]);
    auto odd = dot(table, 2, r, twoFrequencies<1>(v), twoFrequencies<5>(v));
    auto samples = Op::pack((even + odd) >> 12, (even - odd) >> 12);
    return inBlocks<0, 1, 2, 3, 7, 6, 5, 4>(samples);
}

// c * T in units of 2^-15, ties to even, saturated; T is unsigned. Below 32768 the products cannot leave 16 bits.
QEL_INLINE Wide quantize(Wide c, Wide table)
{
    auto product = Op::mulRoundEven(c, table), missing = c & (table >> 15);
    return Op::addSat(Op::addSat(product, missing), missing);
}

// Whether any entry is 32768 or more, which only steps of 0 and 1 give.
QEL_INLINE bool hasLargeEntries(const uint16_t* encTable)
{
    Wide entries = {};
    forRows([&](int r) { entries |= load<Wide>(encTable + 8 * r); });
    return Op::signMask((U8<kWidth>)entries) & (kLittleEndian ? 0xAAAAAAAAAAAAAAAA : 0x5555555555555555);
}

// `scale` is what is done to the transformed rows: quantization or nothing.
template <bool kInRange, class Scale> QEL_INLINE void forwardRows(const Row (&rows)[8], int16_t* dst, Scale scale)
{
    forRows([&](int r) { store(dst + 8 * r, scale(r, forwardRow<kInRange>(r, joinBlocks<kWidth>(rows + r)))); });
}
template <bool kInRange> QEL_INLINE void forwardRowsQuant(const Row (&rows)[8], int16_t* dst, const uint16_t* encTable)
{
    auto entries = [=](int r) { return load<Wide>(encTable + 8 * r); };
    if (hasLargeEntries(encTable))
        forwardRows<kInRange>(rows, dst, [=](int r, Wide v) { return quantize(v, entries(r)); });
    else
        forwardRows<kInRange>(rows, dst, [=](int r, Wide v) { return Op::mulRoundEven(v, entries(r)); });
}

template <bool kInRange> struct InRange {
    static constexpr bool value = kInRange;
};

// Values for which no sum of the transform leaves 16 bits.
QEL_INLINE bool inRange(const int16_t* block)
{
    Wide outside = {};
    forRows([&](int r) { outside |= (load<Wide>(block + 8 * r) + 256) & ~511; });
    return Op::isZero(outside);
}

// rows(range, values) does the row pass, where range::value tells whether the values are in range.
template <class RowPass> QEL_INLINE void forwardBlock(const int16_t* src, RowPass rowPass)
{
    Row rows[8];
#pragma GCC unroll 8
    for (int r = 0; r < 8; ++r) rows[r] = load<Row>(src + 8 * r);
    if (inRange(src)) {
        forwardColumns<true>(rows);
        rowPass(InRange<true>(), rows);
    } else {
        forwardColumns<false>(rows);
        rowPass(InRange<false>(), rows);
    }
}

void forward(const int16_t* src, int16_t* dst)
{
    forwardBlock(src, [=](auto range, const Row(&rows)[8]) {
        forwardRows<range.value>(rows, dst, [](int, Wide v) { return v; });
    });
}

QelStatus forwardQuant(const int16_t* src, int16_t* dst, const uint16_t* encTable)
{
    forwardBlock(src, [=](auto range, const Row(&rows)[8]) { forwardRowsQuant<range.value>(rows, dst, encTable); });
    return qelStsNoErr;
}

QelStatus forwardQuantSamples(const uint8_t* src, int srcStep, int16_t* dst, const uint16_t* encTable)
{
    Row rows[8];
#pragma GCC unroll 8
    for (int r = 0; r < 8; ++r) rows[r] = Simd<16>::widen(src + ptrdiff_t(r) * srcStep);
    forwardColumns<true>(rows);
    // The level shift: 64 samples times 8. It changes nothing but the mean, and no sum leaves 16 bits without it.
    rows[0] += load<Row>(columnFactors().levelShift);
    forwardRowsQuant<true>(rows, dst, encTable);
    return qelStsNoErr;
}

// Where the rows of the inverse transform go.
struct Values {
    int16_t* dst;

    QEL_INLINE void put(const Row (&rows)[8]) const
    {
#pragma GCC unroll 8
        for (int r = 0; r < 8; ++r) store(dst + 8 * r, rows[r]);
    }
};
struct Samples {
    uint8_t* dst;
    int dstStep;

    QEL_INLINE void put(const Row (&rows)[8]) const
    {
        uint8_t* row = dst;
        auto middle = load<U8<16>>(columnFactors().middle);
#pragma GCC unroll 4
        for (int r = 0; r < 8; r += 2, row += 2 * ptrdiff_t(dstStep)) {
            // The compiler is not to see where the row is: it would compute the addresses of all rows at once, and save
            // registers for them.
            asm("" : "+r"(row));
            Simd<16>::storeHalves(row, row + dstStep, Simd<16>::packSigned(rows[r], rows[r + 1]) + middle);
        }
    }
};

// No coefficient but the first.
QEL_INLINE bool isMeanAlone(const int16_t* block)
{
    // Those that are seldom all zero are asked for first, which takes no registers.
    if (load<uint64_t>(block + 8)) return false;
    Wide others = ~Wide{};
    others[0] = 0;
    others &= load<Wide>(block);
    for (int i = kWidth / 2; i < 64; i += kWidth / 2) others |= load<Wide>(block + i);
    return Op::isZero(others);
}

// What the transform makes of a mean alone: the first pass gives rows of 4 * mean + 16, 1 and 1, and zeros, and the
// second pass leaves three different rows of these.
template <class Out> QEL_INLINE void inverseMean(int16_t mean, Out out)
{
    auto& factor = columnFactors();
    auto once = Row{} + mean, twice = add(once, once), v = add(twice, twice);
    auto row = [=](const int16_t(&terms)[8]) { return add(v, load<Row>(terms)) >> 5; };
    auto upper = row(factor.meanUpper), middle = row(factor.meanMiddle), lower = row(factor.meanLower);
    out.put({upper, middle, middle, lower, lower, middle, middle, middle});
}

// `scale` is what is done to the coefficients first, dequantization or nothing.
template <class Scale, class Out> QEL_INLINE void inverseBlock(const int16_t* src, Scale scale, Out out)
{
    if (isMeanAlone(src)) return inverseMean(scale(0, load<Wide>(src))[0], out);
    Row rows[8];
    forRows([&](int r) { splitBlocks<kWidth>(inverseRow(r, scale(r, load<Wide>(src + 8 * r))), rows + r); });
    inverseColumns(rows);
    out.put(rows);
}
QEL_INLINE auto dequantize(const uint16_t* decTable)
{
    return [=](int r, Wide v) { return v * load<Wide>(decTable + 8 * r); };
}

void inverse(const int16_t* src, int16_t* dst)
{
    inverseBlock(
        src, [](int, Wide v) { return v; }, Values{dst});
}

QelStatus inverseQuant(const int16_t* src, int16_t* dst, const uint16_t* decTable)
{
    inverseBlock(src, dequantize(decTable), Values{dst});
    return qelStsNoErr;
}

QelStatus inverseQuantSamples(const int16_t* src, uint8_t* dst, int dstStep, const uint16_t* decTable)
{
    inverseBlock(src, dequantize(decTable), Samples{dst, dstStep});
    return qelStsNoErr;
}

// In the whole range the sum wraps; else it saturates.
void clip(const int16_t* src, uint8_t* dst, int dstStep, int16_t shift, uint8_t min, uint8_t max)
{
    bool isWhole = min == 0 && max == 255;
    auto shifted = [=](int r) {
        auto row = load<Row>(src + 8 * r);
        return isWhole ? row + shift : add(row, Row{} + shift);
    };
    for (int r = 0; r < 8; r += 2) {
        auto samples = Simd<16>::packUnsigned(shifted(r), shifted(r + 1));
        auto atLeast = Simd<16>::greatest(samples, U8<16>{} + min);
        uint8_t* row = dst + ptrdiff_t(r) * dstStep;
        Simd<16>::storeHalves(row, row + dstStep, Simd<16>::least(atLeast, U8<16>{} + max));
    }
}

void inverseClip(const int16_t* src, uint8_t* dst, int dstStep, int16_t shift, uint8_t min, uint8_t max)
{
    if (shift == 128 && min == 0 && max == 255)
        return inverseBlock(
            src, [](int, Wide v) { return v; }, Samples{dst, dstStep});
    int16_t values[64];
    inverse(src, values);
    clip(values, dst, dstStep, shift, min, max);
}

constexpr DctKernels kKernels = {
    .forward = forward,
    .forwardQuant = forwardQuant,
    .forwardQuantSamples = forwardQuantSamples,
    .inverse = inverse,
    .inverseQuant = inverseQuant,
    .inverseQuantSamples = inverseQuantSamples,
    .inverseClip = inverseClip,
    .clip = clip,
};

}
}

const qel::DctKernels qel::DctKernels::QEL_BUILD = qel::QEL_BUILD::kKernels;
