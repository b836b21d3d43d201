// SPDX-License-Identifier: Apache-2.0
// Conversions of pixels from one layout to another, row by row.
#pragma once

#include <array>
#include <tuple>

#include "core/checks.h"
#include "core/streaming.h"

namespace qel {
namespace {

// A source or a destination as a caller gives it: planes that share a step, or interleaved pixels.
template <class T, int kPlanes> struct Planes {
    static constexpr int kPixelBytes = kPlanes * sizeof(T);
    T* const* planes;
    int step;

    QelStatus check() const { return qel::planes<kPlanes>(planes); }
    // Non-temporal stores to planes that lie at the same place in pages of 4 KB hinder each other, and take twice as
    // long as stores into the caches.
    bool canStream() const
    {
        for (int i = 1; i < kPlanes; ++i)
            for (int j = 0; j < i; ++j)
                if ((uintptr_t(planes[i]) - uintptr_t(planes[j])) % 4096 == 0) return false;
        return true;
    }
    auto row(int r) const
    {
        std::array<T*, kPlanes> rows;
        for (int i = 0; i < kPlanes; ++i) rows[i] = rowAt(planes[i], step, r);
        return rows;
    }
};
template <class T, int kChannels> struct Pixels {
    static constexpr int kPixelBytes = kChannels * sizeof(T);
    T* pixels;
    int step;

    QelStatus check() const { return pointers(pixels); }
    bool canStream() const { return true; }
    auto row(int r) const { return std::array{rowAt(pixels, step, r)}; }
};

// The kernel takes the rows of the source, those of the destination and their width in pixels.
template <Threads kThreads, class Source, class Destination, class Row>
void convertRows(Source src, Destination dst, QelSize roi, Streamable<Row> kernels)
{
    bool streams = kernels.streamed && isStreamed(roi, Destination::kPixelBytes) && dst.canStream();
    forBlocksOfOutput<kThreads>(roi, streams, kernels, [=](Row* kernel, int first, int end) {
        for (int r = first; r < end; ++r)
            std::apply(kernel, std::tuple_cat(src.row(r), dst.row(r), std::tuple(roi.width)));
    });
}
// The same after the checks that all such functions have, by kernels or by their place in the family's table.
template <Threads kThreads, class Source, class Destination, class Row>
QelStatus convert(Source src, Destination dst, QelSize roi, Streamable<Row> kernels)
{
    if (QelStatus bad = first(src.check(), dst.check(), steps(src.step, dst.step), size(roi))) return bad;
    convertRows<kThreads>(src, dst, roi, kernels);
    return qelStsNoErr;
}
template <Threads kThreads, class Source, class Destination, class Family, class Row>
QelStatus convert(Source src, Destination dst, QelSize roi, Streamable<Row> Family::*kernels)
{
    return convert<kThreads>(src, dst, roi, qel::kernels<Family>().*kernels);
}

}
}
