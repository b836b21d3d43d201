// SPDX-License-Identifier: Apache-2.0
// Which quantization step a lossy file wants, from what the wavelet makes of samples of the picture: with a much finer
// one, most of what is coded would be cut off again.
#pragma once

#include "codec/base/picture.h"

namespace qel::codec::j2k {

// Steps as errors in the picture that quantization makes to any coefficient: those with which about so many bits for a
// pixel are coded, or the mean squared error is about so much.
double stepForRate(const Picture& picture, int levels, double bitsPerPixel);
double stepForError(const Picture& picture, int levels, double meanSquaredError);

}
