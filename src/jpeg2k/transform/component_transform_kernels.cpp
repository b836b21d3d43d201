// SPDX-License-Identifier: Apache-2.0
// Kernels of the component transforms.
#include "jpeg2k/transform/component_transform.h"

#include "core/channels.h"
#include "core/walk.h"

namespace qel::QEL_BUILD {
namespace {

// T.800 G.2: floors, and sums that wrap.
struct Reversible {
    using Sample = int32_t;

    template <class V> static QEL_INLINE Triple<V> forward(V r, V g, V b)
    {
        return {(r + 2 * g + b) >> 2, b - g, r - g};
    }
    template <class V> static QEL_INLINE Triple<V> inverse(V y0, V y1, V y2)
    {
        V g = y0 - ((y1 + y2) >> 2);
        return {y2 + g, g, y1 + g};
    }
};

// T.800 G.3, each product and sum rounded by itself.
struct Irreversible {
    using Sample = float;

    template <class V> static QEL_INLINE Triple<V> forward(V r, V g, V b)
    {
        return {0.299f * r + 0.587f * g + 0.114f * b, -0.16875f * r + -0.33126f * g + 0.5f * b,
                0.5f * r + -0.41869f * g + -0.08131f * b};
    }
    template <class V> static QEL_INLINE Triple<V> inverse(V y0, V y1, V y2)
    {
        return {1.402f * y2 + y0, -0.34413f * y1 + -0.71414f * y2 + y0, 1.772f * y1 + y0};
    }
};

template <class T, class From, class To, class Formula>
QEL_INLINE void transform(From from, To to, int width, Formula formula)
{
    walk<T>(width, [=](auto lanes, ptrdiff_t i) QEL_INLINE_BODY { to.put(lanes, i, formula(from.get(lanes, i))); });
}
template <class F, class T, class From, class To> QEL_INLINE void forward(From from, To to, int width)
{
    transform<T>(from, to, width, [](auto v) QEL_INLINE_BODY { return F::forward(v.a, v.b, v.c); });
}
template <class F, class T, class From, class To> QEL_INLINE void inverse(From from, To to, int width)
{
    transform<T>(from, to, width, [](auto v) QEL_INLINE_BODY { return F::inverse(v.a, v.b, v.c); });
}

template <class F, class T = typename F::Sample> constexpr ComponentTransform<T> kTransform = {
    .forwardInPlace =
        [](T* a, T* b, T* c, int width) {
            forward<F, T>(Planes3<T>{a, b, c}, Planes3<T>{a, b, c}, width);
        },
    .inverseInPlace =
        [](T* a, T* b, T* c, int width) {
            inverse<F, T>(Planes3<T>{a, b, c}, Planes3<T>{a, b, c}, width);
        },
    .forward = {[](const T* src, T* a, T* b, T* c, int width) {
                    forward<F, T>(Pixels3<const T*>{src}, Planes3<T>{a, b, c}, width);
                },
                nullptr},
    .inverse = {[](const T* a, const T* b, const T* c, T* dst, int width) {
                    inverse<F, T>(Planes3<const T>{a, b, c}, Pixels3<T*>{dst}, width);
                },
                nullptr},
};

constexpr ComponentTransformKernels kKernels = {
    .reversible = kTransform<Reversible>,
    .irreversible = kTransform<Irreversible>,
};

}
}

const qel::ComponentTransformKernels qel::ComponentTransformKernels::QEL_BUILD = qel::QEL_BUILD::kKernels;
