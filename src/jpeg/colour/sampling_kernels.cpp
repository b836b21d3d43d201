// SPDX-License-Identifier: Apache-2.0
// Kernels of the chroma sampling by two.
#include "jpeg/colour/sampling.h"

#include "core/walk.h"

namespace qel::QEL_BUILD {
namespace {

// For filters that gain nothing by registers of a whole cache line: most of their loads would cross into the next one.
constexpr int kHalfLine = QEL_WIDTH > 32 ? 32 : QEL_WIDTH;

// Box filters over one row or two. The rounding term alternates: kEven for even destination samples, kOdd for odd ones.
template <int kEven, int kOdd> QEL_INLINE auto roundingAt(auto lanes, ptrdiff_t i)
{
    using V = typename decltype(lanes)::template Of<int16_t>;
    if constexpr (lanes.kSamples == 1)
        return V(i % 2 == 0 ? kEven : kOdd);
    else
        return wordPairsOf<sizeof(V)>(kEven, kOdd);
}
template <int kEven, int kOdd, class... Rows> QEL_INLINE void boxes(uint8_t* dst, int dstWidth, const Rows*... rows)
{
    auto box = [=](auto lanes, ptrdiff_t i) QEL_INLINE_BODY {
        (prefetchPageAhead<2 * lanes.kBytes>(rows + 2 * i), ...);
        lanes.store(dst + i, lanes.narrow([=](ptrdiff_t k) QEL_INLINE_BODY {
            auto sum = (lanes.sumPairs(rows + 2 * (i + k)) + ... + roundingAt<kEven, kOdd>(lanes, i));
            return sum >> sizeof...(rows);
        }));
    };
    // Registers begin at even destination samples, as their rounding terms do.
    walkOverlapping<uint8_t, kHalfLine>(0, dstWidth & ~1, 0, box);
    if (dstWidth % 2 != 0) box(Lanes<1>(), dstWidth - 1);
}

void downH2V1(const uint8_t* src, uint8_t* dst, int dstWidth) { boxes<1, 1>(dst, dstWidth, src); }
void downH2V2(const uint8_t* src1, const uint8_t* src2, uint8_t* dst, int dstWidth)
{
    boxes<3, 3>(dst, dstWidth, src1, src2);
}
void downRowH2V1(const uint8_t* src, int srcWidth, uint8_t* dst) { boxes<0, 1>(dst, srcWidth / 2, src); }
void downRowH2V2(const uint8_t* src1, const uint8_t* src2, int srcWidth, uint8_t* dst)
{
    boxes<1, 2>(dst, srcWidth / 2, src1, src2);
}

// Triangle filters. Each source sample i gives two destination samples: left() mixes it with the sample before it,
// right() with the one after it.
struct Linear {
    static constexpr int kWidest = kHalfLine;
    const uint8_t* row;

    QEL_INLINE int at(ptrdiff_t i) const { return row[i]; }
    static QEL_INLINE uint8_t left(int here, int before) { return uint8_t((3 * here + before + 1) >> 2); }
    static QEL_INLINE uint8_t right(int here, int after) { return uint8_t((3 * here + after + 2) >> 2); }

    // With the means taken one after the other, rounded down and up in turn, nothing is lost: the results are exact.
    QEL_INLINE void up(auto lanes, ptrdiff_t i, auto out) const
    {
        auto before = lanes.load(row + i - 1), here = lanes.load(row + i), after = lanes.load(row + i + 1);
        out.putInterleaved(lanes.averageDown(here, lanes.average(here, before)),
                           lanes.average(here, lanes.averageDown(here, after)));
    }
};

struct Bilinear {
    static constexpr int kWidest = QEL_WIDTH;
    const uint8_t *near, *far;

