// SPDX-License-Identifier: Apache-2.0
// Lines of a tile: columns, side by side in strips, and single rows.
#pragma once

#include <string.h>

#include "jpeg2k/transform/wavelet.h"

namespace qel {
namespace {

enum class Direction { forward, inverse };

// Rows that hold the samples of vertical lines: even and odd ones each in a place of their own.
template <class T> struct Rows {
    T* start[2];
    ptrdiff_t step[2];
    ptrdiff_t apart; // least distance of rows in the same place

    T* at(ptrdiff_t i) const { return (T*)(uintptr_t(start[i & 1]) + uintptr_t((i >> 1) * step[i & 1])); }
    operator Rows<const T>() const { return {{start[0], start[1]}, {step[0], step[1]}, apart}; }
};
template <class T> Rows<T> interleaved(T* data, ptrdiff_t step)
{
    return {{data, (T*)(uintptr_t(data) + uintptr_t(step))}, {2 * step, 2 * step}, step};
}
template <class T> Rows<T> inHalves(T* low, ptrdiff_t lowStep, T* high, ptrdiff_t highStep, int phase)
{
    ptrdiff_t apart = lowStep < highStep ? lowStep : highStep;
    if (phase == 0) return {{low, high}, {lowStep, highStep}, apart};
    return {{high, low}, {highStep, lowStep}, apart};
}

// Where sample r of the halves, the low one first, lies among the interleaved samples; and the other way round.
inline ptrdiff_t turnOf(Line line, ptrdiff_t r)
{
    return r < line.lows() ? 2 * r + line.phase : 2 * (r - line.lows()) + 1 - line.phase;
}
inline ptrdiff_t halfOf(Line line, ptrdiff_t i) { return i / 2 + (((i + line.phase) & 1) == 0 ? 0 : line.lows()); }

// Columns that go through the lifting together: all that is touched between two rows stays in the first-level cache.
constexpr int kStrip = 512;

template <class T> void liftStrip(const LiftingKernels<T>& kernels, Direction direction, Line line, Rows<const T> src,
                                  Rows<T> dst, int column, int width)
{
    const bool forward = direction == Direction::forward;
    const auto lift = forward ? kernels.forwardPairs : kernels.inversePairs;
    const Pairs pairs = forward ? forwardPairs(line, kernels.lag) : inversePairs(line, kernels.lag);
    const int reach = 2 + 2 * kernels.lag;
    T kept[4 * kStrip] = {}, unused[kStrip];

    // In place, these rows have changed by the time they stand for what lies beyond the end.
    T beyond[4 * kStrip];
    if (line.mirrored)
        for (int i = 0; i < reach; ++i)
            memcpy(beyond + i * width, src.at(line.inside(line.length + i)) + column, size_t(width) * sizeof(T));

    // Forward takes (odd, even) and gives (even, odd), inverse the other way round.
    auto from = [&](ptrdiff_t position) -> const T* {
        ptrdiff_t i = position - line.phase;
        if (line.mirrored && i >= line.length) return beyond + (i - line.length) * width;
        return src.at(line.inside(i)) + column;
    };
    auto to = [&](ptrdiff_t position) {
        ptrdiff_t i = position - line.phase;
        return i >= 0 && i < line.length ? dst.at(i) + column : unused;
    };
    for (ptrdiff_t k = pairs.first; k <= pairs.last; k += kMostPairs) {
        const T* in[2 * kMostPairs];
        T* out[2 * kMostPairs];
        int count = pairs.last - k < kMostPairs ? int(pairs.last - k) + 1 : kMostPairs;
        for (int i = 0; i < count; ++i) {
            ptrdiff_t taken = 2 * (k + i) + forward, given = 2 * (k + i - kernels.lag) - !forward;
            in[2 * i + 1] = from(taken + 1);
            in[2 * i] = k + i == pairs.first ? in[2 * i + 1] : from(taken);
            out[2 * i] = to(given);
            out[2 * i + 1] = to(given + 1);
        }
        lift(in, out, count, kept, width);
    }
}

// Strips go from right to left, and none is wider than rows lie apart: so rows that overlap come out as if they were
// written from top to bottom.
template <class T> void liftColumns(const LiftingKernels<T>& kernels, Direction direction, Line line, Rows<const T> src,
                                    Rows<T> dst, int width)
{
    ptrdiff_t apart = dst.apart / ptrdiff_t(sizeof(T));
    const int strip = apart < 1 ? 1 : apart < kStrip ? int(apart) : kStrip;
    for (int column = (width - 1) / strip * strip; column >= 0; column -= strip)
        liftStrip(kernels, direction, line, src, dst, column, width - column < strip ? width - column : strip);
}

template <class T> T loadOne(const T* p)
{
    T v;
    memcpy(&v, p, sizeof v);
    return v;
}
template <class T> void storeOne(T* p, T v) { memcpy(p, &v, sizeof v); }

// A single sample is kept if it is low, and doubled if it is high.
template <class T> void liftOne(Direction direction, int phase, const T* src, T* dst, int width)
{
    for (int i = 0; i < width; ++i) {
        T v = loadOne(src + i);
        storeOne(dst + i, phase == 0 ? v : direction == Direction::forward ? T(2u * uint32_t(v)) : T(v >> 1));
    }
}

// Two samples, 5/3: the formulas with both neighbours the same, free of the overflow of their sum.
template <class T> void liftTwo(Direction direction, int phase, Rows<const T> src, Rows<T> dst, int width)
{
    auto half = [](T high) { return uint32_t((high >> 1) + (high & 1)); };
    // From right to left and from the upper row to the lower one, like the strips.
    for (int i = width - 1; i >= 0; --i) {
        T even = loadOne(src.at(phase) + i), odd = loadOne(src.at(1 - phase) + i);
        if (direction == Direction::forward) {
            odd = T(uint32_t(odd) - uint32_t(even));
            even = T(uint32_t(even) + half(odd));
        } else {
            even = T(uint32_t(even) - half(odd));
            odd = T(uint32_t(odd) + uint32_t(even));
        }
        storeOne(dst.at(0) + i, phase == 0 ? even : odd);
        storeOne(dst.at(1) + i, phase == 0 ? odd : even);
    }
}

// The columns of a tile, from interleaved rows to interleaved rows; source and destination may be the same.
template <class T> void liftTileColumns(const LiftingKernels<T>& kernels, Direction direction, Line line,
                                        Rows<const T> src, Rows<T> dst, int width)
{
    if (line.length == 1) return liftOne(direction, line.phase, src.at(0), dst.at(0), width);
    if (line.length == 2 && kernels.lag == 0) return liftTwo(direction, line.phase, src, dst, width);
    liftColumns(kernels, direction, line, src, dst, width);
}

// A row of a tile, from interleaved samples to halves that lie elsewhere, and back.
template <class T> void forwardTileRow(const LiftingKernels<T>& kernels, Line line, const T* src, T* low, T* high)
{
    if (line.length == 1) return liftOne(Direction::forward, line.phase, src, line.phase == 0 ? low : high, 1);
    if (line.length == 2 && kernels.lag == 0)
        return liftTwo(Direction::forward, line.phase, interleaved(src, sizeof(T)),
                       inHalves(low, sizeof(T), high, sizeof(T), line.phase), 1);
    kernels.forwardRow(src, line, low, high);
}
template <class T> void inverseTileRow(const LiftingKernels<T>& kernels, Line line, const T* low, const T* high, T* dst)
{
    if (line.length == 1) return liftOne(Direction::inverse, line.phase, line.phase == 0 ? low : high, dst, 1);
    if (line.length == 2 && kernels.lag == 0)
        return liftTwo(Direction::inverse, line.phase, inHalves(low, sizeof(T), high, sizeof(T), line.phase),
                       interleaved(dst, sizeof(T)), 1);
    kernels.inverseRow(low, high, line, dst);
}

}
}
