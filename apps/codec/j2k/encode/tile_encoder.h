// Codes all code-blocks of a tile.
#pragma once

#include "codec/base/picture.h"
#include "codec/base/progress.h"
#include "codec/j2k/encode/block_encoder.h"

namespace qel::codec {

// How a picture is coded, all tiles alike.
struct J2kPictureCoding {
    J2kSize size;
    J2kParameters parameters;
    J2kTermination termination = J2kTermination::flush;
};

// Fills the code-blocks; steps once for each.
void encodeTile(const Picture& picture, const J2kPictureCoding& coding, int threads, Progress& progress,
                J2kEncodedTile& tile);

}
