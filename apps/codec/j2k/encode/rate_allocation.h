// SPDX-License-Identifier: Apache-2.0
// Rate-distortion optimisation after the coding of all code-blocks: where to cut each so that the error is least for
// the bytes, layer by layer. One slope for all code-blocks of the picture does that (T.800 J.14).
#pragma once

#include <optional>
#include <span>

#include "codec/j2k/encode/encoded_tile.h"

namespace qel::codec::j2k {

// Finds the truncations of a code-block from the ends and errors of its passes. With predictable termination, which a
// decoder may check, these lie at the ends of codeword segments only.
void findTruncations(EncodedBlock& block, int style);

// What a quantizer with steps of this size loses and saves when it is made a little coarser.
Slope slopeOfStep(double step);

// The steepest slope that leaves no more than this squared error in the picture.
Slope slopeForError(std::span<const EncodedTile> tiles, double error);

// What the packets may hold: as many bytes, or all that is worth the slope.
struct Budget {
    std::optional<uint64_t> bytes;
    Slope slope = kAllPasses;
};

// The slope of each layer; all layers together hold what the budget allows, and each earlier one about half of the
// bytes of the next, or more where there are many. To use the bytes up, some truncations get the last slope. Throws
// CodecError where the empty packets are more than the budget.
std::vector<Slope> allocateLayers(std::span<EncodedTile> tiles, int layers, const Budget& budget);

}
