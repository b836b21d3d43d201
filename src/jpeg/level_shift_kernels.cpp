// Kernels of the level shift.
#include "jpeg/level_shift.h"

#include "core/simd.h"

namespace qel {
namespace QEL_BUILD {
namespace {

// `Stores` tells how whole registers are stored.
template <class Stores> QEL_INLINE void sub(Bytes<1>, const uint8_t* src, int16_t* dst)
{
    store(dst, int16_t(*src - 128));
}
template <class Stores> QEL_INLINE void add(Bytes<1>, const int16_t* src, uint8_t* dst)
{
    *dst = clampTo<uint8_t>(load<int16_t>(src) + 128, 0, 255);
}

template <class Stores, int N> QEL_INLINE void sub(Bytes<N>, const uint8_t* src, int16_t* dst)
{
    Stores::store(dst, Simd<N>::widen(src) - 128);
    Stores::store(dst + N / 2, Simd<N>::widen(src + N / 2) - 128);
}
template <class Stores, int N> QEL_INLINE void add(Bytes<N>, const int16_t* src, uint8_t* dst)
{
    S16<N> shift = S16<N>{} + 128;
    auto low = Simd<N>::addSat(load<S16<N>>(src), shift), high = Simd<N>::addSat(load<S16<N>>(src + N / 2), shift);
    Stores::store(dst, Simd<N>::inOrder(Simd<N>::packUnsigned(low, high)));
}

void sub128(const uint8_t* src, int16_t* dst, int len)
{
    inSteps(len, [=](auto width, int i) { sub<IntoCaches>(width, src + i, dst + i); });
}
void add128(const int16_t* src, uint8_t* dst, int len)
{
    inSteps(len, [=](auto width, int i) { add<IntoCaches>(width, src + i, dst + i); });
}

void sub128Past(const uint8_t* src, int16_t* dst, int len)
{
    inLines<2>(
        len, (uint8_t*)dst,
        [=](auto width, ptrdiff_t i, uint8_t* out) { sub<IntoCaches>(width, src + i, (int16_t*)out); },
        [=](auto width, ptrdiff_t i) { sub<PastCaches>(width, src + i, dst + i); });
}
void add128Past(const int16_t* src, uint8_t* dst, int len)
{
    inLines<1>(
        len, dst, [=](auto width, ptrdiff_t i, uint8_t* out) { add<IntoCaches>(width, src + i, out); },
        [=](auto width, ptrdiff_t i) { add<PastCaches>(width, src + i, dst + i); });
}

void sub128Block(const uint8_t* src, int srcStep, int16_t* dst)
{
    for (int r = 0; r < 8; ++r, src += srcStep, dst += 8) store(dst, Simd<16>::widen(src) - 128);
}
void add128Block(const int16_t* src, uint8_t* dst, int dstStep)
{
    for (int r = 0; r < 8; ++r, src += 8, dst += dstStep) {
        auto row = Simd<16>::addSat(load<S16<16>>(src), S16<16>{} + 128);
        store(dst, ((U64<16>)Simd<16>::packUnsigned(row, row))[0]);
    }
}

}
}

const LevelShiftKernels LevelShiftKernels::QEL_BUILD = {qel::QEL_BUILD::sub128,      qel::QEL_BUILD::add128,
                                                        qel::QEL_BUILD::sub128Past,  qel::QEL_BUILD::add128Past,
                                                        qel::QEL_BUILD::sub128Block, qel::QEL_BUILD::add128Block};

}
