// SPDX-License-Identifier: Apache-2.0
// The wavelet transforms of a tile-component over all its levels (T.800 Annex F): the reversible 5/3 of int32_t, the
// irreversible 9/7 of float.
#pragma once

#include <array>
#include <vector>

#include "codec/j2k/geometry.h"
#include "codec/j2k/plane.h"

namespace qel::codec::j2k {

// The subbands of a tile-component or of one of its lower resolutions: its rectangle says which samples are low.
template <class T> class Subbands {
public:
    // All coefficients are as `fill` says.
    Subbands(const Rect& rect, int levels, typename Plane<T>::Fill fill);

    const Rect& rect() const { return rect_; }
    int levels() const { return int(high_.size()); }
    // Of level 1, the largest, to levels(); LL belongs to the last one.
    Plane<T>& band(int level, BandKind kind)
    {
        return kind == BandKind::ll ? lowest_ : high_[size_t(level) - 1][size_t(kind) - 1];
    }

private:
    Rect rect_;
    Plane<T> lowest_;
    std::vector<std::array<Plane<T>, 3>> high_; // LH, HL, HH
};

// The samples that the subbands stand for. Each level is given back to the system when it is done.
template <class T> Plane<T> inverseWavelet(Subbands<T> bands, int threads);

// The subbands of samples that lie in `rect`.
template <class T> Subbands<T> forwardWavelet(Plane<T> samples, const Rect& rect, int levels, int threads);

}
