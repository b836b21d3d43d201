// SPDX-License-Identifier: Apache-2.0
// Writes the boxes of a JP2 file around its codestream (T.800 Annex I).
#pragma once

#include "codec/base/byte_writer.h"
#include "codec/base/metadata.h"
#include "codec/base/picture_form.h"

namespace qel::codec::j2k {

// All boxes up to the contents of the one with the codestream. Returns the position of that box and of its length,
// which is to be set when the codestream is there.
size_t writeJp2Header(ByteWriter& out, const PictureForm& picture, const Metadata& metadata);

}
