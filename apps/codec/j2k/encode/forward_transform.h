// SPDX-License-Identifier: Apache-2.0
// From a tile of a picture to its wavelet coefficients: level shift, component transform, wavelet (T.800 Annexes F, G).
#pragma once

#include <vector>

#include "codec/base/picture.h"
#include "codec/j2k/wavelet.h"

namespace qel::codec::j2k {

// The components of the part of a picture that a tile covers, transformed; of the first three by the component
// transform too if asked for. The picture may be part of a larger one, from that row on. int32_t is for the reversible
// transforms, float for the irreversible ones.
template <class Sample> std::vector<Subbands<Sample>> forwardTransform(const Picture& picture, uint32_t firstRow,
                                                                       const Rect& tile, bool transformsComponents,
                                                                       int levels, int threads);

}
