// The walks that apply a filter's lifting steps: along rows, and down columns by pairs of rows.
#pragma once

#include "jpeg2k/lifting.h"
#include "jpeg2k/wavelet.h"

namespace qel {
namespace QEL_BUILD {
namespace {

template <class F, int N> using SamplesOf = typename LanesOf<typename F::Sample, N>::Type;
template <class F, int N> using ValueOf = typename F::template Value<N>;
template <class F, int N> constexpr int kLanesOf = N == 1 ? 1 : N / int(sizeof(typename F::Sample));

template <class F, int N> QEL_INLINE ValueOf<F, N> read(const typename F::Sample* p)
{
    return F::template fromMemory<N>(load<SamplesOf<F, N>>(p));
}
template <class F, int N> QEL_INLINE void write(typename F::Sample* p, ValueOf<F, N> v)
{
    store(p, SamplesOf<F, N>(F::template toMemory<N>(v)));
}
// Neighbours in turns.
template <class F, int N> QEL_INLINE void read2(const typename F::Sample* p, ValueOf<F, N>& a, ValueOf<F, N>& b)
{
    SamplesOf<F, N> first, second;
    Simd<N>::load2((const uint8_t*)p, first, second);
    a = F::template fromMemory<N>(first), b = F::template fromMemory<N>(second);
}
template <class F, int N> QEL_INLINE void write2(typename F::Sample* p, ValueOf<F, N> a, ValueOf<F, N> b)
{
    SamplesOf<F, N> first = F::template toMemory<N>(a), second = F::template toMemory<N>(b);
    Simd<N>::store2((uint8_t*)p, first, second);
}

template <class F> struct Forward : F {
    template <class... Args> static QEL_INLINE void lift(Args&... args) { F::forward(args...); }
};
template <class F> struct Inverse : F {
    template <class... Args> static QEL_INLINE void lift(Args&... args) { F::inverse(args...); }
};

// body(0), body(1), ... without a loop: arrays that it indexes stay in registers.
template <int kTimes, class Body> QEL_INLINE void repeat(Body body)
{
    if constexpr (kTimes > 0) {
        repeat<kTimes - 1>(body);
        body(kTimes - 1);
    }
}

template <class F, int kPairs, class T>
QEL_INLINE void liftRows(const T* const* src, T* const* dst, T* kept, ptrdiff_t width)
{
    inRegisters<T>(width, [&](auto bytes, ptrdiff_t i) QEL_INLINE_BODY {
        constexpr int N = bytes.value;
        using V = ValueOf<F, N>;
        AboveLanes<V, F::kDelays> before;
        repeat<F::kDelays>([&](int slot) QEL_INLINE_BODY { before.slots[slot] = load<V>(kept + slot * width + i); });
        repeat<kPairs>([&](int k) QEL_INLINE_BODY {
            V in[2] = {read<F, N>(src[2 * k] + i), read<F, N>(src[2 * k + 1] + i)}, out[2];
            F::lift(before, in[0], in[1], out[0], out[1]);
            write<F, N>(dst[2 * k] + i, out[0]);
            write<F, N>(dst[2 * k + 1] + i, out[1]);
        });
        repeat<F::kDelays>([&](int slot) QEL_INLINE_BODY { store(kept + slot * width + i, before.slots[slot]); });
    });
}

template <class Step, class T> void liftPairs(const T* const* src, T* const* dst, int pairs, T* kept, ptrdiff_t width)
{
    if (pairs == kMostPairs) return liftRows<Step, kMostPairs>(src, dst, kept, width);
    for (int k = 0; k < pairs; ++k) liftRows<Step, 1>(src + 2 * k, dst + 2 * k, kept, width);
}

// Pairs of a row, lane by lane: `one` does a pair with single samples, `many` as many as a register has. Between both,
// what was kept goes over in the last lane.
template <class F, class One, class Many>
QEL_INLINE void liftRow(Pairs pairs, ptrdiff_t wholeFrom, ptrdiff_t wholeTo, One one, Many many)
{
    AboveLanes<ValueOf<F, 1>, F::kDelays> before;
    ptrdiff_t k = pairs.first;
    for (; k < wholeFrom && k <= pairs.last; ++k) one(before, k);
    auto walk = [&](auto bytes) QEL_INLINE_BODY {
        constexpr int N = bytes.value, kLanes = kLanesOf<F, N>;
        if (wholeTo - k < kLanes) return;
        BesideLanes<ValueOf<F, N>, F::kDelays> beside;
        repeat<F::kDelays>([&](int slot)
                               QEL_INLINE_BODY { beside.slots[slot] = ValueOf<F, N>{} + before.slots[slot]; });
        for (; wholeTo - k >= kLanes; k += kLanes) many(bytes, beside, k);
        repeat<F::kDelays>([&](int slot) QEL_INLINE_BODY { before.slots[slot] = beside.slots[slot][kLanes - 1]; });
    };
    if constexpr (QEL_WIDTH > 16) walk(Bytes<QEL_WIDTH>());
    if constexpr (QEL_WIDTH >= 16) walk(Bytes<16>());
    for (; k <= pairs.last; ++k) one(before, k);
}

inline ptrdiff_t least(ptrdiff_t a, ptrdiff_t b) { return a < b ? a : b; }
inline bool isAmong(ptrdiff_t i, ptrdiff_t count) { return i >= 0 && i < count; }

template <class F, class T> void forwardRow(const T* src, Line line, T* low, T* high)
{
    constexpr int kLag = F::kLag;
    const Pairs pairs = forwardPairs(line, kLag);
    const int phase = line.phase;
    const ptrdiff_t lows = line.lows(), highs = line.highs();
    auto at = [&](ptrdiff_t position) { return read<F, 1>(src + line.inside(position - phase)); };
    auto one = [&](auto& before, ptrdiff_t k) QEL_INLINE_BODY {
        ValueOf<F, 1> l, h, even = at(2 * k + 2), odd = k == pairs.first ? even : at(2 * k + 1);
        F::forward(before, odd, even, l, h);
        if (isAmong(k - kLag - phase, lows)) write<F, 1>(low + k - kLag - phase, l);
        if (isAmong(k - kLag, highs)) write<F, 1>(high + k - kLag, h);
    };
    auto many = [&](auto bytes, auto& before, ptrdiff_t k) QEL_INLINE_BODY {
        constexpr int N = bytes.value;
        ValueOf<F, N> odd, even, l, h;
        read2<F, N>(src + 2 * k + 1 - phase, odd, even);
        F::forward(before, odd, even, l, h);
        write<F, N>(low + k - kLag - phase, l);
        write<F, N>(high + k - kLag, h);
    };
    ptrdiff_t wholeTo = least(highs, lows + phase) + kLag;
    if (line.mirrored) wholeTo = least(wholeTo, (line.length + phase - 1) / 2);
    liftRow<F>(pairs, kLag + phase, wholeTo, one, many);
}

template <class F, class T> void inverseRow(const T* low, const T* high, Line line, T* dst)
{
    constexpr int kLag = F::kLag;
    const Pairs pairs = inversePairs(line, kLag);
    const int phase = line.phase;
    auto one = [&](auto& before, ptrdiff_t k) QEL_INLINE_BODY {
        ValueOf<F, 1> odd, even, h = read<F, 1>(high + line.highPlace(k));
        ValueOf<F, 1> l = k == pairs.first ? h : read<F, 1>(low + line.lowPlace(k));
        F::inverse(before, l, h, odd, even);
        ptrdiff_t to = 2 * (k - kLag) - 1 - phase;
        if (isAmong(to, line.length)) write<F, 1>(dst + to, odd);
        if (isAmong(to + 1, line.length)) write<F, 1>(dst + to + 1, even);
    };
    auto many = [&](auto bytes, auto& before, ptrdiff_t k) QEL_INLINE_BODY {
        constexpr int N = bytes.value;
        ValueOf<F, N> odd, even;
        F::inverse(before, read<F, N>(low + k - phase), read<F, N>(high + k), odd, even);
        write2<F, N>(dst + 2 * (k - kLag) - 1 - phase, odd, even);
    };
    ptrdiff_t wholeTo = (line.length + phase + 1) / 2 + kLag;
    if (line.mirrored) wholeTo = least(wholeTo, least(line.lows() + phase, line.highs()));
    liftRow<F>(pairs, kLag + 1, wholeTo, one, many);
}

template <class F, class T = typename F::Sample> constexpr LiftingKernels<T> kLifting = {
    F::kLag, forwardRow<F>, inverseRow<F>, liftPairs<Forward<F>, T>, liftPairs<Inverse<F>, T>};

}
}
}
