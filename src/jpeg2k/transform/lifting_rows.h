// SPDX-License-Identifier: Apache-2.0
// The walk of the lifting steps along a row: single pairs at its ends, registers of pairs between them.
#pragma once

#include "core/blocks.h"
#include "jpeg2k/transform/lifting.h"
#include "jpeg2k/transform/wavelet.h"

namespace qel::QEL_BUILD {
namespace {

inline ptrdiff_t least(ptrdiff_t a, ptrdiff_t b) { return a < b ? a : b; }
inline bool isAmong(ptrdiff_t i, ptrdiff_t count) { return i >= 0 && i < count; }

// Pairs [from, end) of a row in kParts parts of the same number of steps. A block of 16 bytes holds kPairs neighbouring
// pairs, and each block of a register walks a part of its own: what the pair before had is always in the same block.
// Parts overlap by what is left over, and have room before them for a step that tells what their first pair needs.
template <class F, int N> struct RowParts {
    static constexpr int kParts = N / 16, kPairs = 16 / int(sizeof(typename F::Sample));

    ptrdiff_t steps, apart, end;

    RowParts(ptrdiff_t from, ptrdiff_t to)
    {
        constexpr ptrdiff_t kStep = kParts * kPairs;
        ptrdiff_t pairs = to - from;
        steps = pairs / kStep, apart = steps * kPairs;
        if constexpr (kParts > 1) {
            ptrdiff_t more = (pairs + kStep - 1) / kStep, moreApart = (pairs - more * kPairs) / (kParts - 1);
            if (moreApart >= kPairs) steps = more, apart = moreApart;
        }
        end = from + (kParts - 1) * apart + steps * kPairs;
    }
};

// One block for each part, `apart` elements from each other. Blocks but the first lie kBack elements further back.
template <int N, int kBack, class T> QEL_INLINE Vec<T, N> loadParts(const T* p, ptrdiff_t apart)
{
    Vec<T, 16> blocks[N / 16];
    repeat<N / 16>([&](int i) QEL_INLINE_BODY { blocks[i] = load<Vec<T, 16>>(p + (i > 0 ? i * apart - kBack : 0)); });
    return (Vec<T, N>)joinBlocks<N>(blocks);
}
template <int N, class T> QEL_INLINE void storeParts(T* p, ptrdiff_t apart, Vec<T, N> v)
{
    Vec<T, 16> blocks[N / 16];
    splitBlocks<N>((S16<N>)v, blocks);
    repeat<N / 16>([&](int i) QEL_INLINE_BODY { store(p + i * apart, blocks[i]); });
}
// The same of two registers, whose blocks of a part are neighbours.
template <int N, class T> QEL_INLINE void storeParts(T* p, ptrdiff_t apart, Vec<T, N> v, Vec<T, N> w)
{
    if constexpr (N == 16) {
        store(p, v), store(p + 16 / sizeof(T), w);
    } else {
        Vec<T, 16> first[N / 16], second[N / 16];
        splitBlocks<N>((S16<N>)v, first), splitBlocks<N>((S16<N>)w, second);
        repeat<N / 16>([&](int i) QEL_INLINE_BODY {
            store(p + i * apart, Simd<32>::join((S16<16>)first[i], (S16<16>)second[i]));
        });
    }
}

// Lifts kSteps registers of pairs, of which the first part begins with k.
template <class Lift, int N, int kSteps, class Row, class Beside>
QEL_INLINE void walkSteps(const Row& row, Beside& beside, ptrdiff_t k, ptrdiff_t apart)
{
    constexpr int kPairs = RowParts<Lift, N>::kPairs;
    ValueOf<Lift, N> first[kSteps], second[kSteps];
    repeat<kSteps>([&](int i) QEL_INLINE_BODY { row.template take<N, 0>(k + i * kPairs, apart, first[i], second[i]); });
    lift<Lift, kSteps>(beside, first, second);
    repeat<kSteps>([&](int i) QEL_INLINE_BODY { row.template give<N>(k + i * kPairs, apart, first[i], second[i]); });
}

// Takes registers of pairs from `k` on and returns where they end; `before` says what the pair before k had, then what
// the last one had. Row::take and give move pairs of which the first part begins with k.
template <class Lift, int N, class Row, class Before>
QEL_INLINE ptrdiff_t walkParts(const Row& row, Before& before, ptrdiff_t k, ptrdiff_t to)
{
    constexpr int kPairs = RowParts<Lift, N>::kPairs, kLast = N / int(sizeof(typename Lift::Sample)) - 1, kAtOnce = 4;
    const RowParts<Lift, N> parts(k, to);
    if (parts.steps == 0) return k;
    BesideLanes<ValueOf<Lift, N>, Lift::kSteps> beside = {};
    if constexpr (parts.kParts > 1) {
        ValueOf<Lift, N> first, second;
        row.template take<N, kPairs>(k, parts.apart, first, second);
        lift<Lift, 1>(beside, &first, &second);
    }
    repeat<Lift::kSteps>([&](int step) QEL_INLINE_BODY { beside.slots[step][kPairs - 1] = before.slots[step]; });
    ptrdiff_t left = parts.steps;
    for (; left >= kAtOnce; left -= kAtOnce, k += kAtOnce * kPairs)
        walkSteps<Lift, N, kAtOnce>(row, beside, k, parts.apart);
    for (; left > 0; --left, k += kPairs) walkSteps<Lift, N, 1>(row, beside, k, parts.apart);
    repeat<Lift::kSteps>([&](int step) QEL_INLINE_BODY { before.slots[step] = beside.slots[step][kLast]; });
    return parts.end;
}

// Four parts, in registers of 64 bytes, would take longer to gather and to spread than their lifting gains.
//
// Pairs from wholeFrom to before wholeTo are read and written as they are; Row::one does any pair.
template <class Lift, class Row> QEL_INLINE void walkRow(const Row& row, ptrdiff_t wholeFrom, ptrdiff_t wholeTo)
{
    AboveLanes<ValueOf<Lift, 1>, Lift::kSteps> before;
    const Pairs pairs = row.pairs;
    ptrdiff_t k = pairs.first;
    for (; k < wholeFrom && k <= pairs.last; ++k) row.one(before, k);
    if constexpr (QEL_WIDTH > 16) k = walkParts<Lift, 32>(row, before, k, wholeTo);
    if constexpr (QEL_WIDTH >= 16) k = walkParts<Lift, 16>(row, before, k, wholeTo);
    for (; k <= pairs.last; ++k) row.one(before, k);
}

// The samples of a row, in turns and in two halves, to be lifted forward and back.
template <class F, class T> struct ForwardRow {
    using One = ValueOf<F, 1>;
    const T* src;
    T *low, *high;
    Line line;
    Pairs pairs;
    ptrdiff_t lows, highs;

    template <class Before> QEL_INLINE void one(Before& before, ptrdiff_t k) const
    {
        auto at = [&](ptrdiff_t position) { return read<F, 1>(src + line.inside(position - line.phase)); };
        One second = at(2 * k + 2), first = k == pairs.first ? second : at(2 * k + 1);
        lift<F, 1>(before, &first, &second);
        ptrdiff_t n = k - F::kLag;
        if (isAmong(n - line.phase, lows)) write<F, 1>(low + n - line.phase, first);
        if (isAmong(n, highs)) write<F, 1>(high + n, second);
    }
    template <int N, int kBack>
    QEL_INLINE void take(ptrdiff_t k, ptrdiff_t apart, ValueOf<F, N>& first, ValueOf<F, N>& second) const
    {
        const T* p = src + 2 * k + 1 - line.phase;
        auto odd = loadParts<N, 2 * kBack>(p, 2 * apart), even = loadParts<N, 2 * kBack>(p + 16 / sizeof(T), 2 * apart);
        Simd<N>::unzip2(odd, even);
        first = F::template fromMemory<N>(odd), second = F::template fromMemory<N>(even);
    }
    template <int N> QEL_INLINE void give(ptrdiff_t k, ptrdiff_t apart, ValueOf<F, N> first, ValueOf<F, N> second) const
    {
        ptrdiff_t n = k - F::kLag;
        storeParts<N, T>(low + n - line.phase, apart, F::template toMemory<N>(first));
        storeParts<N, T>(high + n, apart, F::template toMemory<N>(second));
    }
};
template <class F, class T> struct InverseRow {
    using One = ValueOf<F, 1>;
    const T *low, *high;
    T* dst;
    Line line;
    Pairs pairs;

    QEL_INLINE ptrdiff_t placeOf(ptrdiff_t k) const { return 2 * (k - F::kLag) - 1 - line.phase; }
    template <class Before> QEL_INLINE void one(Before& before, ptrdiff_t k) const
    {
        One second = read<F, 1>(high + line.highPlace(k));
        One first = k == pairs.first ? second : read<F, 1>(low + line.lowPlace(k));
        lift<F, 1>(before, &first, &second);
        ptrdiff_t to = placeOf(k);
        if (isAmong(to, line.length)) write<F, 1>(dst + to, first);
        if (isAmong(to + 1, line.length)) write<F, 1>(dst + to + 1, second);
    }
    template <int N, int kBack>
    QEL_INLINE void take(ptrdiff_t k, ptrdiff_t apart, ValueOf<F, N>& first, ValueOf<F, N>& second) const
    {
        first = F::template fromMemory<N>(loadParts<N, kBack>(low + k - line.phase, apart));
        second = F::template fromMemory<N>(loadParts<N, kBack>(high + k, apart));
    }
    template <int N> QEL_INLINE void give(ptrdiff_t k, ptrdiff_t apart, ValueOf<F, N> first, ValueOf<F, N> second) const
    {
        SamplesOf<F, N> odd = F::template toMemory<N>(first), even = F::template toMemory<N>(second);
        T* to = dst + placeOf(k);
        storeParts<N, T>(to, 2 * apart, Simd<N>::zipLow(odd, even), Simd<N>::zipHigh(odd, even));
    }
};

template <class F, class T> void forwardRow(const T* src, Line line, T* low, T* high)
{
    const ForwardRow<F, T> row = {src, low, high, line, forwardPairs(line, F::kLag), line.lows(), line.highs()};
    ptrdiff_t wholeTo = least(row.highs, row.lows + line.phase) + F::kLag;
    if (line.mirrored) wholeTo = least(wholeTo, (line.length + line.phase - 1) / 2);
    walkRow<F>(row, F::kLag + line.phase, wholeTo);
}

template <class F, class T> void inverseRow(const T* low, const T* high, Line line, T* dst)
{
    const InverseRow<F, T> row = {low, high, dst, line, inversePairs(line, F::kLag)};
    ptrdiff_t wholeTo = (line.length + line.phase + 1) / 2 + F::kLag;
    if (line.mirrored) wholeTo = least(wholeTo, least(line.lows() + line.phase, line.highs()));
    walkRow<F>(row, F::kLag + 1, wholeTo);
}

}
}
