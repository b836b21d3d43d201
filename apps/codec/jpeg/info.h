// SPDX-License-Identifier: Apache-2.0
// What the headers of a JPEG file (T.81 Annex B) say about the picture in it.
#pragma once

#include <cstdint>
#include <vector>

#include "codec/base/bytes.h"

namespace qel::codec::jpeg {

// Coding processes by their frame marker: SOF0, SOF1, SOF2, SOF3, and all others.
enum class Process { baseline, extended, progressive, lossless, other };

// What the components of the file mean. `other`: a number of components that stands for no known colour space.
enum class Colour { grey, ycbcr, rgb, cmyk, ycck, other };

const char* nameOf(Process);
const char* nameOf(Colour);

struct Component {
    int id = 0;
    int h = 1, v = 1;          // sampling factors, 1 to 4
    int quantizer = 0;         // quantization table, 0 to 3
    int width = 0, height = 0; // of the component itself, in samples
};

struct Info {
    Process process = Process::other;
    uint8_t frameMarker = 0; // second byte of the SOF marker
    int width = 0, height = 0, precision = 0;
    Colour colour = Colour::other;
    std::vector<Component> components;
    bool hasJfif = false;
    int adobeTransform = -1;               // of the Adobe APP14 marker; -1 where there is none
    int restartInterval = 0;               // of the first scan, in MCUs; 0 is none
    int predictor = 0, pointTransform = 0; // of the first scan of a lossless file
    int scans = 0;                         // readInfo: in the whole file; decoders: read so far

    // Samples along the side of what MCUs are made of: blocks, or single samples in a lossless file.
    int unitSide() const { return process == Process::lossless ? 1 : 8; }
    int maxH() const;
    int maxV() const;
};

// Reads the headers and counts the scans; no picture is decoded, so this also answers for processes that decode
// refuses. Throws CodecError where there is no frame header to be read.
Info readInfo(Bytes file);

}
