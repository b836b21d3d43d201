// SPDX-License-Identifier: Apache-2.0
// Three or four channels of a row, in planes or interleaved. A format has get(lanes, i) and put(lanes, i, channels) of
// the samples from i on, as many as the lanes are, and atAddresses(i, visit), which calls visit(p) for each address p
// where a part of sample i begins. The Row of interleaved ones is a pointer, or whatever else the lanes load from and
// store to.
#pragma once

#include "core/lanes.h"

namespace qel::QEL_BUILD {
namespace {

template <class T> struct Planes3 {
    T *first, *second, *third;

    template <class Visit> QEL_INLINE void atAddresses(ptrdiff_t i, Visit visit) const
    {
        visit(first + i);
        visit(second + i);
        visit(third + i);
    }
    QEL_INLINE auto get(auto lanes, ptrdiff_t i) const
    {
        return Triple{lanes.load(first + i), lanes.load(second + i), lanes.load(third + i)};
    }
    QEL_INLINE void put(auto lanes, ptrdiff_t i, auto v) const
    {
        lanes.store(first + i, v.a);
        lanes.store(second + i, v.b);
        lanes.store(third + i, v.c);
    }
};

template <class Row> struct Pixels3 {
    static constexpr int kElements = 3;
    Row row;

    template <class Visit> QEL_INLINE void atAddresses(ptrdiff_t i, Visit visit) const { visit(row + 3 * i); }
    QEL_INLINE auto get(auto lanes, ptrdiff_t i) const { return lanes.load3(row + 3 * i); }
    QEL_INLINE void put(auto lanes, ptrdiff_t i, auto v) const { lanes.store3(row + 3 * i, v); }
};

template <class T> struct Planes4 {
    T *first, *second, *third, *fourth;

    template <class Visit> QEL_INLINE void atAddresses(ptrdiff_t i, Visit visit) const
    {
        visit(first + i);
        visit(second + i);
        visit(third + i);
        visit(fourth + i);
    }
    QEL_INLINE auto get(auto lanes, ptrdiff_t i) const
    {
        return Quad{lanes.load(first + i), lanes.load(second + i), lanes.load(third + i), lanes.load(fourth + i)};
    }
    QEL_INLINE void put(auto lanes, ptrdiff_t i, auto v) const
    {
        lanes.store(first + i, v.a);
        lanes.store(second + i, v.b);
        lanes.store(third + i, v.c);
        lanes.store(fourth + i, v.d);
    }
};

template <class Row> struct Pixels4 {
    static constexpr int kElements = 4;
    Row row;

    template <class Visit> QEL_INLINE void atAddresses(ptrdiff_t i, Visit visit) const { visit(row + 4 * i); }
    QEL_INLINE auto get(auto lanes, ptrdiff_t i) const { return lanes.load4(row + 4 * i); }
    QEL_INLINE void put(auto lanes, ptrdiff_t i, auto v) const { lanes.store4(row + 4 * i, v); }
};

}
}
