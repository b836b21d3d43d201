// Rate-distortion optimisation after the coding of all code-blocks: where to cut each so that the error is least for
// the bytes, layer by layer. One slope for all code-blocks of the picture does that (T.800 J.14).
#pragma once

#include <optional>
#include <span>

#include "codec/j2k/encode/encoded_tile.h"

namespace qel::codec {

// Finds the truncations of a code-block from the ends and errors of its passes. With predictable termination, which a
// decoder may check, these lie at the ends of codeword segments only.
void findTruncations(J2kEncodedBlock& block, int style);

// What a quantizer with steps of this size loses and saves when it is made a little coarser.
J2kSlope slopeOfStep(double step);

// The steepest slope that leaves no more than this squared error in the picture.
J2kSlope slopeForError(std::span<const J2kEncodedTile> tiles, double error);

// What the packets may hold: as many bytes, or all that is worth the slope.
struct J2kBudget {
    std::optional<uint64_t> bytes;
    J2kSlope slope = kJ2kAllPasses;
};

// The slope of each layer; all layers together hold what the budget allows, and each earlier one about half of the
// bytes of the next, or more where there are many. To use the bytes up, some truncations get the last slope. Throws
// CodecError where the empty packets are more than the budget.
std::vector<J2kSlope> allocateLayers(std::span<J2kEncodedTile> tiles, int layers, const J2kBudget& budget);

}
