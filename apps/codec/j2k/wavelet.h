// The wavelet transforms of a tile-component over all its levels (T.800 Annex F): the reversible 5/3 of int32_t, the
// irreversible 9/7 of float.
#pragma once

#include <array>
#include <vector>

#include "codec/j2k/geometry.h"
#include "codec/j2k/plane.h"

namespace qel::codec {

// The subbands of a tile-component or of one of its lower resolutions: its rectangle says which samples are low.
template <class T> class J2kSubbands {
public:
    // All coefficients are as `fill` says.
    J2kSubbands(const J2kRect& rect, int levels, typename J2kPlane<T>::Fill fill);

    const J2kRect& rect() const { return rect_; }
    int levels() const { return int(high_.size()); }
    // Of level 1, the largest, to levels(); LL belongs to the last one.
    J2kPlane<T>& band(int level, J2kBandKind kind)
    {
        return kind == J2kBandKind::ll ? lowest_ : high_[size_t(level) - 1][size_t(kind) - 1];
    }

private:
    J2kRect rect_;
    J2kPlane<T> lowest_;
    std::vector<std::array<J2kPlane<T>, 3>> high_; // LH, HL, HH
};

// The samples that the subbands stand for. Each level is given back to the system when it is done.
template <class T> J2kPlane<T> inverseWavelet(J2kSubbands<T> bands, int threads);

// The subbands of samples that lie in `rect`.
template <class T> J2kSubbands<T> forwardWavelet(J2kPlane<T> samples, const J2kRect& rect, int levels, int threads);

}
