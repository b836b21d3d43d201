// SPDX-License-Identifier: Apache-2.0
// Lossless JPEG by FFmpeg's libavcodec, one thread; its codec objects are kept from call to call.
#pragma once

#include <stdint.h>

#include <memory>
#include <vector>

#include "codec/base/picture.h"

namespace qel::bench {

struct FfmpegCoder;

// Encodes RGB pictures, predictor 1, with the typical Huffman tables. The three channels go in as three planes that are
// not converted.
class FfmpegLosslessEncoder {
public:
    explicit FfmpegLosslessEncoder(const codec::Picture& rgb);
    ~FfmpegLosslessEncoder();
    const std::vector<uint8_t>& file() const { return file_; }
    void encode();

private:
    std::unique_ptr<FfmpegCoder> coder_;
    std::vector<uint8_t> file_;
};

// Decodes a lossless file of RGB in 8 bits, or of grey in 8 or 16.
class FfmpegDecoder {
public:
    explicit FfmpegDecoder(const std::vector<uint8_t>& file);
    ~FfmpegDecoder();
    void decode();
    // Whether the last picture is this one.
    bool equals(const codec::Picture& picture) const;

private:
    std::unique_ptr<FfmpegCoder> coder_;
    std::vector<uint8_t> padded_;
};

}
