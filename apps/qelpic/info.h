// SPDX-License-Identifier: Apache-2.0
// Parts of `qelpic info`.
#pragma once

#include "codec/j2k/decode/file.h"

namespace qel::qelpic {

// Prints what the headers say; returns the number of pixels.
double printJ2k(const codec::j2k::File& file);

}
