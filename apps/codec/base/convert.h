// SPDX-License-Identifier: Apache-2.0
// Pictures in another colour space or precision.
#pragma once

#include "codec/base/picture.h"

namespace qel::codec {

// A sample of the range 0 to `from` in the range 0 to `to`, to nearest.
constexpr uint32_t rescaled(uint64_t sample, uint32_t from, uint32_t to)
{
    return uint32_t((2 * sample * to + from) / (2 * uint64_t(from)));
}

// A grey picture as RGB, with its alpha.
Picture withRgb(const Picture& grey);

// Whether nothing of the picture is transparent.
bool isOpaque(const Picture& picture);
// The colours as they are, without alpha.
Picture withoutAlpha(const Picture& picture);

// The same picture in samples of `precision` bits, to nearest: all ones stay all ones.
Picture withPrecision(const Picture& picture, int precision);

}
