// SPDX-License-Identifier: Apache-2.0
// How far two pictures are apart.
#pragma once

#include <vector>

#include "codec/base/picture.h"

namespace qel::codec {

struct Difference {
    double meanSquaredError = 0;
    int largestError = 0;

    // Peak signal-to-noise ratio in decibels for samples of `precision` bits; infinite where nothing differs.
    double psnr(int precision) const;
};

struct Comparison {
    std::vector<Difference> channels;
    Difference whole; // all channels taken together
};

// Throws CodecError unless both have the same size, channels and precision.
void checkComparable(const Picture& a, const Picture& b);

// Throws CodecError for pictures that are not comparable.
Comparison compare(const Picture& a, const Picture& b);

}
