// SPDX-License-Identifier: Apache-2.0
// What a JPEG file shall be like.
#pragma once

#include <array>
#include <optional>

#include "codec/base/metadata.h"
#include "codec/base/progress.h"
#include "codec/jpeg/encode/scan_script.h"

namespace qel::codec::jpeg {

struct Sampling {
    int h = 1, v = 1; // 1 or 2
};

// Sampling factors of up to four components, in the file's order (Y Cb Cr, R G B, C M Y K or Y Cb Cr K).
using Samplings = std::array<Sampling, 4>;
inline constexpr Samplings kSampling444 = {{{1, 1}, {1, 1}, {1, 1}, {1, 1}}};
inline constexpr Samplings kSampling422 = {{{2, 1}, {1, 1}, {1, 1}, {2, 1}}};
inline constexpr Samplings kSampling440 = {{{1, 2}, {1, 1}, {1, 1}, {1, 2}}};
inline constexpr Samplings kSampling420 = {{{2, 2}, {1, 1}, {1, 1}, {2, 2}}};

inline constexpr int kBestPredictor = 0;

// What the file shall hold. `usual` is grey, YCbCr or YCCK, as the picture is.
enum class Target { usual, grey, ycbcr, rgb, cmyk, ycck };

struct EncodeOptions {
    int quality = 90; // 1 to 100
    Target target = Target::usual;
    std::optional<Samplings> sampling = {}; // else 4:2:0 for YCbCr and YCCK, 4:4:4 for RGB and CMYK; grey has none
    bool optimiseTables = false;            // Huffman tables made for this picture: two passes, a smaller file
    bool interleaved = true;                // one scan for all components, or one scan for each
    bool progressive = false;               // by the usual script, with tables made for each scan
    ScanScript scans = {};                  // if not empty, these instead; they say whether the file is progressive
    int restartInterval = 0;                // in MCUs; 0 is none
    int restartRows = 0;                    // or in rows of MCUs of each scan; not both
    // At the lowest qualities, quantization steps above 255 in 16-bit tables (the file is then extended sequential).
    bool wideQuantizers = false;
    // A lossless file (T.81 Annex H): samples of 2 to 16 bits in the picture's own colours, with tables made for it.
    // Restart intervals are whole rows. What is said above of quality, sampling and progressive files does not apply.
    bool lossless = false;
    int predictor = 1;      // 1 to 7, or kBestPredictor: the one that makes the smallest scan
    int pointTransform = 0; // low bits of each sample to be dropped
    // Chroma of 4:2:0 and 4:2:2 is made MCU by MCU, a few percent faster, and rounded down: a quarter to three eighths
    // of a level is lost each time that the picture is coded.
    bool fast = false;
    Metadata metadata = {}; // what there is room for (roomFor)
    ProgressReport progress = {};
};

}
