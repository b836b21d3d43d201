// SPDX-License-Identifier: Apache-2.0
// One tile of a JPEG 2000 picture, from its packets to samples.
#pragma once

#include "codec/j2k/decode/components.h"

namespace qel::codec::j2k {

// Decodes the tile into the components that have samples, on so many threads. Damage that is survived leaves a warning;
// throws CodecError where the headers of the tile are damaged. done(samples) is called by any thread.
void decodeTile(const Codestream& codestream, uint32_t index, const DecodeOptions& options, int threads,
                std::vector<Samples>& components, Warnings& warnings, const std::function<void(uint64_t)>& done);

}
