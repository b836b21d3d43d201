// SPDX-License-Identifier: Apache-2.0
// Codes code-blocks: from wavelet coefficients to coding passes, with what each of them costs and gains.
#pragma once

#include <memory>

#include "codec/base/library.h"
#include "codec/j2k/encode/encoded_tile.h"
#include "codec/j2k/encode/options.h"
#include "codec/j2k/plane.h"

namespace qel::codec::j2k {

// What holds for all code-blocks of a band.
struct BandCoding {
    BandKind kind = BandKind::ll;
    int bitPlanes = 0;       // Mb
    double step = 1;         // of the quantizer
    double sampleEnergy = 1; // squared error in the picture for an error of 1 in a coefficient
    int style = 0;           // bits of style
    bool isLossless = false;
    Termination termination = Termination::flush;
};

class BlockEncoder {
public:
    // For code-blocks up to this size.
    BlockEncoder(int width, int height);

    // Codes the coefficients of the band that the block has: integers as they are, floats quantized.
    template <class Coefficient>
    void encode(const Plane<Coefficient>& coefficients, const BandCoding& band, EncodedBlock& block);

private:
    using State = std::unique_ptr<QelEncodeState, Freed<qeliEncodeFree_JPEG2K>>;

    void code(const BandCoding& band, EncodedBlock& block);
    void store(EncodedBlock& block);
    void describePasses(const BandCoding& band, int count, EncodedBlock& block);
    void describeErrors(const BandCoding& band, EncodedBlock& block);

    State state_;
    std::vector<int32_t> samples_; // sign and magnitude
    std::vector<float> errors_;    // of columns
    std::vector<uint8_t> bytes_;
};

}
