// SPDX-License-Identifier: Apache-2.0
// The register operations of a build that compute: what its kernels use, beside the definition. Those that only move
// bytes, or load and store them, are wrong for all data if at all, and so for the kernels' tests.
#include "simd/operations.h"

#include "core/simd.h"

namespace qel {
namespace QEL_BUILD {
namespace {

// Operations on two registers: each with its name here, the name in S and the type of the registers.
// clang-format off
#define QEL_ON_TWO_REGISTERS(X, N)                                                                                    \
    X(N, addSat16, addSat, S16) X(N, subSat16, subSat, S16) X(N, addSat8, addSat, U8) X(N, subSat8, subSat, U8)       \
    X(N, average, average, U8) X(N, average16, average, U16) X(N, least8, least, U8) X(N, least16, least, S16)        \
    X(N, greatest8, greatest, U8) X(N, greatest16, greatest, S16) X(N, mulHighSigned, mulHigh, S16)                   \
    X(N, mulHighUnsigned, mulHigh, U16) X(N, mulRoundEven, mulRoundEven, S16) X(N, mulAddPairs, mulAddPairs, S16)     \
    X(N, pack, pack, S32) X(N, packUnsigned, packUnsigned, S16) X(N, packSigned, packSigned, S16)
// clang-format on

// S is Simd<N> or PortableSimd<N>; every operation reads its registers from `in` and writes its result to `out`.
template <class S, int N> struct Run {
    template <class V> static V at(const uint8_t* in, int i) { return load<V>(in + i * N); }

#define QEL_FUNCTION(WIDTH, NAME, OPERATION, V)                                                                        \
    static void NAME(const uint8_t* in, uint8_t* out) { store(out, S::OPERATION(at<V<N>>(in, 0), at<V<N>>(in, 1))); }
    QEL_ON_TWO_REGISTERS(QEL_FUNCTION, N)
#undef QEL_FUNCTION

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
    // One bit anywhere, or none: where depends on the random input.
    static void isZero(const uint8_t* in, uint8_t* out)
    {
        uint8_t bit[N] = {};
        if (in[0] % 8) bit[in[1] % N] = uint8_t(1 << in[2] % 8);
        out[0] = S::isZero(load<U8<N>>(bit));
    }
    static void mulAddBytePairs(const uint8_t* in, uint8_t* out)
    {
        store(out, S::mulAddPairs(at<U8<N>>(in, 0), at<S8<N>>(in, 1)));
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
};

// By masks: those of which a wrong lane, or a shift of all bits, hardly shows in what kernels make of them.
template <class S, int N> struct RunMasked {
    // Lanes of few values, so that some are zero or equal to others.
    static U8<N> few(const uint8_t* in) { return load<U8<N>>(in) & load<U8<N>>(in + N) & load<U8<N>>(in + 2 * N) & 3; }

    static void compared(const uint8_t* in, uint8_t* out)
    {
        store(out, S::nonZero(few(in))), store(out + 8, S::equal(few(in), few(in + N)));
    }
    static void shiftLeft(const uint8_t* in, uint8_t* out)
    {
        store(out, S::shiftLeft(load<U64<N>>(in + 16), load<U64<N>>(in) & 127));
        store(out + N, S::shiftLeft(load<U64<N>>(in + 16), load<U64<N>>(in)));
    }
    static void sumOfBytes(const uint8_t* in, uint8_t* out) { store(out, S::sumOfBytes(load<U8<N>>(in))); }
};

#define QEL_OPERATION(N, NAME, IN, OUT)                                                                                \
    {                                                                                                                  \
#NAME, IN* N, OUT, Run < Simd < N>, N> ::NAME, Run < PortableSimd < N>, N> ::NAME                              \
    }
#define QEL_ROW(N, NAME, OPERATION, V) QEL_OPERATION(N, NAME, 2, N),
#define QEL_OPERATIONS(N)                                                                                              \
    QEL_ON_TWO_REGISTERS(QEL_ROW, N)                                                                                   \
    QEL_OPERATION(N, mulAddBytePairs, 2, N), QEL_OPERATION(N, mulTies, 2, N), QEL_OPERATION(N, mulSmall, 2, N),        \
        QEL_OPERATION(N, divideRounded, 1, 2 * N), QEL_OPERATION(N, runningSum, 1, 2 * N),                             \
        QEL_OPERATION(N, isZero, 1, 1), QEL_OPERATION(N, truncate, 1, N)

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
    QEL_OPERATIONS(64), QEL_MASKED(compared, 256, 16), QEL_MASKED(shiftLeft, 80, 128), QEL_MASKED(sumOfBytes, 64, 64),
#endif
};

}
}

const SimdOperations SimdOperations::QEL_BUILD = {qel::QEL_BUILD::kOperations,
                                                  sizeof qel::QEL_BUILD::kOperations / sizeof(SimdOperation)};

}
