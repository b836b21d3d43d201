// Kernels of the chroma sampling by two.
#include "jpeg/sampling.h"

#include "core/simd.h"

namespace qel {
namespace QEL_BUILD {
namespace {

// Box filters over one row or two. The rounding term alternates: kEven for even destination samples, kOdd for odd ones.
template <int kEven, int kOdd, class... Rows>
QEL_INLINE void box(Bytes<1>, uint8_t* dst, ptrdiff_t i, const Rows*... rows)
{
    dst[i] = uint8_t(((rows[2 * i] + rows[2 * i + 1]) + ... + (i % 2 == 0 ? kEven : kOdd)) >> sizeof...(rows));
}
template <int kEven, int kOdd, int N, class... Rows>
QEL_INLINE void box(Bytes<N>, uint8_t* dst, ptrdiff_t i, const Rows*... rows)
{
    auto bias = (S16<N>)(U32<N>{} + uint32_t(kEven | kOdd << 16));
    (fetchAhead<2 * N>(rows + 2 * i), ...);
    auto means = [=](ptrdiff_t k) {
        return (Simd<N>::mulAddPairs(load<U8<N>>(rows + k), pairsOf<N>(1, 1)) + ... + bias) >> sizeof...(rows);
    };
    store(dst + i, Simd<N>::inOrder(Simd<N>::packUnsigned(means(2 * i), means(2 * i + N))));
}
template <int kEven, int kOdd, class... Rows> QEL_INLINE void boxes(uint8_t* dst, int dstWidth, const Rows*... rows)
{
    // Registers begin at even destination samples, as their rounding terms do.
    inOverlappingSteps(0, dstWidth & ~1, 0, [=](auto step, ptrdiff_t i) { box<kEven, kOdd>(step, dst, i, rows...); });
    if (dstWidth % 2 != 0) box<kEven, kOdd>(Bytes<1>(), dst, dstWidth - 1, rows...);
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

// The lanes of two registers in turns.
template <class Stores, int N, class V> QEL_INLINE void storePairs(uint8_t* dst, V a, V b)
{
    uint8_t room[2 * N];
    Simd<N>::store2(room, a, b);
    Stores::store(dst, load<V>(room)), Stores::store(dst + N, load<V>(room + N));
}

// Triangle filters. Each source sample i gives two destination samples: left() mixes it with the sample before it,
// right() with the one behind it.
struct Linear {
    const uint8_t* row;

    QEL_INLINE int at(ptrdiff_t i) const { return row[i]; }
    static QEL_INLINE uint8_t left(int here, int before) { return uint8_t((3 * here + before + 1) >> 2); }
    static QEL_INLINE uint8_t right(int here, int behind) { return uint8_t((3 * here + behind + 2) >> 2); }

    // (a + b) / 2, rounded down.
    template <int N> static QEL_INLINE U8<N> averageDown(U8<N> a, U8<N> b) { return ~Simd<N>::average(~a, ~b); }

    // With the means taken one after the other, rounded down and up in turn, nothing is lost: the results are exact.
    template <class Stores, int N> QEL_INLINE void up(Bytes<N>, ptrdiff_t i, uint8_t* dst) const
    {
        auto before = load<U8<N>>(row + i - 1), here = load<U8<N>>(row + i), behind = load<U8<N>>(row + i + 1);
        auto left = averageDown<N>(here, Simd<N>::average(here, before)),
             right = Simd<N>::average(here, averageDown<N>(here, behind));
        storePairs<Stores, N>(dst, left, right);
    }
};

struct Bilinear {
    const uint8_t *near, *far;

    QEL_INLINE int at(ptrdiff_t i) const { return 3 * near[i] + far[i]; }
    static QEL_INLINE uint8_t left(int here, int before) { return uint8_t((3 * here + before + 8) >> 4); }
    static QEL_INLINE uint8_t right(int here, int behind) { return uint8_t((3 * here + behind + 7) >> 4); }

    // Neighbours are multiplied as they lie in memory: the pairs of a load at i + k are samples (i + k, i + k + 1),
    // (i + k + 2, i + k + 3) and so on, so loads at i - 1, i and i + 1 hold every pair without a shuffle.
    template <int N> struct Loads {
        U8<N> before, here, behind;

        explicit QEL_INLINE Loads(const uint8_t* p)
            : before(load<U8<N>>(p - 1)), here(load<U8<N>>(p)), behind(load<U8<N>>(p + 1))
        {}
    };
    // Both destination samples of every other source sample as the bytes of a lane, from its pairs with the sample
    // before it and with the one behind it. The right one is rounded as its negative, ties up.
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
              odd(upEveryOther<N>(near.here, far.here, near.behind, far.behind))
        {}
        template <class Stores> QEL_INLINE void store(uint8_t* dst) const { storePairs<Stores, N>(dst, even, odd); }
    };
    template <class Stores, int N> QEL_INLINE void up(Bytes<N>, ptrdiff_t i, uint8_t* dst) const
    {
        Doubled<N>(Loads<N>(near + i), Loads<N>(far + i)).template store<Stores>(dst);
    }
};

template <class Stores, class Rows> QEL_INLINE void upSample(Bytes<1>, Rows rows, ptrdiff_t i, uint8_t* dst)
{
    dst[0] = rows.left(rows.at(i), rows.at(i - 1));
    dst[1] = rows.right(rows.at(i), rows.at(i + 1));
}
template <class Stores, int N, class Rows> QEL_INLINE void upSample(Bytes<N> step, Rows rows, ptrdiff_t i, uint8_t* dst)
{
    rows.template up<Stores>(step, i, dst);
}

// Where a destination register, of two samples for each step, is aligned; stores are most of the traffic.
QEL_INLINE ptrdiff_t phaseOf(const uint8_t* dst) { return ptrdiff_t((uintptr_t)dst / 2); }

template <class Rows> QEL_INLINE void upLast(Rows rows, uint8_t* dst, int dstWidth)
{
    ptrdiff_t pairs = dstWidth / 2;
    if (dstWidth % 2 != 0) dst[2 * pairs] = rows.left(rows.at(pairs), rows.at(pairs - 1));
}

// Reads one sample before the rows and one behind them.
template <bool kPast, class Rows> QEL_INLINE void upPlaneRow(Rows rows, uint8_t* dst, int dstWidth)
{
    int pairs = dstWidth / 2;
    auto plain = [=](auto step, ptrdiff_t i, uint8_t* out) { upSample<IntoCaches>(step, rows, i, out); };
    if constexpr (kPast)
        inLines<2>(pairs, dst, plain,
                   [=](auto step, ptrdiff_t i) { upSample<PastCaches>(step, rows, i, dst + 2 * i); });
    else
        inOverlappingSteps(0, pairs, phaseOf(dst), [=](auto step, ptrdiff_t i) { plain(step, i, dst + 2 * i); });
    upLast(rows, dst, dstWidth);
}

// Samples i and on of both destination rows between two source rows: all is loaded once, before anything is stored.
QEL_INLINE void upBetween(Bytes<1> step, const uint8_t* upper, const uint8_t* lower, ptrdiff_t i, uint8_t* dst1,
                          uint8_t* dst2)
{
    upSample<IntoCaches>(step, Bilinear{upper, lower}, i, dst1);
    upSample<IntoCaches>(step, Bilinear{lower, upper}, i, dst2);
}
template <int N> QEL_INLINE void upBetween(Bytes<N>, const uint8_t* upper, const uint8_t* lower, ptrdiff_t i,
                                           uint8_t* dst1, uint8_t* dst2)
{
    Bilinear::Loads<N> above(upper + i), below(lower + i);
    Bilinear::Doubled<N> first(above, below), second(below, above);
    first.template store<IntoCaches>(dst1);
    second.template store<IntoCaches>(dst2);
}

// Reads nothing outside the rows: the first and last samples stand for their missing neighbours.
template <class Rows> QEL_INLINE void upRow(Rows rows, int srcWidth, uint8_t* dst)
{
    ptrdiff_t last = srcWidth - 1;
    dst[0] = rows.left(rows.at(0), rows.at(0));
    if (srcWidth > 1) {
        dst[1] = rows.right(rows.at(0), rows.at(1));
        inOverlappingSteps(1, last, phaseOf(dst),
                           [=](auto step, ptrdiff_t i) { upSample<IntoCaches>(step, rows, i, dst + 2 * i); });
        dst[2 * last] = rows.left(rows.at(last), rows.at(last - 1));
    }
    dst[2 * last + 1] = rows.right(rows.at(last), rows.at(last));
}

template <bool kPast> void upH2V1(const uint8_t* src, uint8_t* dst, int dstWidth)
{
    upPlaneRow<kPast>(Linear{src}, dst, dstWidth);
}
template <bool kPast> void upH2V2(const uint8_t* near, const uint8_t* far, uint8_t* dst, int dstWidth)
{
    upPlaneRow<kPast>(Bilinear{near, far}, dst, dstWidth);
}
void upBothH2V2(const uint8_t* upper, const uint8_t* lower, uint8_t* dst1, uint8_t* dst2, int dstWidth)
{
    inOverlappingSteps(0, dstWidth / 2, phaseOf(dst1),
                       [=](auto step, ptrdiff_t i) { upBetween(step, upper, lower, i, dst1 + 2 * i, dst2 + 2 * i); });
    upLast(Bilinear{upper, lower}, dst1, dstWidth);
    upLast(Bilinear{lower, upper}, dst2, dstWidth);
}
void upRowH2V1(const uint8_t* src, int srcWidth, uint8_t* dst) { upRow(Linear{src}, srcWidth, dst); }
void upRowH2V2(const uint8_t* near, const uint8_t* far, int srcWidth, uint8_t* dst)
{
    upRow(Bilinear{near, far}, srcWidth, dst);
}

}
}

const SamplingKernels SamplingKernels::QEL_BUILD = {
    .downH2V1 = qel::QEL_BUILD::downH2V1,
    .downH2V2 = qel::QEL_BUILD::downH2V2,
    .upH2V1 = qel::QEL_BUILD::upH2V1<false>,
    .upH2V2 = qel::QEL_BUILD::upH2V2<false>,
    .upBothH2V2 = qel::QEL_BUILD::upBothH2V2,
    .upH2V1Past = qel::QEL_BUILD::upH2V1<true>,
    .upH2V2Past = qel::QEL_BUILD::upH2V2<true>,
    .downRowH2V1 = qel::QEL_BUILD::downRowH2V1,
    .downRowH2V2 = qel::QEL_BUILD::downRowH2V2,
    .upRowH2V1 = qel::QEL_BUILD::upRowH2V1,
    .upRowH2V2 = qel::QEL_BUILD::upRowH2V2,
};

}
