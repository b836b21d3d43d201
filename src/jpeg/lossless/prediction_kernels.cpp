// SPDX-License-Identifier: Apache-2.0
// Kernels of lossless prediction. Differences have no dependence along the row; samples are restored as running sums by
// predictors 1, 4 and 5, without any dependence by 2 and 3, and one after the other by 6 and 7.
#include "jpeg/lossless/prediction.h"

#include "core/walk.h"

namespace qel::QEL_BUILD {
namespace {

// Halves rounded down.
QEL_INLINE int16_t halfSum(int16_t a, int16_t b) { return int16_t((a + b) >> 1); }
QEL_INLINE int16_t halfDifference(int16_t a, int16_t b) { return int16_t((a - b) >> 1); }

// Registers of 16 bits do not hold the sum of two, but have means of values without a sign, rounded up. As such, x
// becomes 32768 + x if its top bit is turned over, and 32767 - x if all the others are.
template <class V> QEL_INLINE V halfSum(V a, V b)
{
    auto mean = Simd<sizeof(V)>::average((U16<sizeof(V)>)(a ^ 0x7FFF), (U16<sizeof(V)>)(b ^ 0x7FFF));
    return (V)mean ^ 0x7FFF;
}
template <class V> QEL_INLINE V halfDifference(V a, V b)
{
    auto mean = Simd<sizeof(V)>::average((U16<sizeof(V)>)a ^ 0x8000, (U16<sizeof(V)>)(b ^ 0x7FFF));
    return (V)(mean ^ 0x8000);
}

// From the neighbours to the left, above, and above to the left.
template <int kPredictor, class V> QEL_INLINE V predict(V a, V b, V c)
{
    switch (kPredictor) {
    case 1:
        return a;
    case 2:
        return b;
    case 3:
        return c;
    case 4:
        return V(a + b - c);
    case 5:
        return V(a + halfDifference(b, c));
    case 6:
        return V(b + halfDifference(a, c));
    default:
        return halfSum(a, b);
    }
}

// At `row` and `prev`, which point to the sample and the one above it; not in the first column.
template <int kPredictor, class V> QEL_INLINE V predictAt(const int16_t* row, const int16_t* prev)
{
    if constexpr (kPredictor == 1) return load<V>(row - 1);
    if constexpr (kPredictor == 2) return load<V>(prev);
    if constexpr (kPredictor == 3) return load<V>(prev - 1);
    return predict<kPredictor, V>(load<V>(row - 1), load<V>(prev), load<V>(prev - 1));
}

QEL_INLINE int16_t at(const int16_t* p) { return load<int16_t>(p); }

QEL_INLINE bool overlap(const int16_t* a, const int16_t* b, int width)
{
    uintptr_t first = uintptr_t(a), second = uintptr_t(b), bytes = 2 * uintptr_t(width);
    return first - second < bytes || second - first < bytes;
}
// Predictor 1 has read the one sample that it takes from `prev` before it writes any.
template <int kPredictor> QEL_INLINE bool overlapsPrevious(const int16_t* prev, const int16_t* dst, int width)
{
    return kPredictor != 1 && overlap(prev, dst, width);
}

template <int kPredictor, int N>
QEL_INLINE void diffStep(Lanes<N> lanes, const int16_t* src, const int16_t* prev, int16_t* dst)
{
    using V = typename Lanes<N>::template Of<int16_t>;
    lanes.store(dst, V(lanes.load(src) - predictAt<kPredictor, V>(src, prev)));
}

// Predictors 4, 5 and 6 in wide registers: what the neighbours to the left give comes from the registers before, as
// loading it would often cross from one cache line into the next.
template <int kPredictor, class V> QEL_INLINE V carried(V sample, V above)
{
    if constexpr (kPredictor == 4) return sample - above;
    if constexpr (kPredictor == 5) return above ^ int16_t(0x8000);
    if constexpr (kPredictor == 6) return halfDifference(sample, above);
}
template <int kPredictor, int N>
QEL_INLINE void diffLong(const int16_t* src, const int16_t* prev, int16_t* dst, ptrdiff_t width)
{
    using V = S16<N>;
    auto step = [=](ptrdiff_t i) { diffStep<kPredictor>(Lanes<N>(), src + i, prev + i, dst + i); };
    step(1);
    ptrdiff_t i = 1 + N / 2 - ((1 + ptrdiff_t(uintptr_t(dst) / 2)) & (N / 2 - 1)), last = width - N / 2;
    V before = carried<kPredictor>(V{} + at(src + i - 1), V{} + at(prev + i - 1));
#pragma GCC unroll 2
    for (; i < last; i += N / 2) {
        V sample = load<V>(src + i), above = load<V>(prev + i), now = carried<kPredictor>(sample, above);
        V moved = Simd<N>::moveUp(before, now);
        if constexpr (kPredictor == 4) store(dst + i, now - moved);
        if constexpr (kPredictor == 5)
            store(dst + i, sample - load<V>(src + i - 1) - now + (V)Simd<N>::average((U16<N>)now, (U16<N>)moved));
        if constexpr (kPredictor == 6) store(dst + i, sample - above - moved);
        before = now;
    }
    step(last);
}

template <int kPredictor> void diff(const int16_t* src, const int16_t* prev, int16_t* dst, int width)
{
    bool inTurn = overlap(src, dst, width) || overlapsPrevious<kPredictor>(prev, dst, width);
    store(dst, int16_t(at(src) - at(prev)));
    if constexpr (QEL_WIDTH > 16 && kPredictor >= 4 && kPredictor <= 6)
        if (!inTurn && width > 3 * QEL_WIDTH) return diffLong<kPredictor, QEL_WIDTH>(src, prev, dst, width);
    auto step = [=](auto lanes, ptrdiff_t i)
                    QEL_INLINE_BODY { diffStep<kPredictor>(lanes, src + i, prev + i, dst + i); };
    if (!inTurn) return walkOverlapping<int16_t>(1, width, ptrdiff_t(uintptr_t(dst) / 2), step);
    for (ptrdiff_t i = 1; i < width; ++i) step(Lanes<1>(), i);
}

// One sample after the other, through memory.
template <int kPredictor>
QEL_INLINE void reconstructInTurn(const int16_t* src, const int16_t* prev, int16_t* dst, int width)
{
    store(dst, int16_t(at(src) + at(prev)));
    for (int i = 1; i < width; ++i)
        store(dst + i, int16_t(at(src + i) + predictAt<kPredictor, int16_t>(dst + i, prev + i)));
}

// Predictors 2 and 3: a sum of two registers.
template <int kPredictor> QEL_INLINE void addRow(const int16_t* src, const int16_t* prev, int16_t* dst, int width)
{
    store(dst, int16_t(at(src) + at(prev)));
    ++src;
    ++prev;
    ++dst;
    walk<int16_t>(width - 1, [=](auto lanes, ptrdiff_t i) QEL_INLINE_BODY {
        using V = typename decltype(lanes)::template Of<int16_t>;
        lanes.store(dst + i, V(lanes.load(src + i) + predictAt<kPredictor, V>(dst + i, prev + i)));
    });
}

// Predictors 1, 4 and 5: what is summed up along the row, and what is added to the sum.
template <int kPredictor, class V> QEL_INLINE V summand(const int16_t* src, const int16_t* prev)
{
    if constexpr (kPredictor != 5) return load<V>(src);
    return V(load<V>(src) + halfDifference(load<V>(prev), load<V>(prev - 1)));
}
template <int kPredictor, class V> QEL_INLINE V besides(V sum, const int16_t* prev)
{
    if constexpr (kPredictor != 4) return sum;
    return V(sum + load<V>(prev));
}

// From column i on as long as registers of N bytes fit; `sum` is that of all columns before. Returns the next column.
template <int kPredictor, int N>
QEL_INLINE int sumInSteps(const int16_t* src, const int16_t* prev, int16_t* dst, int i, int width, int16_t& sum)
{
    S16<N> before = S16<N>{} + sum, total = {};
    for (; width - i >= N / 2; i += N / 2) {
        S16<N> sums = Simd<N>::runningSum(summand<kPredictor, S16<N>>(src + i, prev + i), total);
        store(dst + i, besides<kPredictor, S16<N>>(sums + before, prev + i));
        before += total;
    }
    sum = before[0];
    return i;
}

template <int kPredictor> QEL_INLINE void sumRow(const int16_t* src, const int16_t* prev, int16_t* dst, int width)
{
    // The first sample of predictor 4 is the sum before it, 0, and what stands above; of the others, the sum begins
    // with what stands above.
    int16_t sum = kPredictor == 4 ? int16_t(0) : at(prev);
    int i = 0;
    if constexpr (kPredictor == 5) {
        sum = int16_t(sum + at(src));
        store(dst, sum);
        i = 1;
    }
    if constexpr (QEL_WIDTH > 16) i = sumInSteps<kPredictor, QEL_WIDTH>(src, prev, dst, i, width, sum);
    if constexpr (QEL_WIDTH >= 16) i = sumInSteps<kPredictor, 16>(src, prev, dst, i, width, sum);
    for (; i < width; ++i) {
        sum = int16_t(sum + summand<kPredictor, int16_t>(src + i, prev + i));
        store(dst + i, besides<kPredictor, int16_t>(sum, prev + i));
    }
}

// Predictors 6 and 7: one half of the last sample, and what does not depend on it. Samples stand in the upper half of
// 32 bits, where one half is exact; what later halving leaves of them below the lowest bit of a half carries nowhere.
QEL_INLINE int32_t nextInChain(int32_t last, int32_t rest) { return int32_t(uint32_t(last >> 1) + uint32_t(rest)); }

template <int kPredictor> QEL_INLINE int32_t chainRest(int32_t difference, int32_t above, int32_t aboveLeft)
{
    int32_t rest = kPredictor == 6 ? 2 * (difference + above) - aboveLeft : 2 * difference + above;
    return int32_t(uint32_t(rest) << 15);
}

// The same for eight samples.
template <int kPredictor> QEL_INLINE void chainRests(const int16_t* src, const int16_t* prev, int32_t* rests)
{
    using S = Simd<16>;
    S16<16> none = {}, difference = load<S16<16>>(src), above = load<S16<16>>(prev);
    S16<16> whole = kPredictor == 6 ? difference + above : difference;
    S16<16> halved = kPredictor == 6 ? load<S16<16>>(prev - 1) : above;
    auto rest = [](S16<16> wholes, S16<16> halves) {
        S32<16> half = (S32<16>)halves >> 1;
        return kPredictor == 6 ? (S32<16>)wholes - half : (S32<16>)wholes + half;
    };
    store(rests, rest(S::zipLow(none, whole), S::zipLow(none, halved)));
    store(rests + 4, rest(S::zipHigh(none, whole), S::zipHigh(none, halved)));
}

// From column i on as long as kRun samples fit; `last` is that of the column before. Returns the next column.
template <int kPredictor>
QEL_INLINE int chainInRuns(const int16_t* src, const int16_t* prev, int16_t* dst, int i, int width, int32_t& last)
{
    constexpr int kRun = 64;
    int32_t chain[kRun];
    for (; width - i >= kRun; i += kRun) {
        for (int k = 0; k < kRun; k += 8) chainRests<kPredictor>(src + i + k, prev + i + k, chain + k);
#pragma GCC unroll 16
        for (int k = 0; k < kRun; ++k) chain[k] = last = nextInChain(last, chain[k]);
        for (int k = 0; k < kRun; k += 8)
            store(dst + i + k, Simd<16>::pack(load<S32<16>>(chain + k) >> 16, load<S32<16>>(chain + k + 4) >> 16));
    }
    return i;
}

template <int kPredictor> QEL_INLINE void chainRow(const int16_t* src, const int16_t* prev, int16_t* dst, int width)
{
    auto last = int32_t(uint32_t(at(src) + at(prev)) << 16);
    store(dst, int16_t(last >> 16));
    int i = 1;
    if constexpr (QEL_WIDTH >= 16) i = chainInRuns<kPredictor>(src, prev, dst, i, width, last);
    for (; i < width; ++i) {
        last = nextInChain(last, chainRest<kPredictor>(at(src + i), at(prev + i), at(prev + i - 1)));
        store(dst + i, int16_t(last >> 16));
    }
}

template <int kPredictor> void reconstruct(const int16_t* src, const int16_t* prev, int16_t* dst, int width)
{
    if ((src != dst && overlap(src, dst, width)) || overlapsPrevious<kPredictor>(prev, dst, width))
        return reconstructInTurn<kPredictor>(src, prev, dst, width);
    if constexpr (kPredictor == 2 || kPredictor == 3) return addRow<kPredictor>(src, prev, dst, width);
    if constexpr (kPredictor == 1 || kPredictor == 4 || kPredictor == 5)
        return sumRow<kPredictor>(src, prev, dst, width);
    if constexpr (kPredictor >= 6) return chainRow<kPredictor>(src, prev, dst, width);
}

template <int... kPredictors> constexpr PredictionKernels kKernels = {
    .diff = {diff<kPredictors>...},
    .reconstruct = {reconstruct<kPredictors>...},
};

}
}

const qel::PredictionKernels qel::PredictionKernels::QEL_BUILD = qel::QEL_BUILD::kKernels<1, 2, 3, 4, 5, 6, 7>;
