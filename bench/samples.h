// SPDX-License-Identifier: Apache-2.0
// What block functions, entropy coders and codecs are measured on: pictures of the real world, drawn ones, and noise.
#pragma once

#include <string>
#include <vector>

#include "codec/base/picture.h"

namespace qel::bench {

// RGB, 8 bits.
struct NamedPicture {
    std::string name;
    codec::Picture picture;
};

// Three photographs from the folder `photos` below QELJX_TEST_DATA or ../shared/data, where that exists; else three
// drawn pictures of the same sizes.
const std::vector<NamedPicture>& pictures();

// Every block full of large coefficients.
const NamedPicture& noise();

// The part of a picture from its upper left corner; the same with all channels equal to the green one; and with every
// block of 8x8 pixels equal to its first.
codec::Picture crop(const codec::Picture& picture, int width, int height);
codec::Picture greyOf(const codec::Picture& picture, int width, int height);
codec::Picture mosaicOf(const codec::Picture& picture, int width, int height);
// So many of them side by side, and so many rows of these.
codec::Picture repeated(const codec::Picture& picture, int across, int down);

}