    QEL_INLINE int at(ptrdiff_t i) const { return 3 * near[i] + far[i]; }
    static QEL_INLINE uint8_t left(int here, int before) { return uint8_t((3 * here + before + 8) >> 4); }
    static QEL_INLINE uint8_t right(int here, int after) { return uint8_t((3 * here + after + 7) >> 4); }

    // Neighbours are multiplied as they lie in memory: the pairs of a load at i + k are samples (i + k, i + k + 1),
    // (i + k + 2, i + k + 3) and so on, so loads at i - 1, i and i + 1 hold every pair without a shuffle.
    template <int N> struct Loads {
        U8<N> before, here, after;

        explicit QEL_INLINE Loads(const uint8_t* p)
            : before(load<U8<N>>(p - 1)), here(load<U8<N>>(p)), after(load<U8<N>>(p + 1))
        {}
    };
    // Both destination samples of every other source sample as the bytes of a lane, from its pairs with the sample
    // before it and with the one after it. The right one is rounded as its negative, ties up.
    template <int N> static QEL_INLINE U16<N> upEveryOther(U8<N> nearBefore, U8<N> farBefore, U8<N> near, U8<N> far)
    {
        auto left =
                 Simd<N>::mulAddPairs(nearBefore, pairsOf<N>(3, 9)) + Simd<N>::mulAddPairs(farBefore, pairsOf<N>(1, 3)),
             right = Simd<N>::mulAddPairs(near, pairsOf<N>(9, 3)) + Simd<N>::mulAddPairs(far, pairsOf<N>(3, 1));
        return (U16<N>)(Simd<N>::template divideRounded<16>(left) - (Simd<N>::template divideRounded<-16>(right) << 8));
    }
    // All destination samples of N source samples: those of the first, third and so on, and the others.
    template <int N> struct Doubled {
        U16<N> even, odd;

        QEL_INLINE Doubled(Loads<N> near, Loads<N> far)
            : even(upEveryOther<N>(near.before, far.before, near.here, far.here)),
              odd(upEveryOther<N>(near.here, far.here, near.after, far.after))
        {}
        QEL_INLINE void putInto(auto out) const { out.putInterleaved(even, odd); }
    };
    template <int N> QEL_INLINE void up(Lanes<N>, ptrdiff_t i, auto out) const
    {
        Doubled<N>(Loads<N>(near + i), Loads<N>(far + i)).putInto(out);
    }
    QEL_INLINE void up(Lanes<1>, ptrdiff_t i, auto out) const
    {
        out.put(left(at(i), at(i - 1)), right(at(i), at(i + 1)));
    }
};

// Walks source samples, of which each gives two destination samples, so that registers of these are aligned: stores are
// most of the traffic.
template <int kWidest, class Body> QEL_INLINE void walkDoubling(uint8_t* dst, ptrdiff_t begin, ptrdiff_t end, Body body)
{
    walkOverlapping<uint8_t, kWidest>(begin, end, ptrdiff_t((uintptr_t)dst / 2), body);
}
QEL_INLINE auto cachedAt(auto lanes, uint8_t* dst) { return Output<Cached, uint8_t, lanes.kBytes>{dst}; }

template <class Rows> QEL_INLINE void upLast(Rows rows, uint8_t* dst, int dstWidth)
{
    ptrdiff_t pairs = dstWidth / 2;
    if (dstWidth % 2 != 0) dst[2 * pairs] = rows.left(rows.at(pairs), rows.at(pairs - 1));
}

// Reads one sample before the rows and one after them.
template <class Store, class Rows> QEL_INLINE void upPlaneRow(Rows rows, uint8_t* dst, int dstWidth)
{
    int pairs = dstWidth / 2;
    if constexpr (__is_same(Store, Streamed))
        walkInto<Streamed, 2>(dst, pairs,
                              [=](auto lanes, ptrdiff_t i, auto out) QEL_INLINE_BODY { rows.up(lanes, i, out); });
    else
        walkDoubling<Rows::kWidest>(dst, 0, pairs, [=](auto lanes, ptrdiff_t i) QEL_INLINE_BODY {
            rows.up(lanes, i, cachedAt(lanes, dst + 2 * i));
        });
    upLast(rows, dst, dstWidth);
}

// Samples i and on of both destination rows between two source rows: all is loaded once, before anything is stored.
QEL_INLINE void upBetween(Lanes<1> one, const uint8_t* upper, const uint8_t* lower, ptrdiff_t i, auto first,
                          auto second)
{
    Bilinear{upper, lower}.up(one, i, first);
    Bilinear{lower, upper}.up(one, i, second);
}
template <int N>
QEL_INLINE void upBetween(Lanes<N>, const uint8_t* upper, const uint8_t* lower, ptrdiff_t i, auto first, auto second)
{
    Bilinear::Loads<N> above(upper + i), below(lower + i);
    Bilinear::Doubled<N> nearUpper(above, below), nearLower(below, above);
    nearUpper.putInto(first);
    nearLower.putInto(second);
}

// Reads nothing outside the rows: the first and last samples stand for their missing neighbours.
template <class Rows> QEL_INLINE void upRow(Rows rows, int srcWidth, uint8_t* dst)
{
    ptrdiff_t last = srcWidth - 1;
    dst[0] = rows.left(rows.at(0), rows.at(0));
    if (srcWidth > 1) {
        dst[1] = rows.right(rows.at(0), rows.at(1));
        walkDoubling<Rows::kWidest>(dst, 1, last, [=](auto lanes, ptrdiff_t i) QEL_INLINE_BODY {
            rows.up(lanes, i, cachedAt(lanes, dst + 2 * i));
        });
        dst[2 * last] = rows.left(rows.at(last), rows.at(last - 1));
    }
    dst[2 * last + 1] = rows.right(rows.at(last), rows.at(last));
}

template <class Store> void upH2V1(const uint8_t* src, uint8_t* dst, int dstWidth)
{
    upPlaneRow<Store>(Linear{src}, dst, dstWidth);
}
template <class Store> void upH2V2(const uint8_t* near, const uint8_t* far, uint8_t* dst, int dstWidth)
{
    upPlaneRow<Store>(Bilinear{near, far}, dst, dstWidth);
}
void upBothH2V2(const uint8_t* upper, const uint8_t* lower, uint8_t* dst1, uint8_t* dst2, int dstWidth)
{
    walkDoubling<QEL_WIDTH>(dst1, 0, dstWidth / 2, [=](auto lanes, ptrdiff_t i) QEL_INLINE_BODY {
        upBetween(lanes, upper, lower, i, cachedAt(lanes, dst1 + 2 * i), cachedAt(lanes, dst2 + 2 * i));
    });
    upLast(Bilinear{upper, lower}, dst1, dstWidth);
    upLast(Bilinear{lower, upper}, dst2, dstWidth);
}
void upRowH2V1(const uint8_t* src, int srcWidth, uint8_t* dst) { upRow(Linear{src}, srcWidth, dst); }
void upRowH2V2(const uint8_t* near, const uint8_t* far, int srcWidth, uint8_t* dst)
{
    upRow(Bilinear{near, far}, srcWidth, dst);
}

constexpr SamplingKernels kKernels = {
    .downH2V1 = downH2V1,
    .downH2V2 = downH2V2,
    .upH2V1 = {upH2V1<Cached>, upH2V1<Streamed>},
    .upH2V2 = {upH2V2<Cached>, upH2V2<Streamed>},
    .upBothH2V2 = upBothH2V2,
    .downRowH2V1 = downRowH2V1,
    .downRowH2V2 = downRowH2V2,
    .upRowH2V1 = upRowH2V1,
    .upRowH2V2 = upRowH2V2,
};

}
}

const qel::SamplingKernels qel::SamplingKernels::QEL_BUILD = qel::QEL_BUILD::kKernels;
