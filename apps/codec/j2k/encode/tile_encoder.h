// SPDX-License-Identifier: Apache-2.0
// Codes all code-blocks of a tile.
#pragma once

#include "codec/base/picture.h"
#include "codec/base/progress.h"
#include "codec/j2k/encode/block_encoder.h"

namespace qel::codec::j2k {

// How a picture is coded, all tiles alike.
struct PictureCoding {
    Size size;
    Parameters parameters;
    Termination termination = Termination::flush;
};

// Fills the code-blocks; steps once for each. `picture` has the rows of the whole one from firstRow on.
void encodeTile(const Picture& picture, uint32_t firstRow, const PictureCoding& coding, int threads, Progress& progress,
                EncodedTile& tile);

}
