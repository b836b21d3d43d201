// One tile of a JPEG 2000 picture, from its packets to samples.
#pragma once

#include "codec/j2k/decode/components.h"

namespace qel::codec {

// Decodes the tile into the components that have samples, on so many threads. Damage that is survived leaves a warning;
// throws CodecError where the headers of the tile are damaged. done(samples) is called by any thread.
void decodeJ2kTile(const J2kCodestream& codestream, uint32_t index, const J2kDecodeOptions& options, int threads,
                   std::vector<J2kSamples>& components, Warnings& warnings, const std::function<void(uint64_t)>& done);

}
