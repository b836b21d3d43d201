// SPDX-License-Identifier: Apache-2.0
// What a JPEG 2000 file shall be like, and the headers that say so.
#pragma once

#include <optional>
#include <utility>
#include <vector>

#include "codec/base/metadata.h"
#include "codec/base/picture_form.h"
#include "codec/base/progress.h"
#include "codec/j2k/headers.h"

namespace qel::codec::j2k {

// How the encoder ends codeword segments. `flush` is the standard's own way, `shortest` saves bytes where it can, and
// with `predictable` decoders can find errors.
// Predictable ones and style::kPredictableTermination go together: either one asks for both.
enum class Termination { flush = 0, shortest = 1, predictable = 2 };

// Files may have 65535, but each takes its time to be found, and a byte of each precinct.
inline constexpr int kMostLayers = 255;

struct EncodeOptions {
    bool isLossless = false; // 5/3 wavelet and all of its coefficients; else 9/7 and one of these three:
    std::optional<double> bitsPerPixel = {}; // of the whole file
    std::optional<double> psnr = {};         // decibels, over all samples
    int quality = 90;                        // 1 to 100, about the steps of JPEG files of that quality
    std::optional<int> levels = {};          // of decomposition, 0 to 32; else 5, or fewer for small tiles
    int blockWidth = 64, blockHeight = 64;   // code-blocks: powers of 2 from 4 to 1024, 4096 samples at most
    std::optional<std::pair<uint32_t, uint32_t>> tile = {}; // width and height; else one tile
    int layers = 1;                                         // 1 to kMostLayers
    Order order = Order::lrcp;
    // Width and height, powers of 2 up to 32768, from the highest resolution down; the last one holds for all below.
    std::vector<std::pair<uint32_t, uint32_t>> precincts = {};
    int style = 0; // bits of style
    Termination termination = Termination::flush;
    bool isJp2 = true;      // else a bare codestream
    Metadata metadata = {}; // what there is room for (kMetadataRoom, kCodestreamRoom)
    ProgressReport progress = {};
};

Termination terminationFor(const EncodeOptions& options);

// These throw CodecError for options outside their range, or that do not fit the picture.
Size sizeFor(const PictureForm& picture, const EncodeOptions& options);
// `step` is the error in the picture, in its samples, that a quantization step of the 9/7 wavelet may make.
Parameters parametersFor(const PictureForm& picture, const EncodeOptions& options, double step);

// The quantization step of a band of a component of so many bits (E-3); 1 without quantization.
double stepSize(const Quantization& quantization, const Step& step, BandKind kind, int precision);

}
