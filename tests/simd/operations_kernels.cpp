// SPDX-License-Identifier: Apache-2.0
// The register operations of a build: what its kernels use, beside the definition.
#include "simd/operations.h"

#include "core/simd.h"

namespace qel {
namespace QEL_BUILD {
namespace {

// Indices that take bytes from everywhere to everywhere.
struct Mixed {
    uint8_t index[64];
};
constexpr Mixed makeMixed()
{
    Mixed mixed = {};
    for (int i = 0; i < 64; ++i) mixed.index[i] = uint8_t((i * 37 + i / 7 * 5 + 11) % 64);
    return mixed;
}
constexpr Mixed kMixed = makeMixed();

// Operations on two registers: each with its name here, the name in S and the type of the registers.
// clang-format off
#define QEL_ON_TWO_REGISTERS(X, N)                                                                                    \
    X(N, addSat16, addSat, S16) X(N, subSat16, subSat, S16) X(N, addSat8, addSat, U8) X(N, subSat8, subSat, U8)       \
    X(N, average, average, U8) X(N, average16, average, U16) X(N, least8, least, U8) X(N, least16, least, S16)        \
    X(N, greatest8, greatest, U8) X(N, greatest16, greatest, S16) X(N, mulHighSigned, mulHigh, S16)                   \
    X(N, mulHighUnsigned, mulHigh, U16) X(N, mulRoundEven, mulRoundEven, S16) X(N, mulAddPairs, mulAddPairs, S16)     \
    X(N, pack, pack, S32) X(N, packUnsigned, packUnsigned, S16) X(N, packSigned, packSigned, S16)                     \
    X(N, zipLow8, zipLow, U8) X(N, zipHigh8, zipHigh, U8) X(N, zipLow16, zipLow, S16) X(N, zipHigh16, zipHigh, S16)   \
    X(N, zipLow32, zipLow, S32) X(N, zipHigh32, zipHigh, S32) X(N, zipLow64, zipLow, U64)                             \
    X(N, zipHigh64, zipHigh, U64) X(N, shiftIn16, shiftIn, S16) X(N, shiftIn32, shiftIn, F32)                         \
    X(N, moveUp, moveUp, S16)
// clang-format on

// S is Simd<N> or PortableSimd<N>; every operation reads its registers from `in` and writes its result to `out`.
template <class S, int N> struct Run {
    template <class V> static V at(const uint8_t* in, int i) { return load<V>(in + i * N); }

#define QEL_FUNCTION(WIDTH, NAME, OPERATION, V)                                                                        \
    static void NAME(const uint8_t* in, uint8_t* out) { store(out, S::OPERATION(at<V<N>>(in, 0), at<V<N>>(in, 1))); }
    QEL_ON_TWO_REGISTERS(QEL_FUNCTION, N)
#undef QEL_FUNCTION

    static void inOrder(const uint8_t* in, uint8_t* out) { store(out, S::inOrder(at<U8<N>>(in, 0))); }
    static void widen(const uint8_t* in, uint8_t* out) { store(out, S::widen(in)); }
    // Small products of both signs have last bits that are nearly all zeros or ones.
    static void mulSmall(const uint8_t* in, uint8_t* out)
    {
        store(out, S::mulRoundEven(at<S16<N>>(in, 0) >> 13, at<S16<N>>(in, 1) >> 13));
    }
    // Multiples of 2^7 have products that are often half way.
    static void mulTies(const uint8_t* in, uint8_t* out)
    {
        store(out, S::mulRoundEven(at<S16<N>>(in, 0) & ~0x7F, at<S16<N>>(in, 1) & ~0x7F));
    }
    static void divideRounded(const uint8_t* in, uint8_t* out)
    {
        auto v = at<S16<N>>(in, 0) >> 1;
        store(out, S::template divideRounded<16>(v)), store(out + N, S::template divideRounded<-16>(v));
    }
    static void runningSum(const uint8_t* in, uint8_t* out)
    {
        S16<N> total = {};
        store(out, S::runningSum(at<S16<N>>(in, 0), total)), store(out + N, total);
    }
    static void join(const uint8_t* in, uint8_t* out)
    {
        if constexpr (N > 16) store(out, S::join(load<S16<N / 2>>(in), load<S16<N / 2>>(in + N / 2)));
    }
    static void halves(const uint8_t* in, uint8_t* out)
    {
        if constexpr (N > 16)
            store(out, S::upperHalf(load<S16<N>>(in))), store(out + N / 2, S::lowerHalf(load<S16<N>>(in)));
    }
    // One bit anywhere, or none: where depends on the random input.
    static void isZero(const uint8_t* in, uint8_t* out)
    {
        uint8_t bit[N] = {};
        if (in[0] % 8) bit[in[1] % N] = uint8_t(1 << in[2] % 8);
        out[0] = S::isZero(load<U8<N>>(bit));
    }
    static void signMask(const uint8_t* in, uint8_t* out) { store(out, S::signMask(at<U8<N>>(in, 0))); }
    static void permute(const uint8_t* in, uint8_t* out)
    {
        U8<N> v[64 / N];
        __builtin_memcpy(v, in, 64);
        S::template permute<kMixed>(v);
        __builtin_memcpy(out, v, 64);
    }
    static void gatherBits(const uint8_t* in, uint8_t* out)
    {
        store(out, S::gatherBits(load<uint64_t>(in), load<uint64_t>(in + 8)));
    }
    static void mulAddBytePairs(const uint8_t* in, uint8_t* out)
    {
        store(out, S::mulAddPairs(at<U8<N>>(in, 0), at<S8<N>>(in, 1)));
    }
    static void storeHalves(const uint8_t* in, uint8_t* out) { S::storeHalves(out + N / 2, out, at<U8<N>>(in, 0)); }
    static void zip3(const uint8_t* in, uint8_t* out)
    {
        U8<N> a = at<U8<N>>(in, 0), b = at<U8<N>>(in, 1), c = at<U8<N>>(in, 2);
        S::zip3(a, b, c);
        store(out, a), store(out + N, b), store(out + 2 * N, c);
    }
    static void unzip3(const uint8_t* in, uint8_t* out)
    {
        U8<N> a = at<U8<N>>(in, 0), b = at<U8<N>>(in, 1), c = at<U8<N>>(in, 2);
        S::unzip3(a, b, c);
        store(out, a), store(out + N, b), store(out + 2 * N, c);
    }
    // Floats around the ends of int32_t and fractions of both signs, beside random ones.
    static void truncate(const uint8_t* in, uint8_t* out)
    {
        const float some[] = {2147483648.0f, 2147483520.0f, -2147483648.0f, -2147483904.0f, 2.7f, -2.7f, 3e38f, 0.0f};
        auto v = at<F32<N>>(in, 0);
        for (int i = 0; i < N / 4; ++i)
            if (in[i] % 2) v[i] = some[in[i] / 2 % 8];
        store(out, S::truncate(v));
    }
    static void load2(const uint8_t* in, uint8_t* out)
    {
        U8<N> a = {}, b = {};
        S::load2(in, a, b);
        store(out, a), store(out + N, b);
    }
    template <class V> static void unzip2As(const uint8_t* in, uint8_t* out)
    {
        V a = at<V>(in, 0), b = at<V>(in, 1);
        S::unzip2(a, b);
        store(out, a), store(out + N, b);
    }
    static void unzip2Words(const uint8_t* in, uint8_t* out) { unzip2As<S16<N>>(in, out); }
    static void unzip2Floats(const uint8_t* in, uint8_t* out) { unzip2As<F32<N>>(in, out); }
    template <class V> static void load3As(const uint8_t* in, uint8_t* out)
    {
        V a = {}, b = {}, c = {};
        S::load3(in, a, b, c);
        store(out, a), store(out + N, b), store(out + 2 * N, c);
    }
    static void load3(const uint8_t* in, uint8_t* out) { load3As<U8<N>>(in, out); }
    static void load3Floats(const uint8_t* in, uint8_t* out) { load3As<F32<N>>(in, out); }
    static void loadPairs3(const uint8_t* in, uint8_t* out)
    {
        U8<N> pairs[4] = {};
        S::loadPairs3(in, pairs, pairs + 2);
        for (int k = 0; k < 4; ++k) store(out + k * N, pairs[k]);
    }
    static void loadPairs4(const uint8_t* in, uint8_t* out)
    {
        U8<N> pairs[5] = {};
        S::loadPairs4(in, pairs, pairs + 2, pairs[4]);
        for (int k = 0; k < 5; ++k) store(out + k * N, pairs[k]);
    }
    static void load4(const uint8_t* in, uint8_t* out)
    {
        U8<N> a = {}, b = {}, c = {}, d = {};
        S::load4(in, a, b, c, d);
        store(out, a), store(out + N, b), store(out + 2 * N, c), store(out + 3 * N, d);
    }
    static void store2(const uint8_t* in, uint8_t* out) { S::store2(out, at<U8<N>>(in, 0), at<U8<N>>(in, 1)); }
    static void store2Wide(const uint8_t* in, uint8_t* out) { S::store2(out, at<U16<N>>(in, 0), at<U16<N>>(in, 1)); }
    template <class V> static void store3As(const uint8_t* in, uint8_t* out)
    {
        S::store3(out, at<V>(in, 0), at<V>(in, 1), at<V>(in, 2));
    }
    static void store3(const uint8_t* in, uint8_t* out) { store3As<U8<N>>(in, out); }
    static void store3Floats(const uint8_t* in, uint8_t* out) { store3As<F32<N>>(in, out); }
    static void store4(const uint8_t* in, uint8_t* out)
    {
        S::store4(out, at<U8<N>>(in, 0), at<U8<N>>(in, 1), at<U8<N>>(in, 2), at<U8<N>>(in, 3));
    }
    static void stream(const uint8_t* in, uint8_t* out)
    {
        S::stream(out, at<U8<N>>(in, 0));
        S::fence();
    }
};

// By masks: random ones, and few or no lanes now and then.
template <class S, int N> struct RunMasked {
    static uint64_t maskOf(const uint8_t* in) { return load<uint64_t>(in) & (in[8] % 4 ? ~uint64_t(0) : in[9]); }

    template <class V> static V some(const uint8_t* in) { return load<V>(in + 16); }
    // Lanes of few values, so that some are zero or equal to others.
    template <class V> static V few(const uint8_t* in)
    {
        return load<V>(in) & load<V>(in + N) & load<V>(in + 2 * N) & 3;
    }

    static void nonZero(const uint8_t* in, uint8_t* out)
    {
        store(out, S::nonZero(few<U8<N>>(in))), store(out + 8, S::nonZero(few<U64<N>>(in)));
    }
    static void compared(const uint8_t* in, uint8_t* out)
    {
        auto a = few<U8<N>>(in), b = few<U8<N>>(in + N);
        store(out, S::equal(a, b)), store(out + 8, S::greater((S8<N>)(a - 1), (S8<N>)(b - 1)));
        store(out + 16, S::greater(some<U32<N>>(in), some<U32<N>>(in + N)));
        store(out + 24, S::greater(few<U32<N>>(in) - 1, few<U32<N>>(in + N) - 1));
    }
    static void keep(const uint8_t* in, uint8_t* out)
    {
        store(out, S::keep(some<U32<N>>(in), maskOf(in))), store(out + N, S::keep(some<U64<N>>(in), maskOf(in)));
    }
    static void compress(const uint8_t* in, uint8_t* out)
    {
        store(out, S::compress(some<U8<N>>(in), maskOf(in)));
        store(out + N, S::compress(some<U64<N>>(in), maskOf(in), some<U64<N>>(in + N)));
    }
    static void expand(const uint8_t* in, uint8_t* out) { store(out, S::expand(some<U8<N>>(in), maskOf(in))); }
    static void pick(const uint8_t* in, uint8_t* out)
    {
        store(out, S::pick(some<U8<N>>(in), load<U8<N>>(in), maskOf(in)));
        store(out + N, S::pick(some<U8<N>>(in), some<U8<N>>(in + N), load<U8<N>>(in)));
    }
    static void lookUp(const uint8_t* in, uint8_t* out) { store(out, S::lookUp(in, load<U32<N>>(in) & 255)); }
    static void firstBytes(const uint8_t* in, uint8_t* out)
    {
        store(out, S::firstBytes(load<U8<N>>(in))), store(out + N, S::firstBytes(load<S8<N>>(in)));
    }
    static void leadingZeros(const uint8_t* in, uint8_t* out)
    {
        store(out, S::leadingZeros(some<U32<N>>(in) >> (load<U32<N>>(in) & 31)));
        store(out + N, S::leadingZeros(few<U32<N>>(in)));
    }
    static void shiftLeft(const uint8_t* in, uint8_t* out)
    {
        store(out, S::shiftLeft(some<U64<N>>(in), load<U64<N>>(in) & 127));
        store(out + N, S::shiftLeft(some<U64<N>>(in), load<U64<N>>(in)));
    }
    static void sums(const uint8_t* in, uint8_t* out)
    {
        U64<N> total = {};
        store(out, S::sumOfBytes(load<U8<N>>(in))), store(out + N, S::runningSum(load<U64<N>>(in), total));
        store(out + 2 * N, total);
    }
    static void storeSome(const uint8_t* in, uint8_t* out) { S::storeSome(out, some<U8<N>>(in), maskOf(in)); }
};

#define QEL_OPERATION(N, NAME, IN, OUT)                                                                                \
    {                                                                                                                  \
#NAME, IN* N, OUT, Run < Simd < N>, N> ::NAME, Run < PortableSimd < N>, N> ::NAME                              \
    }
#define QEL_ROW(N, NAME, OPERATION, V) QEL_OPERATION(N, NAME, 2, N),
#define QEL_OPERATIONS(N)                                                                                              \
    QEL_ON_TWO_REGISTERS(QEL_ROW, N)                                                                                   \
    QEL_OPERATION(N, inOrder, 1, N), QEL_OPERATION(N, widen, 1, N), QEL_OPERATION(N, signMask, 1, 8),                  \
        QEL_OPERATION(N, load2, 2, 2 * N), QEL_OPERATION(N, load3, 3, 3 * N), QEL_OPERATION(N, loadPairs3, 3, 4 * N),  \
        QEL_OPERATION(N, loadPairs4, 4, 5 * N), QEL_OPERATION(N, load4, 4, 4 * N), QEL_OPERATION(N, store2, 2, 2 * N), \
        QEL_OPERATION(N, store3, 3, 3 * N), QEL_OPERATION(N, store4, 4, 4 * N), QEL_OPERATION(N, stream, 1, N),        \
        QEL_OPERATION(N, mulAddBytePairs, 2, N), QEL_OPERATION(N, store2Wide, 2, 2 * N),                               \
        QEL_OPERATION(N, mulTies, 2, N), QEL_OPERATION(N, mulSmall, 2, N), QEL_OPERATION(N, join, 1, N),               \
        QEL_OPERATION(N, halves, 1, N), QEL_OPERATION(N, isZero, 1, 1), QEL_OPERATION(N, runningSum, 1, 2 * N),        \
        QEL_OPERATION(N, storeHalves, 1, N), QEL_OPERATION(N, zip3, 3, 3 * N), QEL_OPERATION(N, unzip3, 3, 3 * N),     \
        QEL_OPERATION(N, permute, 64 / N, 64), QEL_OPERATION(N, gatherBits, 1, 8), QEL_OPERATION(N, truncate, 1, N),   \
        QEL_OPERATION(N, unzip2Words, 2, 2 * N), QEL_OPERATION(N, unzip2Floats, 2, 2 * N),                             \
        QEL_OPERATION(N, load3Floats, 3, 3 * N), QEL_OPERATION(N, store3Floats, 3, 3 * N),                             \
        QEL_OPERATION(N, divideRounded, 1, 2 * N)

#define QEL_MASKED(NAME, IN, OUT)                                                                                      \
    {                                                                                                                  \
#NAME, IN, OUT, RunMasked < Simd < 64>, 64> ::NAME, RunMasked < PortableSimd < 64>, 64> ::NAME                 \
    }

constexpr SimdOperation kOperations[] = {
    QEL_OPERATIONS(16),
#if QEL_WIDTH >= 32
    QEL_OPERATIONS(32),
#endif
#if QEL_WIDTH >= 64
    QEL_OPERATIONS(64),
    QEL_MASKED(nonZero, 192, 16),
    QEL_MASKED(compared, 256, 32),
    QEL_MASKED(keep, 80, 128),
    QEL_MASKED(compress, 144, 128),
    QEL_MASKED(expand, 80, 64),
    QEL_MASKED(pick, 144, 128),
    QEL_MASKED(lookUp, 1024, 64),
    QEL_MASKED(firstBytes, 64, 128),
    QEL_MASKED(leadingZeros, 192, 128),
    QEL_MASKED(shiftLeft, 80, 128),
    QEL_MASKED(sums, 64, 192),
    QEL_MASKED(storeSome, 80, 64),
#endif
};

}
}

const SimdOperations SimdOperations::QEL_BUILD = {qel::QEL_BUILD::kOperations,
                                                  sizeof qel::QEL_BUILD::kOperations / sizeof(SimdOperation)};

}
