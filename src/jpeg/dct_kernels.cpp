// Kernels of the 8x8 DCT. Column passes take eight rows of eight lanes; row passes and quantization take registers as
// wide as the machine has, each with the rows of one or two tables side by side.
#include "jpeg/dct.h"

#include "core/simd.h"
#include "jpeg/dct_columns.h"
#include "jpeg/dct_tables.h"

namespace qel {
namespace QEL_BUILD {
namespace {

constexpr int kWidth = QEL_WIDTH < 16 ? 16 : QEL_WIDTH;
constexpr int kPlaces = kWidth / 16;
using Wide = S16<kWidth>;
using Wide32 = S32<kWidth>;
using Op = Simd<kWidth>;

// The rows of N / 16 places in kRowOrder as one register: rowAt(r) gives row r, put(r, row) takes it.
template <int N, class RowAt> QEL_INLINE S16<N> gather(int place, RowAt rowAt)
{
    if constexpr (N == 16)
        return rowAt(kRowOrder[place]);
    else
        return Simd<N>::join(gather<N / 2>(place, rowAt), gather<N / 2>(place + N / 32, rowAt));
}
template <int N, class Put> QEL_INLINE void scatter(int place, S16<N> rows, Put put)
{
    if constexpr (N == 16) {
        put(kRowOrder[place], rows);
    } else {
        scatter<N / 2>(place, Simd<N>::lowerHalf(rows), put);
        scatter<N / 2>(place + N / 32, Simd<N>::upperHalf(rows), put);
    }
}
template <class Body> QEL_INLINE void forPlaces(Body body)
{
#pragma GCC unroll 8
    for (int place = 0; place < 8; place += kPlaces) body(place);
}
template <class T> QEL_INLINE Wide gatherFrom(const T* block, int place)
{
    return gather<kWidth>(place, [=](int r) { return load<Row>(block + 8 * r); });
}

// What each frequency (position) of two parts of a row table gathers from two pairs of values.
QEL_INLINE Wide32 dot(const int16_t (&table)[4][8][8], int part, int place, Wide32 first, Wide32 second)
{
    return Op::mulAddPairs((Wide)first, load<Wide>(table[part][place])) +
           Op::mulAddPairs((Wide)second, load<Wide>(table[part + 1][place]));
}

// Cosines of even frequencies are the same in both halves of a row, those of odd ones opposite: the products are of
// four sums and four differences.
struct ForwardSums {
    Wide32 low, high; // frequencies 0 to 3, 4 to 7
};
QEL_INLINE ForwardSums forwardDot(int place, Wide values)
{
    auto first = inBlocks<0, 2, 0, 2>((Wide32)values), second = inBlocks<1, 3, 1, 3>((Wide32)values);
    auto& table = kRowTables.forward;
    return {dot(table, 0, place, first, second), dot(table, 2, place, first, second)};
}
// kInRange: the sums and differences fit 16 bits. Else each half is multiplied by itself; 32-bit sums wrap.
template <bool kInRange> QEL_INLINE Wide forwardRow(int place, Wide v)
{
    ForwardSums sum;
    if constexpr (kInRange) {
        auto mirrored = inBlocks<2, 3, 0, 1>((Wide32)inBlocks<3, 2, 1, 0, 7, 6, 5, 4>(v));
        sum = forwardDot(place, (Wide)mirrored + v * load<Wide>(kRowTables.halfSigns));
    } else {
        auto lower = forwardDot(place, inBlocks<0, 1, 2, 3, 3, 2, 1, 0>(v));
        auto upper = forwardDot(place, inBlocks<7, 6, 5, 4, 4, 5, 6, 7>(v));
        auto isOdd = load<Wide32>(kRowTables.isOdd);
        sum = {lower.low + ((upper.low ^ isOdd) - isOdd), lower.high + ((upper.high ^ isOdd) - isOdd)};
    }
    return Op::pack((sum.low + (1 << 19)) >> 20, (sum.high + (1 << 19)) >> 20);
}

QEL_INLINE Wide inverseRow(int place, Wide v)
{
    auto& table = kRowTables.inverse;
    auto even =
        dot(table, 0, place, (Wide32)inBlocks<0, 2, 0, 2, 0, 2, 0, 2>(v), (Wide32)inBlocks<4, 6, 4, 6, 4, 6, 4, 6>(v)) +
        load<Wide32>(kRowTables.inverseRounding[place]);
    auto odd =
        dot(table, 2, place, (Wide32)inBlocks<1, 3, 1, 3, 1, 3, 1, 3>(v), (Wide32)inBlocks<5, 7, 5, 7, 5, 7, 5, 7>(v));
    return Op::pack((even + odd) >> 12, (even - odd) >> 12);
}

// c * T in units of 2^-15, ties to even, saturated; T is unsigned, and beyond 32767 only for steps of 0 and 1.
QEL_INLINE Wide quantize(Wide c, Wide table)
{
    auto product = Op::mulRoundEven(c, table), missing = c & (table >> 15);
    return Op::addSat(Op::addSat(product, missing), missing);
}

struct NoTable {
    Wide operator()(int, Wide v) const { return v; }
};

// `scale` is what is done to the values of some places, quantize or nothing.
template <bool kInRange, class Scale> QEL_INLINE void forwardRows(const Row (&rows)[8], int16_t* dst, Scale scale)
{
    forPlaces([&](int place) {
        auto v = forwardRow<kInRange>(place, gather<kWidth>(place, [&](int r) { return rows[r]; }));
        scatter<kWidth>(place, scale(place, v), [=](int r, Row row) { store(dst + 8 * r, row); });
    });
}

// Values for which no sum of the transform leaves 16 bits.
QEL_INLINE bool inRange(const int16_t* block)
{
    Wide outside = {};
    forPlaces([&](int i) { outside |= (load<Wide>(block + 8 * i) + 256) & ~511; });
    return Op::isZero(outside);
}

template <class Scale> QEL_INLINE void forwardBlock(const int16_t* src, int16_t* dst, Scale scale)
{
    Row rows[8];
    for (int r = 0; r < 8; ++r) rows[r] = load<Row>(src + 8 * r);
    bool small = inRange(src);
    forwardColumns(rows);
    if (small)
        forwardRows<true>(rows, dst, scale);
    else
        forwardRows<false>(rows, dst, scale);
}

void forward(const int16_t* src, int16_t* dst)
{
    forwardBlock(src, dst, [](int, Wide v) { return v; });
}

void forwardQuant(const int16_t* src, int16_t* dst, const uint16_t* encTable)
{
    forwardBlock(src, dst, [=](int place, Wide v) { return quantize(v, gatherFrom(encTable, place)); });
}

void forwardQuantSamples(const uint8_t* src, int srcStep, int16_t* dst, const uint16_t* encTable)
{
    Row rows[8];
#pragma GCC unroll 8
    for (int r = 0; r < 8; ++r) rows[r] = Simd<16>::widen(src + (ptrdiff_t)r * srcStep);
    forwardColumns(rows);
    // The level shift: 64 samples times 8. It changes nothing but the mean, and no sum left 16 bits without it.
    rows[0] -= 128 * 64;
    forwardRows<true>(rows, dst, [=](int place, Wide v) { return quantize(v, gatherFrom(encTable, place)); });
}

// `scale` is what is done to the coefficients first, dequantization or nothing. The rows come out with lanes 4 to 7 in
// reverse.
template <class Scale> QEL_INLINE void inverseRows(const int16_t* src, Row (&rows)[8], Scale scale)
{
    forPlaces([&](int place) {
        auto v = inverseRow(place, scale(place, gatherFrom(src, place)));
        scatter<kWidth>(place, v, [&](int r, Row row) { rows[r] = row; });
    });
    inverseColumns(rows);
}

QEL_INLINE void storeRows(const Row (&rows)[8], int16_t* dst)
{
#pragma GCC unroll 8
    for (int r = 0; r < 8; ++r) store(dst + 8 * r, inBlocks<0, 1, 2, 3, 7, 6, 5, 4>(rows[r]));
}

void inverse(const int16_t* src, int16_t* dst)
{
    Row rows[8];
    inverseRows(src, rows, [](int, Wide v) { return v; });
    storeRows(rows, dst);
}

void inverseQuant(const int16_t* src, int16_t* dst, const uint16_t* decTable)
{
    Row rows[8];
    inverseRows(src, rows, [=](int place, Wide v) { return v * gatherFrom(decTable, place); });
    storeRows(rows, dst);
}

// Two rows of eight samples.
QEL_INLINE void storeSamples(U8<16> rows, uint8_t* dst, int dstStep)
{
    auto halves = (U64<16>)rows;
    store(dst, halves[0]);
    store(dst + dstStep, halves[1]);
}

QEL_INLINE void clipRows(const Row (&rows)[8], uint8_t* dst, int dstStep, int16_t shift, uint8_t min, uint8_t max)
{
    bool whole = min == 0 && max == 255;
#pragma GCC unroll 4
    for (int r = 0; r < 8; r += 2) {
        uint8_t* to = dst + (ptrdiff_t)r * dstStep;
        if (whole) {
            storeSamples(Simd<16>::packUnsigned(rows[r] + shift, rows[r + 1] + shift), to, dstStep);
        } else {
            auto shifts = Row{} + shift;
            auto packed = Simd<16>::packUnsigned(add(rows[r], shifts), add(rows[r + 1], shifts));
            auto atLeast = Simd<16>::greatest(packed, U8<16>{} + min);
            storeSamples(Simd<16>::least(atLeast, U8<16>{} + max), to, dstStep);
        }
    }
}

QEL_INLINE void reverseUpper(Row (&rows)[8])
{
#pragma GCC unroll 8
    for (int r = 0; r < 8; ++r) rows[r] = inBlocks<0, 1, 2, 3, 7, 6, 5, 4>(rows[r]);
}

void inverseQuantSamples(const int16_t* src, uint8_t* dst, int dstStep, const uint16_t* decTable)
{
    Row rows[8];
    inverseRows(src, rows, [=](int place, Wide v) { return v * gatherFrom(decTable, place); });
    reverseUpper(rows);
    clipRows(rows, dst, dstStep, 128, 0, 255);
}

void inverseClip(const int16_t* src, uint8_t* dst, int dstStep, int16_t shift, uint8_t min, uint8_t max)
{
    Row rows[8];
    inverseRows(src, rows, [](int, Wide v) { return v; });
    reverseUpper(rows);
    clipRows(rows, dst, dstStep, shift, min, max);
}

void clip(const int16_t* src, uint8_t* dst, int dstStep, int16_t shift, uint8_t min, uint8_t max)
{
    Row rows[8];
    for (int r = 0; r < 8; ++r) rows[r] = load<Row>(src + 8 * r);
    clipRows(rows, dst, dstStep, shift, min, max);
}

}
}

const DctKernels DctKernels::QEL_BUILD = {
    qel::QEL_BUILD::forward,     qel::QEL_BUILD::forwardQuant, qel::QEL_BUILD::forwardQuantSamples,
    qel::QEL_BUILD::inverse,     qel::QEL_BUILD::inverseQuant, qel::QEL_BUILD::inverseQuantSamples,
    qel::QEL_BUILD::inverseClip, qel::QEL_BUILD::clip};

}
