// SPDX-License-Identifier: Apache-2.0
// From the components of a JPEG 2000 picture to one that can be shown: palette, meaning of the channels, up-sampling
// and colour space (T.800 Annex I).
#pragma once

#include <optional>

#include "codec/base/picture.h"
#include "codec/j2k/boxes.h"
#include "codec/j2k/decode/components.h"

namespace qel::codec::j2k {

// `jp2` is nothing for a bare codestream, whose components are grey or RGB by their number, and YCbCr if the second
// and third are smaller than the first. Subsampled components are replicated, sYCC becomes RGB of 8 bits, signed
// samples are shifted up to begin at 0, which the picture says if all are, more than 16 bits become 16, and channels
// of different precision get that of the deepest. Opacity of the whole picture becomes alpha; where the colours have
// been multiplied by it they are divided again. Other channels that are no colours are left out. Notes say what
// changed. Throws CodecError for a picture that is too large.
Picture pictureOf(const Image& image, const Rect& area, int reduce, const std::optional<Jp2File>& jp2, Warnings& notes);

}
