// SPDX-License-Identifier: Apache-2.0
// How alike two pictures look: the structural similarity index.
#pragma once

#include <vector>

#include "codec/base/picture.h"

namespace qel::codec {

// The mean structural similarity (SSIM) of each channel, 1 where nothing differs, by the formula of Wang, Bovik, Sheikh
// and Simoncelli, "Image quality assessment: from error visibility to structural similarity", IEEE Transactions on
// Image Processing 13 (2004): Gaussian windows of 11 x 11 with a standard deviation of 1.5 at all places where they lie
// within the picture, at its full resolution; K1 = 0.01, K2 = 0.03. Not a number for pictures that are smaller than the
// window. Throws CodecError for pictures that are not comparable (compare.h).
std::vector<double> structuralSimilarity(const Picture& a, const Picture& b);

}
