// SPDX-License-Identifier: Apache-2.0
// What happens to metadata on the way from one file to another.
#pragma once

#include "codec/base/decoded_picture.h"
#include "qelpic/commands.h"

namespace qel::qelpic {

// Turns the picture upright or strips metadata where that is wanted, and leaves out what the output has no room for,
// with a warning. `space` is the colour space in the output.
void settleMetadata(codec::DecodedPicture& loaded, const codec::MetadataRoom& room, codec::ColourSpace space,
                    const Options& options);

// Lines of `info`.
void printMetadata(const codec::Metadata& metadata);

}
