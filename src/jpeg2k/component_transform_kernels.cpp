// Kernels of the component transforms.
#include "jpeg2k/component_transform.h"

#include "core/simd.h"

namespace qel {
namespace QEL_BUILD {
namespace {

// Three components of one pixel, or of as many as a register has lanes.
template <class V> struct Triple {
    V a, b, c;
};

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

template <class T> struct Planes {
    T *a, *b, *c;

    template <class V> QEL_INLINE Triple<V> get(ptrdiff_t i) const
    {
        return {load<V>(a + i), load<V>(b + i), load<V>(c + i)};
    }
    template <class V> QEL_INLINE void put(ptrdiff_t i, Triple<V> v) const
    {
        store(a + i, v.a), store(b + i, v.b), store(c + i, v.c);
    }
};
template <class T> struct Pixels {
    T* row;

    template <class V> QEL_INLINE Triple<V> get(ptrdiff_t i) const
    {
        const T* p = row + 3 * i;
        if constexpr (sizeof(V) == sizeof(T)) {
            return {load<V>(p), load<V>(p + 1), load<V>(p + 2)};
        } else {
            Triple<V> v;
            Simd<sizeof(V)>::load3((const uint8_t*)p, v.a, v.b, v.c);
            return v;
        }
    }
    template <class V> QEL_INLINE void put(ptrdiff_t i, Triple<V> v) const
    {
        T* p = row + 3 * i;
        if constexpr (sizeof(V) == sizeof(T))
            store(p, v.a), store(p + 1, v.b), store(p + 2, v.c);
        else
            Simd<sizeof(V)>::store3((uint8_t*)p, v.a, v.b, v.c);
    }
};

template <class T, class From, class To, class Formula>
QEL_INLINE void transform(From from, To to, int width, Formula formula)
{
    inRegisters<T>(width, [=](auto bytes, ptrdiff_t i) QEL_INLINE_BODY {
        using V = typename LanesOf<T, decltype(bytes)::value>::Type;
        Triple<V> v = from.template get<V>(i);
        to.put(i, formula(v.a, v.b, v.c));
    });
}
template <class F, class T, class From, class To> QEL_INLINE void forward(From from, To to, int width)
{
    transform<T>(from, to, width, [](auto... v) QEL_INLINE_BODY { return F::forward(v...); });
}
template <class F, class T, class From, class To> QEL_INLINE void inverse(From from, To to, int width)
{
    transform<T>(from, to, width, [](auto... v) QEL_INLINE_BODY { return F::inverse(v...); });
}

template <class F, class T = typename F::Sample> constexpr ComponentTransform<T> kTransform = {
    [](T* a, T* b, T* c, int width) {
        forward<F, T>(Planes<T>{a, b, c}, Planes<T>{a, b, c}, width);
    },
    [](T* a, T* b, T* c, int width) {
        inverse<F, T>(Planes<T>{a, b, c}, Planes<T>{a, b, c}, width);
    },
    [](const T* src, T* a, T* b, T* c, int width) {
        forward<F, T>(Pixels<const T>{src}, Planes<T>{a, b, c}, width);
    },
    [](const T* a, const T* b, const T* c, T* dst, int width) {
        inverse<F, T>(Planes<const T>{a, b, c}, Pixels<T>{dst}, width);
    },
};

}
}

const ComponentTransformKernels ComponentTransformKernels::QEL_BUILD = {
    qel::QEL_BUILD::kTransform<qel::QEL_BUILD::Reversible>, qel::QEL_BUILD::kTransform<qel::QEL_BUILD::Irreversible>};

}
