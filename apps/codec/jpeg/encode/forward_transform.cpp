// SPDX-License-Identifier: Apache-2.0
#include "codec/jpeg/encode/forward_transform.h"

#include <algorithm>

namespace qel::codec::jpeg {

namespace {

// Coefficients are rounded twice: to integers by the transform, then to multiples of their steps. An integer in the
// middle between two multiples of an even step stands for values of both sides, up to a half away, so that it goes the
// wrong way as often as not. Doubled coefficients are in the middle for odd steps too, but stand for values that are a
// quarter away at most, which costs a quarter as much. Luminance, where doubling would take most of the time, gains
// least.
bool isBetterDoubled(const QuantizerSteps& steps, TableKind kind)
{
    return kind == kChrominance &&
           4 * std::ranges::count_if(steps, [](int step) { return step % 2 == 0; }) > int(steps.size());
}

}

Quantizer::Quantizer(const QuantizerSteps& steps, TableKind kind) : isDoubled(isBetterDoubled(steps, kind))
{
    int one = isDoubled ? 16384 : 32768;
    for (size_t i = 0; i < 64; ++i) {
        // A little less takes those in the middle towards zero, where they cost fewer bits. Not chroma, which loses
        // contrast each time that it is made smaller and larger again, and not the mean brightness.
        bool towardsZero = kind == kLuminance && i > 0;
        multipliers[i] = uint16_t((towardsZero ? one - 1 : one + steps[i] / 2) / steps[i]);
    }
}

}
