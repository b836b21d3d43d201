// SPDX-License-Identifier: Apache-2.0
// OpenJPEG's block coder through its public calls: of a picture with one resolution the samples are the coefficients,
// and nearly all of the time is theirs.
#pragma once

#include "openjpeg_peer.h"

namespace qel::bench {

// With their signs, of up to 12 bits; row by row.
struct Coefficients {
    int width, height;
    std::vector<int32_t> values;
};

// A lossless file of coefficients. The style of its code-blocks is that of a COD marker.
class OpenJpegCoefficients {
public:
    OpenJpegCoefficients(const Coefficients& coefficients, int blockSize, int style);

    const std::vector<uint8_t>& file() const { return file_.bytes; }
    void encode();
    std::vector<int32_t> decode();

private:
    const Coefficients coefficients_;
    int blockSize_, style_;
    OpenJpegPicture::File file_;
};

}
