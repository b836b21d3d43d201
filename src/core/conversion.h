// Conversions of pixels from one layout to another, row by row.
#pragma once

#include <array>
#include <tuple>

#include "core/checks.h"
#include "core/past_caches.h"

namespace qel {
namespace {

// A source or a destination as a caller gives it: planes that share a step, or interleaved pixels.
template <class T, int kPlanes> struct Planes {
    using Argument = T* const*;
    static constexpr int kPixelBytes = kPlanes * sizeof(T);
    Argument planes;
    int step;

    QelStatus check() const { return qel::planes<kPlanes>(planes); }
    // Whether planes lie at the same place in pages of 4 KB: then their lines hinder each other on the way past the
    // caches, which takes twice as long as storing into them.
    bool meet() const
    {
        for (int i = 1; i < kPlanes; ++i)
            for (int j = 0; j < i; ++j)
                if (((uintptr_t)planes[i] - (uintptr_t)planes[j]) % 4096 == 0) return true;
        return false;
    }
    auto row(int r) const
    {
        std::array<T*, kPlanes> rows;
        for (int i = 0; i < kPlanes; ++i) rows[i] = rowAt(planes[i], step, r);
        return rows;
    }
};
template <class T, int kChannels> struct Pixels {
    using Argument = T*;
    static constexpr int kPixelBytes = kChannels * sizeof(T);
    T* pixels;
    int step;

    QelStatus check() const { return pointers(pixels); }
    bool meet() const { return false; }
    auto row(int r) const { return std::array{rowAt(pixels, step, r)}; }
};

// The kernel takes the rows of the source, those of the destination and their width in pixels. `past`, if there is one,
// does the same storing past the caches, which pays where no cache can hold the output.
template <Loop kLoop, class Source, class Destination, class Kernel>
void convertRows(Source src, Destination dst, QelSize roi, Kernel* kernel, Kernel* past = nullptr)
{
    bool goesPast = past != nullptr && isBeyondCaches(roi, Destination::kPixelBytes) && !dst.meet();
    Kernel* row = goesPast ? past : kernel;
    forRowsOfOutput<kLoop>(
        roi, goesPast, [=](int r) { std::apply(row, std::tuple_cat(src.row(r), dst.row(r), std::tuple(roi.width))); });
}
// The same behind the checks that all such functions have.
template <Loop kLoop, class Source, class Destination, class Kernel>
QelStatus convert(Source src, Destination dst, QelSize roi, Kernel* kernel, Kernel* past = nullptr)
{
    if (QelStatus bad = first(src.check(), dst.check(), steps(src.step, dst.step), size(roi))) return bad;
    convertRows<kLoop>(src, dst, roi, kernel, past);
    return qelStsNoErr;
}

}
}
