// SPDX-License-Identifier: Apache-2.0
// Decodes JPEG files (T.81) of one to four components: baseline, extended sequential and progressive ones with samples
// of 8 bits, lossless ones with 2 to 16.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "codec/base/decoded_picture.h"
#include "codec/jpeg/decode/options.h"
#include "codec/jpeg/info.h"

namespace qel::codec::jpeg {

// A grey, RGB or CMYK picture. Warnings are about damage that was survived: there are none for a sound file.
struct Decoded : DecodedPicture {
    Info info;
};

// The whole picture in the colour space that it stands for. Throws CodecError for a file that is unsupported or broken
// before its first scan. Damage inside a scan is skipped up to the next restart marker; what cannot be decoded is grey.
Decoded decode(Bytes file, const DecodeOptions& options = {});

// One component before up-sampling and colour conversion, rows without gaps.
struct SamplePlane {
    int width = 0, height = 0;
    std::vector<uint8_t> samples;
};

struct DecodedPlanes {
    std::vector<SamplePlane> planes;
    Info info;
    Warnings warnings;
};

// Neither this nor the next is for lossless files.
DecodedPlanes decodePlanes(Bytes file, const DecodeOptions& options = {});

// The quantized coefficients of one component: blocks row by row as its own size needs, 64 values each in natural
// order.
struct Coefficients {
    int blocksAcross = 0, blocksDown = 0;
    std::vector<int16_t> values;
};

struct DecodedCoefficients {
    std::vector<Coefficients> components;
    Info info;
    Warnings warnings;
};

DecodedCoefficients decodeCoefficients(Bytes file, const DecodeOptions& options = {});

}
